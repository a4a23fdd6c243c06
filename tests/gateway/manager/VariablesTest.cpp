#include <gtest/gtest.h>

#include "gateway/manager/VariableTable.h"
#include "tests/gateway/manager/TestBoard.h"

namespace quorvel::manager::test {
namespace {

constexpr const char* kEveryVariable[] = {
#define VARIABLE(name, scope, kind, factory) name,
#include "gateway/manager/Variables.def"
};

TEST(Variables, AreAllReadableAtPowerOnButTheFilterListOfAnAccessPointWithoutOne) {
    const Model model = defaultModel();
    for (const char* name : kEveryVariable) {
        const bool expected = std::string(name) != "wlFltMacList";
        EXPECT_EQ(model.get(1, 0, name).has_value(), expected) << name;
    }
}

TEST(Variables, OfUnknownNameRadioOrSubInterfaceFail) {
    Model model = defaultModel();
    EXPECT_FALSE(model.get(0, 0, "wlNoSuchThing"));
    EXPECT_FALSE(model.get(3, 0, "wlChannel"));
    EXPECT_FALSE(model.get(0xfffffffe, 1, "wlResetAP"));
    EXPECT_FALSE(model.get(0, 8, "wlSsid"));
    EXPECT_FALSE(model.set(0, 0, "wlNoSuchThing", "1"));
    EXPECT_FALSE(model.set(0xfffffffe, 1, "wlResetAP", "1"));
    EXPECT_FALSE(model.set(0, 0, "wlBssid", "02:00:00:00:00:00"));
    EXPECT_FALSE(model.set(0, 0, "radio_status", "Up"));
}

TEST(Variables, CountWhatTheBoardHas) {
    const Model three = defaultModel();
    EXPECT_EQ(text(three, 0, 0, "radio_number"), "3");
    EXPECT_EQ(text(three, 0, 0, "ssid_number"), "24");
    const Model two(shippedBoard("dual-band"), {}, 1);
    EXPECT_EQ(text(two, 0, 0, "radio_number"), "2");
    EXPECT_EQ(text(two, 0, 0, "bssid_number"), "16");
    EXPECT_FALSE(two.get(2, 0, "wlChannel"));
    const Model none(shippedBoard("unsupported"), {}, 1);
    EXPECT_EQ(text(none, 0, 0, "radio_number"), "0");
    EXPECT_FALSE(none.get(0, 0, "wlChannel"));
}

TEST(Variables, OfARadioAreTheSameThroughEverySubInterface) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(1, 3, "rAlias", "upstairs"));
    EXPECT_EQ(text(model, 1, 0, "rAlias"), "upstairs");
    EXPECT_NE(text(model, 0, 0, "rAlias"), "upstairs");
}

TEST(Variables, OfAnAccessPointAreItsOwn) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(1, 3, "wlSsid", "abc"));
    EXPECT_EQ(text(model, 1, 3, "wlSsid"), "abc");
    EXPECT_EQ(text(model, 1, 0, "wlSsid"), "Quorvel-Home");
}

TEST(Variables, TakeAnSsidOf32BytesAndNoMore) {
    Model model = defaultModel();
    EXPECT_TRUE(model.set(0, 0, "wlSsid", std::string(32, 'x')));
    EXPECT_FALSE(model.set(0, 0, "wlSsid", std::string(33, 'y')));
    EXPECT_EQ(text(model, 0, 0, "wlSsid"), std::string(32, 'x'));
}

TEST(Variables, HoldAtMost1023Bytes) {
    Model model = defaultModel();
    EXPECT_TRUE(model.set(0, 0, "wlBridgeInfo", std::string(1023, 'x')));
    EXPECT_FALSE(model.set(0, 0, "wlBridgeInfo", std::string(1024, 'x')));
    EXPECT_FALSE(model.nvramSet("key", std::string(1024, 'x')));
}

TEST(FilterList, IsAbsentUntilSetAndAfterRemoval) {
    Model model = defaultModel();
    EXPECT_FALSE(model.get(0, 0, "wlFltMacList"));
    ASSERT_TRUE(model.set(0, 0, "wlFltMacList", ""));
    EXPECT_EQ(text(model, 0, 0, "wlFltMacList"), "");
    ASSERT_TRUE(model.set(0, 0, "wlFltMacList", "*DEL*"));
    EXPECT_FALSE(model.get(0, 0, "wlFltMacList"));
    ASSERT_TRUE(model.set(0, 0, "wlFltMacList", "02:00:00:00:00:01"));
    ASSERT_TRUE(model.set(0, 0, "wlFltMacList", std::nullopt));
    EXPECT_FALSE(model.get(0, 0, "wlFltMacList"));
}

TEST(Variables, AreClearedByNull) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlWscAuthoStaMac", "02:00:00:00:00:01"));
    ASSERT_TRUE(model.set(0, 0, "wlWscAuthoStaMac", std::nullopt));
    EXPECT_EQ(text(model, 0, 0, "wlWscAuthoStaMac"), "");
    EXPECT_FALSE(model.set(0, 0, "wlNBw", std::nullopt));
}

