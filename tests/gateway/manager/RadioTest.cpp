#include <gtest/gtest.h>

#include "tests/gateway/manager/TestBoard.h"

namespace quorvel::manager::test {
namespace {

TEST(Radio, SwitchedOffIsDownWithItsAccessPointsAndStations) {
    Model model = defaultModel();
    ASSERT_EQ(text(model, 0, 0, "numStations"), "2");
    ASSERT_TRUE(model.set(0, 0, "wlEnbl", "0"));
    EXPECT_EQ(text(model, 0, 0, "radio_status"), "Down");
    EXPECT_EQ(text(model, 0, 0, "status"), "Down");
    EXPECT_EQ(text(model, 0, 1, "status"), "Down");
    EXPECT_EQ(text(model, 0, 0, "numStations"), "0");
    EXPECT_EQ(text(model, 1, 0, "status"), "Up");
    ASSERT_TRUE(model.set(0, 0, "wlEnbl", "1"));
    EXPECT_EQ(text(model, 0, 0, "radio_status"), "Up");
    model.advanceTo(10'000);
    EXPECT_EQ(text(model, 0, 0, "numStations"), "2");
}

TEST(Radio, TakesANewChannelAtOnce) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(1, 0, "wlChannel", "44"));
    EXPECT_EQ(text(model, 1, 0, "wlCurrentChannel"), "44");
}

TEST(Radio, RefusesAChannelThatItCannotUse) {
    Model model = defaultModel();
    for (const char* channel : {"6", "37", "200", "x", "-1", ""})
        EXPECT_FALSE(model.set(1, 0, "wlChannel", channel)) << channel;
    EXPECT_FALSE(model.set(2, 0, "wlChannel", "100"));
    EXPECT_EQ(text(model, 1, 0, "wlCurrentChannel"), "149");
    ASSERT_TRUE(model.set(1, 0, "wlChannel", "0"));
    EXPECT_EQ(text(model, 1, 0, "wlCurrentChannel"), "149");
}

TEST(Radio, UsesRadarChannelsOnlyWithRadarDetection) {
    Model model = defaultModel();
    EXPECT_TRUE(model.set(1, 0, "wlChannel", "100"));
    ASSERT_TRUE(model.set(1, 0, "WlRegMode", "0"));
    EXPECT_FALSE(model.set(1, 0, "wlChannel", "104"));
    EXPECT_FALSE(model.switchChannel(1, "104"));
}

TEST(Radio, WithAutomaticSelectionKeepsToItUntilTurnedOff) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(2, 0, "AutoChannelEnable", "1"));
    const std::string chosen = text(model, 2, 0, "wlCurrentChannel");
    EXPECT_NE(chosen, "6");
    ASSERT_TRUE(model.set(2, 0, "wlChannel", "6"));
    EXPECT_EQ(text(model, 2, 0, "wlCurrentChannel"), chosen);
    ASSERT_TRUE(model.set(2, 0, "AutoChannelEnable", "0"));
    EXPECT_EQ(text(model, 2, 0, "wlCurrentChannel"), chosen);
    ASSERT_TRUE(model.set(2, 0, "wlChannel", "6"));
    EXPECT_EQ(text(model, 2, 0, "wlCurrentChannel"), "6");
}

TEST(Radio, ChoosesAmongPreferredAndNotAmongExcludedChannels) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(2, 0, "wlAcsPrefChannels", "1,11"));
    ASSERT_TRUE(model.set(2, 0, "wlAcsExclChannels", "1"));
    ASSERT_TRUE(model.set(2, 0, "AutoChannelEnable", "1"));
    EXPECT_EQ(text(model, 2, 0, "wlCurrentChannel"), "11");
}

TEST(Radio, KeepsBandwidthCodeAndCapabilityTogether) {
    Model model = defaultModel();
    const char* codes[] = {"1", "3", "7", "15"};
    for (int capability = 0; capability < 4; ++capability) {
        ASSERT_TRUE(model.set(1, 0, "wlNBwCap", std::to_string(capability)));
        EXPECT_EQ(text(model, 1, 0, "wlNBw"), codes[capability]);
    }
    ASSERT_TRUE(model.set(1, 0, "wlNBw", "3"));
    EXPECT_EQ(text(model, 1, 0, "wlNBwCap"), "1");
    ASSERT_TRUE(model.set(1, 0, "wlNBwCap", "4"));
    EXPECT_EQ(text(model, 1, 0, "wlNBw"), "15");
    EXPECT_FALSE(model.set(1, 0, "wlNBw", "2"));
    EXPECT_FALSE(model.set(2, 0, "wlNBwCap", "2"));
}

TEST(Radio, FollowsAChannelSwitchAnnouncement) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(1, 0, "AutoChannelEnable", "1"));
    ASSERT_TRUE(model.switchChannel(1, "44/40"));
    EXPECT_EQ(text(model, 1, 0, "wlCurrentChannel"), "44");
    EXPECT_EQ(text(model, 1, 0, "wlChannel"), "44");
    EXPECT_EQ(text(model, 1, 0, "wlNBw"), "3");
    EXPECT_EQ(text(model, 1, 0, "AutoChannelEnable"), "0");
    EXPECT_EQ(text(model, 1, 0, "numStations"), "2");
    for (const char* wrong : {"6", "52", "44/99", "", "x"})
        EXPECT_FALSE(model.switchChannel(1, wrong)) << wrong;
    EXPECT_FALSE(model.switchChannel(2, "6/80"));
    EXPECT_FALSE(model.switchChannel(2, "100"));
    EXPECT_FALSE(model.switchChannel(3, "6"));
}

