#include "common/RadioChannels.h"

#include <gtest/gtest.h>

namespace quorvel::common {
namespace {

TEST(ChannelTexts, GivePrimaryChannelAndWidth) {
    const struct {
        const char* text;
        unsigned primary;
        unsigned width;
    } rows[] = {{"11", 11, 20},    {"6l", 6, 40},         {"6u", 6, 40},
                {"36/80", 36, 80}, {"100/160", 100, 160}, {"44/20", 44, 20}};
    for (const auto& row : rows) {
        const auto channel = parseChannelText(row.text);
        ASSERT_TRUE(channel) << row.text;
        EXPECT_EQ(channel->primary, row.primary);
        EXPECT_EQ(channel->width, row.width);
    }
    for (const char* wrong : {"", "x", "15", "36/81", "36/", "6x", "0", "9999", "36 "})
        EXPECT_FALSE(parseChannelText(wrong)) << wrong;
}

TEST(Channels, OverlapByTheirFrequencies) {
    EXPECT_TRUE(channelsOverlap({36, 80}, {48, 20}));
    EXPECT_FALSE(channelsOverlap({36, 80}, {52, 20}));
    EXPECT_TRUE(channelsOverlap({1, 20}, {3, 20}));
    EXPECT_FALSE(channelsOverlap({1, 20}, {6, 20}));
    EXPECT_FALSE(channelsOverlap({149, 80}, {165, 20}));
}

TEST(Channels, NeedRadarDetectionFrom52To144) {
    EXPECT_FALSE(isRadarChannel(48));
    EXPECT_TRUE(isRadarChannel(52));
    EXPECT_TRUE(isRadarChannel(144));
    EXPECT_FALSE(isRadarChannel(149));
}

TEST(Channels, HaveCentreFrequencies) {
    EXPECT_EQ(channelFrequency(1), 2412U);
    EXPECT_EQ(channelFrequency(36), 5180U);
}

}  // namespace
}  // namespace quorvel::common
