#include <gtest/gtest.h>

#include "tests/gateway/manager/TestBoard.h"

namespace quorvel::manager::test {
namespace {

TEST(Wps, LetsAWaitingStationInByPushButton) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlWscConfig", "client-pbc"));
    EXPECT_EQ(model.nvramGet("wps_proc_status"), "1");
    EXPECT_FALSE(station(model, 10).associated);
    model.advanceTo(5000);
    EXPECT_EQ(model.nvramGet("wps_proc_status"), "2");
    EXPECT_TRUE(station(model, 10).associated);
    ASSERT_TRUE(model.restart(0));
    model.advanceTo(10'000);
    EXPECT_TRUE(station(model, 10).associated) << "it knows the passphrase now";
}

TEST(Wps, TimesOutAfterTheWalkTime) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(1, 0, "wlWscConfig", "client-pbc"));
    model.advanceTo(119'000);
    EXPECT_EQ(model.nvramGet("wps_proc_status"), "1");
    model.advanceTo(120'000);
    EXPECT_EQ(model.nvramGet("wps_proc_status"), "3");
}

TEST(Wps, IsCancelled) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlWscConfig", "client-pbc"));
    ASSERT_TRUE(model.set(0, 0, "wlWscConfig", "cancel"));
    model.advanceTo(5000);
    EXPECT_EQ(model.nvramGet("wps_proc_status"), "0");
    EXPECT_FALSE(station(model, 10).associated);
}

TEST(Wps, LetsInOnlyTheStationWithThePin) {
    Model model = defaultModel();
    description::Station setup;
    setup.mac = {{2, 0, 0, 0, 0, 0x44}};
    setup.accessPoint = 1;
    setup.wpsPin = "12345678";
    setup.plan.push_back({0, description::StationStep::Kind::kJoin, {}, {}});
    ASSERT_FALSE(model.joinStation(setup));
    ASSERT_TRUE(model.set(0, 0, "wlWscStaPin", "11112222"));
    ASSERT_TRUE(model.set(0, 0, "wlWscConfig", "client-pin"));
    model.advanceTo(10'000);
    EXPECT_EQ(model.nvramGet("wps_proc_status"), "1");
    ASSERT_TRUE(model.set(0, 0, "wlWscStaPin", "12345678"));
    model.advanceTo(11'000);
    EXPECT_EQ(model.nvramGet("wps_proc_status"), "2");
    EXPECT_TRUE(model.stations().back().associated);
    EXPECT_FALSE(station(model, 10).associated);
}

TEST(Wps, DoesNothingWhereItIsOff) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlWscMode", "disabled"));
    ASSERT_TRUE(model.set(0, 0, "wlWscConfig", "client-pbc"));
    EXPECT_EQ(model.nvramGet("wps_proc_status"), "0");
    model.advanceTo(10'000);
    EXPECT_FALSE(station(model, 10).associated);
}

TEST(Wps, EndsWhenItIsSwitchedOff) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlWscConfig", "client-pbc"));
    ASSERT_TRUE(model.set(0, 0, "wlWscMode", "disabled"));
    EXPECT_EQ(model.nvramGet("wps_proc_status"), "0");
}

TEST(Wps, DoesNotLetAFilteredStationIn) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlFltMacMode", "deny"));
    ASSERT_TRUE(model.set(0, 0, "wlFltMacList", "02:5a:00:00:01:0a"));
    ASSERT_TRUE(model.set(0, 0, "wlWscConfig", "client-pbc"));
    model.advanceTo(10'000);
    EXPECT_FALSE(station(model, 10).associated);
    EXPECT_EQ(model.nvramGet("wps_proc_status"), "1");
}

}  // namespace
}  // namespace quorvel::manager::test