TEST(Radio, DropsItsStationsForARestartAndTakesThemBack) {
    Model model = defaultModel();
    ASSERT_TRUE(model.restart(1));
    EXPECT_EQ(text(model, 1, 0, "numStations"), "0");
    EXPECT_EQ(text(model, 0, 0, "numStations"), "2");
    model.advanceTo(5000);
    EXPECT_EQ(text(model, 1, 0, "numStations"), "2");
    EXPECT_FALSE(model.restart(3));
}

TEST(UpTimes, CountFromPowerOnAndFromTheRecordedStart) {
    Model model = defaultModel();
    model.advanceTo(30'000);
    EXPECT_EQ(model.upSeconds(), 30U);
    ASSERT_TRUE(model.set(1, 0, "wlBootTime", "10"));
    EXPECT_EQ(model.radioUpSeconds(1), 20U);
    model.advanceTo(31'500);
    EXPECT_EQ(model.radioUpSeconds(1), 21U);
    ASSERT_TRUE(model.set(1, 0, "wlBootTime", "4000000000"));
    EXPECT_EQ(model.radioUpSeconds(1), 0U);
    EXPECT_EQ(model.radioUpSeconds(7), 0U);
}

TEST(LastChange, CountsFromTheLastTimeTheRadioWentUpOrDown) {
    Model model = defaultModel();
    model.advanceTo(50'000);
    ASSERT_TRUE(model.set(0, 0, "wlEnbl", "0"));
    model.advanceTo(57'000);
    EXPECT_EQ(text(model, 0, 0, "lastChange"), "7");
    EXPECT_EQ(text(model, 1, 0, "lastChange"), "57");
}

TEST(Greenfield, IsWrittenAsAWordAndKeptAsAFlag) {
    Model model = defaultModel();
    EXPECT_EQ(text(model, 0, 0, "wlNPreambleType"), "");
    ASSERT_TRUE(model.set(0, 0, "wlNPreambleType", "gf"));
    EXPECT_EQ(text(model, 0, 0, "wlNPreambleType"), "1");
}

TEST(Measurement, ListsTheNeighboursOfItsChannel) {
    Model model = defaultModel();
    EXPECT_FALSE(model.channelMetrics(0));
    ASSERT_TRUE(model.startMeasurement(0, 36, 40));
    const auto record = model.channelMetrics(0);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->channel, 36U);
    ASSERT_EQ(record->count, 2U);
    EXPECT_EQ(record->neighbours[0].rssi, -77);
    EXPECT_EQ(record->neighbours[1].rssi, -55);
    EXPECT_EQ(record->neighbours[1].width, 80U);
    EXPECT_NEAR(record->noise, -92, 2);
    EXPECT_GT(record->utilization, 0);
    EXPECT_EQ(record->txPower, 23);
    EXPECT_FALSE(model.startMeasurement(0, 6, 40));
    EXPECT_FALSE(model.startMeasurement(3, 36, 40));
    ASSERT_TRUE(model.set(0, 0, "wlEnbl", "0"));
    EXPECT_FALSE(model.startMeasurement(0, 36, 40));
}

TEST(Measurement, WithoutAChannelIsOfTheRadiosOwn) {
    Model model = defaultModel();
    ASSERT_TRUE(model.startMeasurement(1, 0, 40));
    EXPECT_EQ(model.channelMetrics(1)->channel, 149U);
}

TEST(Measurement, ListsAtMost64Neighbours) {
    Model model = defaultModel();
    description::Neighbour neighbour;
    neighbour.channel = "40";
    neighbour.primaryChannel = 40;
    for (unsigned i = 0; i < 70; ++i) {
        neighbour.bssid = {{0x02, 1, 2, 3, 4, static_cast<std::uint8_t>(i)}};
        ASSERT_FALSE(model.addNeighbour(neighbour));
    }
    ASSERT_TRUE(model.startMeasurement(0, 40, 40));
    EXPECT_EQ(model.channelMetrics(0)->count, 64U);
}

TEST(ChannelStatistics, AddUp) {
    Model model = defaultModel();
    model.advanceTo(5000);
    EXPECT_FALSE(model.channelStats(1));
    ASSERT_TRUE(model.startMeasurement(1, 149, 45));
    const auto record = model.channelStats(1);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->total, 45'000U);
    EXPECT_LE(record->busy, record->total);
    EXPECT_GT(record->busySelf, 0U);
    EXPECT_EQ(record->busySelf + record->busyExt, record->busy);
    EXPECT_EQ(record->busyTx + record->busyRx, record->busy);
    EXPECT_EQ(record->total * static_cast<unsigned>(record->utilization) / 100, record->busy);
}

TEST(ChannelStatistics, OfTheCurrentChannelNameItsFrequency) {
    Model model = defaultModel();
    const auto record = model.channelStats2(1);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->frequency, 5745U);
    EXPECT_EQ(record->max80211Rssi, -62);
    EXPECT_FALSE(model.channelStats2(3));
}

TEST(IdleShare, ShrinksWithTraffic) {
    Model model = defaultModel();
    const int quiet = std::stoi(text(model, 1, 0, "WlBandUtilization"));
    ASSERT_FALSE(model.setTraffic(stationMac(4), 200'000, 100'000));
    model.advanceTo(3000);
    const int busy = std::stoi(text(model, 1, 0, "WlBandUtilization"));
    EXPECT_LT(busy, quiet);
    EXPECT_GE(busy, 0);
}

}  // namespace
}  // namespace quorvel::manager::test
