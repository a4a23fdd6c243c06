#include "recorder/desk/Diff.h"

#include <gtest/gtest.h>

#include <sstream>

#include "recorder/desk/Show.h"
#include "tests/recorder/RecordBuilder.h"

namespace quorvel::recorder_test {
namespace {

using recorder::Recording;
using recorder::RecordKind;
using recorder::ValueRole;

constexpr uint16_t kGet = 3;
constexpr uint16_t kManagerGet = 500;

// A read of a radio with the manager's answer and the library's result.
std::string call(uint32_t radio, const std::string& answer, uint32_t result, uint32_t thread = 1) {
    return RecordBuilder(RecordKind::kCall, kGet, thread).at(1).number(radio).str() +
           RecordBuilder(RecordKind::kPlatform, kManagerGet, thread)
               .at(1, 100)
               .number(radio - 1)
               .number(1, ValueRole::kResult)
               .text(answer, ValueRole::kAfter)
               .str() +
           RecordBuilder(RecordKind::kReturn, kGet, thread).at(1, 2000).number(result, ValueRole::kResult).str();
}

Recording recordingOf(const std::string& calls) {
    auto read = recorder::readRecording(magic() + startRecord() + nameRecord(kGet, "WiFiRadioChannelGet") +
                                        nameRecord(kManagerGet, "wlcsm_mngr_get") + calls +
                                        RecordBuilder(RecordKind::kEnd).str());
    EXPECT_TRUE(std::holds_alternative<Recording>(read));
    return std::get<Recording>(std::move(read));
}

TEST(RecordingDiff, OfTheSameCallsIsEmpty) {
    std::ostringstream out;
    EXPECT_EQ(showDifferences(out, recordingOf(call(1, "36", 0)), recordingOf(call(1, "36", 0))), 0U);
    EXPECT_EQ(out.str(), "");
}

TEST(RecordingDiff, NamesCallsThatOnlyOneHas) {
    std::ostringstream out;
    const Recording first = recordingOf(call(1, "36", 0) + call(2, "149", 0));
    const Recording second = recordingOf(call(3, "6", 0) + call(2, "149", 0));
    EXPECT_EQ(showDifferences(out, first, second), 2U);
    EXPECT_EQ(out.str(), "- call 1, WiFiRadioChannelGet(1)\n+ call 1, WiFiRadioChannelGet(3)\n");
}

TEST(RecordingDiff, ShowsWhatIsDifferentInACall) {
    std::ostringstream out;
    EXPECT_EQ(showDifferences(out, recordingOf(call(1, "36", 0)), recordingOf(call(1, "40", 1))), 1U);
    EXPECT_EQ(out.str(),
              "  call 1 and 1, WiFiRadioChannelGet(1)\n"
              "  -   wlcsm_mngr_get(0) = 1, filled \"36\"\n"
              "  -   returns 0\n"
              "  +   wlcsm_mngr_get(0) = 1, filled \"40\"\n"
              "  +   returns 1\n");
}

TEST(ShownRecordings, HaveCallsWithTheirEvents) {
    std::ostringstream out;
    showText(out, recordingOf(call(1, "36", 0)), {});
    EXPECT_EQ(out.str(),
              "0.000000  [1] WiFiRadioChannelGet(1)\n"
              "    0.000000  wlcsm_mngr_get(0) = 1, filled \"36\"\n"
              "    0.000002  returns 0\n");
}

TEST(ShownRecordings, AreFiltered) {
    const Recording recording = recordingOf(call(1, "36", 0) + call(2, "x", 1, 2));
    const auto shown = [&](const recorder::Filter& filter) {
        std::ostringstream out;
        showText(out, recording, filter);
        return (out.str().find("Get(1)") != std::string::npos ? "1" : "") +
               std::string(out.str().find("Get(2)") != std::string::npos ? "2" : "");
    };
    EXPECT_EQ(shown({}), "12");
    EXPECT_EQ(shown({.parameter = "channelget"}), "12");
    EXPECT_EQ(shown({.parameter = "Alias"}), "");
    EXPECT_EQ(shown({.result = 1}), "2");
    EXPECT_EQ(shown({.thread = 1}), "1");
    EXPECT_EQ(shown({.from = 1}), "");
    EXPECT_EQ(shown({.until = 0}), "12");
}

TEST(ShownRecordings, SayWhatIsMissing) {
    std::ostringstream out;
    showText(out, recordingOf(RecordBuilder(RecordKind::kGap).number(12).number(2).str()), {});
    EXPECT_NE(out.str().find("12 records are missing: the disk was full"), std::string::npos) << out.str();
}

TEST(RecordingStatistics, CountCallsFailuresAndPlatformCalls) {
    std::ostringstream out;
    showStatisticsJson(out, recordingOf(call(1, "36", 0) + call(2, "x", 1)));
    EXPECT_NE(out.str().find("\"calls\": 2"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("\"notZero\": 1"), std::string::npos) << out.str();
    EXPECT_NE(out.str().find("\"wlcsm_mngr_get\": 2"), std::string::npos) << out.str();
}

}  // namespace
}  // namespace quorvel::recorder_test
