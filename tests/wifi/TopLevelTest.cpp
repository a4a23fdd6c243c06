#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Implementations.h"

// The object at the root of the data model.

namespace {

using quorvel::scripted::GuardedBlock;
using quorvel::scripted::PlatformTest;
using Texts = std::vector<std::string>;

class TopLevelReads : public PlatformTest {
  protected:
    // The number that a getter gives for a variable's text.
    std::uint32_t read(std::uint32_t (*getter)(std::uint32_t*), const std::string& variable, const std::string& text) {
        platform.setVariable(0, 0, variable, text);
        std::uint32_t value = 0xCDCDCDCDU;
        EXPECT_EQ(getter(&value), 0U);
        return value;
    }

    std::uint8_t bandSteering() {
        std::uint8_t value = 0xCD;
        EXPECT_EQ(WiFiBandSteeringEnableGet(&value), 0U);
        return value;
    }
};

TEST_F(TopLevelReads, RadioCountComesFromTheManagerItself) {
    EXPECT_EQ(read(WiFiRadioNumberOfEntriesGet, "radio_number", "3"), 3U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get"}),
              Texts{"wlcsm_mngr_get(0, 0, \"radio_number\")"});
    EXPECT_EQ(read(WiFiRadioNumberOfEntriesGet, "radio_number", "010"), 10U);
}

TEST_F(TopLevelReads, RadioCountIsZeroWhenTheManagerFails) {
    std::uint32_t value = 7;
    EXPECT_EQ(WiFiRadioNumberOfEntriesGet(&value), 1U);
    EXPECT_EQ(value, 0U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"Radio number Get Fail", "Impl call failed, result 1"}));
    for (const auto& line : platform.logs()) {
        if (line.text == "Radio number Get Fail") {
            EXPECT_EQ(line.file, "wifi/QuorvelWiFiImpl");
            EXPECT_EQ(line.function, "WiFiRadioNumberOfEntriesGetImpl");
        }
    }
}

TEST_F(TopLevelReads, RadioCountTakesAnyAnswerButZeroForSuccess) {
    EXPECT_EQ(read(WiFiRadioNumberOfEntriesGet, "radio_number", "3"), 3U);
    for (const std::int64_t result : {2, -1}) {
        // The manager writes nothing, so the getter converts the cleared buffer.
        platform.answer("wlcsm_mngr_get", result);
        EXPECT_EQ(read(WiFiRadioNumberOfEntriesGet, "radio_number", "3"), 0U);
    }
}

// Quirk: SSIDs are counted by "bssid_number" and access points by "ssid_number".
TEST_F(TopLevelReads, CountsOfSsidsAndAccessPointsComeFromEachOthersNames) {
    EXPECT_EQ(read(WiFiSSIDNumberOfEntriesGet, "bssid_number", "16"), 16U);
    EXPECT_EQ(read(WiFiAccessPointNumberOfEntriesGet, "ssid_number", "8"), 8U);
    EXPECT_EQ(read(WiFiEndPointNumberOfEntriesGet, "sta_number", "5"), 5U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get"}),
              (Texts{"wlcsm_mngr_ext_get(0, 0, \"bssid_number\")", "wlcsm_mngr_ext_get(0, 0, \"ssid_number\")",
                     "wlcsm_mngr_ext_get(0, 0, \"sta_number\")"}));
}

TEST_F(TopLevelReads, CountsFailWhenTheManagerDoes) {
    using Getter = std::uint32_t (*)(std::uint32_t*);
    const std::pair<Getter, const char*> counts[] = {{WiFiSSIDNumberOfEntriesGet, "bssid_number"},
                                                     {WiFiAccessPointNumberOfEntriesGet, "ssid_number"},
                                                     {WiFiEndPointNumberOfEntriesGet, "sta_number"}};
    for (const auto& [getter, variable] : counts) {
        platform.forget();
        std::uint32_t value = 7;
        EXPECT_EQ(getter(&value), 1U);
        EXPECT_EQ(value, 7U);
        EXPECT_EQ(platform.logTexts(0),
                  (Texts{"wlcsm_mngr_get: radio[0], ssid[0], varName[" + std::string(variable) + "] FAIL.",
                         "Impl call failed, result 1"}));
    }
}