TEST(Variables, ReturnToFactoryValuesByReset) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(1, 0, "wlChannel", "44"));
    ASSERT_TRUE(model.set(1, 0, "wlBootTime", "17"));
    ASSERT_TRUE(model.nvramSet("wl1_bsd_steering_policy", "1 2 3 4 5 0x6"));
    ASSERT_TRUE(model.set(1, 2, "wlSsid", "mine"));
    ASSERT_TRUE(model.set(1, 0, "wlResetRadio", "0"));
    EXPECT_EQ(text(model, 1, 0, "wlCurrentChannel"), "44");
    ASSERT_TRUE(model.set(1, 0, "wlResetRadio", "1"));
    EXPECT_EQ(text(model, 1, 0, "wlChannel"), "149");
    EXPECT_EQ(text(model, 1, 0, "wlCurrentChannel"), "149");
    EXPECT_EQ(text(model, 1, 0, "wlBootTime"), "17");
    EXPECT_EQ(model.nvramGet("wl1_bsd_steering_policy"), "80 5 3 -75 0 0x40");
    EXPECT_EQ(text(model, 1, 2, "wlSsid"), "mine");
    ASSERT_TRUE(model.set(1, 2, "wlResetAP", "1"));
    EXPECT_EQ(text(model, 1, 2, "wlSsid"), "Quorvel-Office");
}

TEST(Nvram, HasEveryContentionKeyOfEveryAccessPoint) {
    const Model model = defaultModel();
    for (int ap = 0; ap < 24; ++ap) {
        for (const char* stem : {"ap_be", "ap_bk", "ap_vi", "ap_vo", "sta_be", "sta_bk", "sta_vi", "sta_vo"}) {
            EXPECT_TRUE(model.nvramGet("wl" + std::to_string(ap) + "_wme_" + stem)) << ap << stem;
        }
    }
    EXPECT_EQ(model.nvramGet("wps_mode"), "enabled");
    EXPECT_EQ(model.nvramGet("wps_proc_status"), "0");
    EXPECT_EQ(model.nvramGet("bsd_role"), "0");
    EXPECT_TRUE(model.nvramGet("wl2_auto_cha"));
    EXPECT_FALSE(model.nvramGet("wl3_auto_cha"));
}

TEST(Nvram, KeepsAnyKeyAndForgetsANullOne) {
    Model model = defaultModel();
    EXPECT_FALSE(model.nvramGet("mine"));
    ASSERT_TRUE(model.nvramSet("mine", "1 2 "));
    EXPECT_EQ(model.nvramGet("mine"), "1 2 ");
    ASSERT_TRUE(model.nvramSet("mine", std::nullopt));
    EXPECT_FALSE(model.nvramGet("mine"));
    EXPECT_FALSE(model.nvramSet("", "x"));
}

TEST(Saving, HoldsOnlyWhatDiffersFromTheFactory) {
    Model model = defaultModel();
    EXPECT_EQ(model.saved(), Saved{});
    ASSERT_TRUE(model.set(1, 0, "wlChannel", "44"));
    ASSERT_TRUE(model.set(0, 1, "wlFltMacList", ""));
    ASSERT_TRUE(model.set(0, 0, "wlBootTime", "5"));
    ASSERT_TRUE(model.nvramSet("bsd_role", "3"));
    ASSERT_TRUE(model.nvramSet("wps_proc_status", "1"));
    Saved expected;
    expected.variables["1.-.wlChannel"] = "44";
    expected.variables["0.1.wlFltMacList"] = "";
    expected.nvram["bsd_role"] = "3";
    EXPECT_EQ(model.saved(), expected);
}

TEST(Saving, BringsEverythingBackAfterAPowerCycle) {
    Model before = defaultModel();
    ASSERT_TRUE(before.set(1, 0, "wlChannel", "44"));
    ASSERT_TRUE(before.set(2, 4, "wlSsid", "Caf\xc3\xa9"));
    ASSERT_TRUE(before.set(0, 0, "wlFltMacMode", "deny"));
    ASSERT_TRUE(before.set(0, 0, "wlFltMacList", "02:00:00:00:00:01,02:00:00:00:00:02"));
    ASSERT_TRUE(before.nvramSet("wps_mode", std::nullopt));
    const Model after(shippedBoard("tri-band"), before.saved(), 1);
    EXPECT_EQ(text(after, 1, 0, "wlCurrentChannel"), "44");
    EXPECT_EQ(text(after, 2, 4, "wlSsid"), "Caf\xc3\xa9");
    EXPECT_EQ(text(after, 0, 0, "wlFltMacMode"), "deny");
    EXPECT_EQ(text(after, 0, 0, "wlFltMacList"), "02:00:00:00:00:01,02:00:00:00:00:02");
    EXPECT_FALSE(after.nvramGet("wps_mode"));
    EXPECT_EQ(after.saved(), before.saved());
}

TEST(Saving, FromAnotherBoardLeavesOutWhatDoesNotFit) {
    Saved saved;
    saved.variables["2.-.wlChannel"] = "6";
    saved.variables["0.-.wlChannel"] = "44";
    saved.variables["1.9.wlSsid"] = "x";
    saved.variables["nonsense"] = "x";
    saved.variables["0.-.radio_status"] = "Down";
    const Model model(shippedBoard("dual-band"), saved, 1);
    EXPECT_EQ(text(model, 0, 0, "wlCurrentChannel"), "11");
    EXPECT_EQ(text(model, 0, 0, "radio_status"), "Up");
    EXPECT_EQ(model.saved(), Saved{});
}

}  // namespace
}  // namespace quorvel::manager::test
