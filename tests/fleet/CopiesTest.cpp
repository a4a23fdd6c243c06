// One scenario for many gateways.
#include "fleet/Copies.h"

#include <gtest/gtest.h>

#include <set>

#include "scenario/Reader.h"

namespace quorvel::fleet_test {
namespace {

using fleet::Identity;
using fleet::Json;
using fleet::Share;

const char* const kVisit = R"({
  "name": "Visit", "board": "tri-band",
  "timeline": [
    {"at": 1, "do": "station.join", "id": "one", "mac": "02:00:00:00:00:01", "bss": 1},
    {"at": 2, "do": "station.join", "mac": "02:00:00:00:00:02", "bss": 1},
    {"at": 3, "do": "station.join", "mac": "02:00:00:00:01:00", "bss": 1, "count": 10},
    {"at": 4, "do": "set", "values": {"Device.WiFi.SSID.1.SSID": "x"}}
  ],
  "expectations": [
    {"step": "one", "fault": 0},
    {"by": 5, "event": "associated", "station": "02:00:00:00:00:02"},
    {"by": 5, "event": "associated", "station": "02:00:00:00:01:09"}
  ]
})";

Json copy(unsigned index, unsigned of) {
    Identity identity(1, index + 1);
    return Json::parse(fleet::copyFor(kVisit, Json(), identity, {index, of}));
}

std::size_t stepsOf(const Json& scenario, const std::string& action) {
    std::size_t count = 0;
    for (const Json& step : scenario.at("timeline"))
        count += step.at("do") == action ? 1 : 0;
    return count;
}

TEST(Copies, HaveAddressesOfTheGateway) {
    const Json first = copy(0, 1);
    const Json second = copy(1, 1);
    EXPECT_NE(first.at("timeline")[0].at("mac"), second.at("timeline")[0].at("mac"));
    EXPECT_EQ(first.at("timeline")[1].at("mac"), first.at("expectations")[1].at("station"));
}

TEST(Copies, LeaveTheScenariosBoardToTheGateway) {
    EXPECT_FALSE(copy(0, 1).contains("board"));
}

TEST(Shares, GiveEachStationToOneGateway) {
    EXPECT_EQ(stepsOf(copy(0, 2), "station.join"), 2U);
    EXPECT_EQ(stepsOf(copy(1, 2), "station.join"), 2U);
    EXPECT_EQ(copy(0, 2).at("timeline")[0].value("id", ""), "one");
    EXPECT_NE(copy(1, 2).at("timeline")[0].value("id", ""), "one");
}

TEST(Shares, CutACountIntoEqualRuns) {
    std::uint64_t sum = 0;
    std::set<std::string> ends;
    for (unsigned i = 0; i < 3; ++i) {
        const Json scenario = copy(i, 3);
        for (const Json& step : scenario.at("timeline")) {
            if (!step.contains("count")) continue;
            sum += step.at("count").get<std::uint64_t>();
            ends.insert(step.at("mac").get<std::string>().substr(12));
        }
    }
    EXPECT_EQ(sum, 10U);
    EXPECT_EQ(ends, (std::set<std::string>{"01:00", "01:03", "01:06"}));
}

TEST(Shares, TakeExpectationsAlongWithTheirStation) {
    EXPECT_EQ(copy(0, 2).at("expectations").size(), 1U);  // its step
    EXPECT_EQ(copy(1, 2).at("expectations").size(), 2U);  // its station, and the last of the run
}

TEST(Shares, HaveWhatNamesNoStationOnEveryGateway) {
    for (unsigned i = 0; i < 3; ++i)
        EXPECT_EQ(stepsOf(copy(i, 3), "set"), 1U) << i;
}

TEST(Shares, AreScenariosEvenWhenNothingIsLeft) {
    for (unsigned i = 0; i < 20; ++i) {
        Identity identity(1, i + 1);
        EXPECT_NO_THROW((void)scenario::parseScenario(fleet::copyFor(kVisit, Json(), identity, {i, 20}), "visit")) << i;
    }
}

}  // namespace
}  // namespace quorvel::fleet_test