TEST_F(TopLevelReads, SteeringAndCommitLeaveTheValueAsItWas) {
    using Getter = std::uint32_t (*)(std::uint8_t*);
    for (const Getter getter : {Getter{WiFiSSIDSteeringEnabledGet}, Getter{WiFiCommitSettingsGet},
                                Getter{WiFiSSIDSteeringEnabledGetImpl}, Getter{WiFiCommitSettingsGetImpl}}) {
        std::uint8_t value = 0xCD;
        EXPECT_EQ(getter(&value), 0U);
        EXPECT_EQ(value, 0xCD);
    }
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get", "wlcsm_nvram_get", "wlcsm_mngr_restart"}),
              Texts{});
}

TEST_F(TopLevelReads, CapabilitiesAreFixed) {
    std::uint8_t value = 0xCD;
    EXPECT_EQ(WiFiBandSteeringCapabilityGet(&value), 0U);
    EXPECT_EQ(value, 1);
    value = 0xCD;
    EXPECT_EQ(WiFiATMCapableGet(&value), 0U);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get", "wlcsm_nvram_get"}), Texts{});
}

TEST_F(TopLevelReads, BandSteeringIsOnForTheNumberThreeOnly) {
    EXPECT_EQ(bandSteering(), 0);
    const std::pair<const char*, std::uint8_t> roles[] = {
        {"3", 1},  {"03", 1}, {"1", 0}, {"0", 0}, {"", 0},   {"33", 0},  {"3 ", 1},         {"off", 0}, {" 3", 1},
        {"3x", 1}, {"-3", 0}, {"2", 0}, {"4", 0}, {"x3", 0}, {"259", 0}, {"4294967299", 0}, {"0x3", 0}};
    for (const auto& [role, on] : roles) {
        platform.setNvram("bsd_role", role);
        EXPECT_EQ(bandSteering(), on) << role;
    }
}

TEST_F(TopLevelReads, BandSteeringDoesNotAskTheManager) {
    platform.setVariable(0, 0, "bsdRole", "3");
    EXPECT_EQ(bandSteering(), 0);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get"}), Texts{});
    EXPECT_EQ(platform.callTexts({"wlcsm_nvram_get"}), Texts{"wlcsm_nvram_get(\"bsd_role\")"});
    for (const auto& call : platform.calls()) {
        if (call.name == "wlcsm_nvram_get") {
            EXPECT_TRUE(call.lockHeld);
        }
    }
}

// Quirk: no front end calls this function.
TEST_F(TopLevelReads, BandSteeringsImplementationAsksTheManager) {
    platform.setNvram("bsd_role", "0");
    platform.setVariable(0, 0, "bsdRole", "3");
    std::uint8_t value = 0xCD;
    EXPECT_EQ(WiFiBandSteeringEnableGetImpl(&value), 0U);
    EXPECT_EQ(value, 3);
    EXPECT_EQ(platform.callTexts(), Texts{"wlcsm_mngr_ext_get(0, 0, \"bsdRole\")"});
}

TEST_F(TopLevelReads, BridgeInfoIsBoundedByTheBuffer) {
    platform.setVariable(0, 0, "wlBridgeInfo", std::string(300, 'b'));
    GuardedBlock buffer(200);
    EXPECT_EQ(WiFiBridgeInfoGet(buffer.text(), 127), 8U);
    EXPECT_EQ(WiFiBridgeInfoGet(buffer.text(), 128), 0U);
    EXPECT_EQ(buffer.bytes(0, 129), std::string(127, 'b').append("\0\xEE", 2));
    platform.setVariable(0, 0, "wlBridgeInfo", std::string(128, 'b'));
    EXPECT_EQ(WiFiBridgeInfoGet(buffer.text(), 128), 0U);
    EXPECT_EQ(buffer.bytes(0, 130), std::string(128, 'b').append("\0\xEE", 2));
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_ext_get"}),
              (Texts{"wlcsm_mngr_ext_get(0, 0, \"wlBridgeInfo\")", "wlcsm_mngr_ext_get(0, 0, \"wlBridgeInfo\")"}));
}

class Commit : public PlatformTest {};

TEST_F(Commit, RestartsEveryRadioAtOnceWithoutTheLock) {
    EXPECT_EQ(WiFiCommitSettingsSet(), 0U);
    EXPECT_EQ(platform.callTexts(), (Texts{"wlcsm_mngr_restart(0, 0, 0, 0)", "wlcsm_mngr_restart(1, 0, 0, 0)",
                                           "wlcsm_mngr_restart(2, 0, 0, 0)"}));
    EXPECT_EQ(platform.logTexts(3), (Texts{"WiFiCommitSettingsSet Enter", "WiFiCommitSettingsSet DONE"}));
}

TEST_F(Commit, GoesOnAfterARadioThatFails) {
    platform.failAt("wlcsm_mngr_restart", 2);
    EXPECT_EQ(WiFiCommitSettingsSet(), 1U);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_restart"), 3U);
    EXPECT_EQ(platform.logTexts(0), Texts{"wlcsm_mngr_restart: radio[1], FAIL."});
    EXPECT_EQ(platform.logTexts(3), (Texts{"WiFiCommitSettingsSet Enter", "WiFiCommitSettingsSet DONE"}));
}

TEST_F(Commit, TakesAnyAnswerButZeroForSuccess) {
    platform.answer("wlcsm_mngr_restart", -1);
    EXPECT_EQ(WiFiCommitSettingsSet(), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{});
    platform.forget();
    platform.fail("wlcsm_mngr_restart");
    EXPECT_EQ(WiFiCommitSettingsSet(), 1U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"wlcsm_mngr_restart: radio[0], FAIL.", "wlcsm_mngr_restart: radio[1], FAIL.",
                                           "wlcsm_mngr_restart: radio[2], FAIL."}));
    for (const auto& line : platform.logs()) {
        EXPECT_EQ(line.file, "wifi/QuorvelWiFi");
        EXPECT_EQ(line.function, "WiFiCommitSettingsSet");
    }
}

TEST_F(Commit, RestartsThoughAnotherThreadHoldsTheLock) {
    ASSERT_EQ(WiFiLock(), 0U);
    EXPECT_EQ(WiFiCommitSettingsSet(), 0U);
    EXPECT_EQ(WiFiUnlock(), 0U);
}

class TopLevelApply : public PlatformTest {
  protected:
    TopLevelApply() {
        EXPECT_EQ(WiFiInitContext(context.get()), 0U);
        platform.forget();
    }

    Texts writes() {
        return platform.callTexts({"wlcsm_mngr_set", "wlcsm_nvram_set"});
    }

    GuardedBlock context{284};
};

TEST_F(TopLevelApply, BandSteeringIsWrittenForEveryRadio) {
    for (const auto& [value, role] : {std::pair<std::uint32_t, std::string>{1, "3"}, {0, "0"}}) {
        platform.forget();
        ASSERT_EQ(WiFiBandSteeringEnableSet(context.get(), value), 0U);
        EXPECT_EQ(WiFiApplyContext(context.get()), 0U);
        EXPECT_EQ(writes(), (Texts{"wlcsm_nvram_set(\"bsd_role\", \"" + role + "\")",
                                   "wlcsm_mngr_set(0, 0, \"bsdRole\", \"" + role + "\")",
                                   "wlcsm_mngr_set(1, 0, \"bsdRole\", \"" + role + "\")",
                                   "wlcsm_mngr_set(2, 0, \"bsdRole\", \"" + role + "\")"}));
        EXPECT_EQ(platform.nvram("bsd_role"), role);
        EXPECT_EQ(WiFiCheckContextNodeSet(context.get(), 9), 0U);
    }
}

TEST_F(TopLevelApply, BandSteeringFailuresAreNotReported) {
    platform.fail("wlcsm_nvram_set");
    platform.fail("wlcsm_mngr_set");
    ASSERT_EQ(WiFiBandSteeringEnableSet(context.get(), 1), 0U);
    EXPECT_EQ(WiFiApplyContext(context.get()), 0U);
    EXPECT_EQ(writes().size(), 4U);
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(TopLevelApply, BandSteeringIsOnForOneOnly) {
    for (const std::uint8_t value : std::initializer_list<std::uint8_t>{2, 3, 255}) {
        ASSERT_EQ(WiFiBandSteeringEnableSet(context.get(), 1), 0U);
        context.put<std::uint8_t>(279, value);  // no setter does this
        EXPECT_EQ(WiFiApplyContext(context.get()), 0U);
        EXPECT_EQ(platform.nvram("bsd_role"), "0");
        EXPECT_EQ(platform.variable(2, 0, "bsdRole"), "0");
    }
}

TEST_F(TopLevelApply, BandSteeringIsWrittenFirstAndTakenOut) {
    ASSERT_EQ(WiFiBridgeInfoSet(context.get(), "br0", 3), 0U);
    ASSERT_EQ(WiFiBandSteeringEnableSet(context.get(), 1), 0U);
    EXPECT_EQ(WiFiApplyContext(context.get()), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_nvram_set", "wlcsm_mngr_set", "Quorvel_ContextClearMap"}),
              (Texts{"wlcsm_nvram_set(\"bsd_role\", \"3\")", "wlcsm_mngr_set(0, 0, \"bsdRole\", \"3\")",
                     "wlcsm_mngr_set(1, 0, \"bsdRole\", \"3\")", "wlcsm_mngr_set(2, 0, \"bsdRole\", \"3\")",
                     "Quorvel_ContextClearMap(ctx, 9)", "wlcsm_mngr_set(0, 0, \"wlBridgeInfo\", \"br0\")"}));
}

TEST_F(TopLevelApply, BandSteeringThatIsNotStagedIsLeftAlone) {
    ASSERT_EQ(WiFiBridgeInfoSet(context.get(), "br0", 3), 0U);
    EXPECT_EQ(WiFiApplyContext(context.get()), 0U);
    EXPECT_EQ(writes(), Texts{"wlcsm_mngr_set(0, 0, \"wlBridgeInfo\", \"br0\")"});
    EXPECT_EQ(platform.callCount("Quorvel_ContextClearMap"), 0U);
}

// The apply calls the object's own check, which logs a trace line.
TEST_F(TopLevelApply, AsksTheObjectsOwnCheck) {
    EXPECT_EQ(WiFiApplyContext(context.get()), 0U);
    EXPECT_EQ(platform.logTexts(3), (Texts{"WiFiApplyContext Enter", "WiFiCheckContextNodeSet DONE",
                                           "Quorvel_P_WiFiApplyContext DONE", "WiFiApplyContext DONE"}));
}

TEST_F(TopLevelApply, SsidSteeringHasNowhereToGo) {
    ASSERT_EQ(WiFiSSIDSteeringEnabledSet(context.get(), 1), 0U);
    ASSERT_EQ(WiFiBridgeInfoSet(context.get(), "br0", 3), 0U);
    EXPECT_EQ(WiFiApplyContext(context.get()), 0U);
    EXPECT_EQ(writes(), Texts{"wlcsm_mngr_set(0, 0, \"wlBridgeInfo\", \"br0\")"});
    EXPECT_EQ(platform.logTexts(0), Texts{" No direct wlmgnr mapping for node[5]."});
}

TEST_F(TopLevelApply, WritesUnderTheLockAndInitialisesAgain) {
    ASSERT_EQ(WiFiBandSteeringEnableSet(context.get(), 1), 0U);
    EXPECT_EQ(WiFiApplyContext(context.get()), 0U);
    for (const auto& call : platform.calls()) {
        if (call.name == "wlcsm_mngr_set" || call.name == "wlcsm_nvram_set") {
            EXPECT_TRUE(call.lockHeld) << call.text();
        }
    }
    EXPECT_EQ(platform.callTexts({"Quorvel_ContextInit"}), Texts{"Quorvel_ContextInit(ctx, 284)"});
}

TEST_F(TopLevelApply, BridgeInfoTakesItsWholeField) {
    const std::string text(128, 'b');
    EXPECT_EQ(WiFiBridgeInfoSet(context.get(), text.c_str(), 129), 8U);
    EXPECT_EQ(WiFiBridgeInfoSet(context.get(), text.c_str(), 128), 0U);
    EXPECT_EQ(WiFiApplyContext(context.get()), 0U);
    EXPECT_EQ(writes(), Texts{"wlcsm_mngr_set(0, 0, \"wlBridgeInfo\", \"" + text + "\")"});
    EXPECT_EQ(WiFiBridgeInfoSet(context.get(), nullptr, 129), 6U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"Value out of range", "Invalid input params"}));
    EXPECT_EQ(WiFiCheckContextNodeSet(context.get(), 7), 0U);
}

TEST_F(TopLevelApply, AnswersForNodeTenAndNotForEleven) {
    EXPECT_EQ(WiFiCheckContextNodeSet(context.get(), 10), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{});
    EXPECT_EQ(WiFiCheckContextNodeSet(context.get(), 11), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Exceeded nodes"});
}

}  // namespace
