#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/wifi/MappedParameters.h"
#include "tests/wifi/platform/FreshProcess.h"
#include "wifi/QuorvelWiFiExports.h"

// WPS: the switch with the board-wide mode that follows it, and exchanges.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using scripted::Platform;
using scripted::runFresh;
using Texts = std::vector<std::string>;

const MappedText kTexts[] = {
    {"WiFiAccessPointWPSConfigMethodsSupported", "configMethodsSupported"},
    {"WiFiAccessPointWPSConfigMethodsEnabled", "configMethodsEnabled"},
    {"WiFiAccessPointWPSDevicePIN", "wlWscDevPin"},
    {"WiFiAccessPointWPSEnrolleePin", "wlWscStaPin"},
};

// Switches WPS of an access point on or off.
void switchWps(std::uint32_t ap, std::uint32_t on, std::uint32_t expected = 0) {
    GuardedBlock context(700);
    ASSERT_EQ(WiFiAccessPointWPSInitContext(context.get()), 0U);
    ASSERT_EQ(WiFiAccessPointWPSEnableSet(context.get(), ap, on), 0U);
    EXPECT_EQ(WiFiAccessPointWPSApplyContext(context.get(), ap), expected);
    EXPECT_EQ(WiFiAccessPointWPSCheckContextNodeSet(context.get(), 1), 0U);
    EXPECT_TRUE(context.intact());
}

class Wps : public MappedParameters {
  protected:
    Wps() {
        EXPECT_EQ(WiFiAccessPointWPSInitContext(context.get()), 0U);
        platform.forget();
    }
    void set(const char* variable, const std::string& value) {
        platform.setVariable(kRadioIndex, kSubIndex, variable, value);
    }
    void stageMethod(const std::string& method) {
        ASSERT_EQ(
            WiFiAccessPointWPSMethodSet(context.get(), 7, method.c_str(), static_cast<std::uint32_t>(method.size())),
            0U);
    }
    void stagePush(std::uint32_t value = 1) {
        ASSERT_EQ(WiFiAccessPointWPSButtonPushSet(context.get(), kAccessPoint, value), 0U);
    }
    Texts apply() {
        platform.forget();
        EXPECT_EQ(WiFiAccessPointWPSApplyContext(context.get(), kAccessPoint), 0U);
        for (std::uint32_t node = 1; node <= 9; ++node) {
            EXPECT_EQ(WiFiAccessPointWPSCheckContextNodeSet(context.get(), node), 0U) << node;
        }
        EXPECT_TRUE(context.intact());
        for (const auto& line : platform.logs()) {
            if (line.file == "wifi/QuorvelWiFiAccessPointWPSImpl") {
                EXPECT_EQ(line.function, line.text == "WPS enable get fail" ? "WiFiAccessPointWPSEnableGetImpl"
                                                                            : "WiFiAccessPointWPSApplyContextImpl");
            } else {
                EXPECT_EQ(line.text.find("WPS "), std::string::npos) << line.text;
            }
        }
        return platform.callTexts({"wlcsm_mngr_set", "wlcsm_nvram_set"});
    }
    static Texts exchange(const char* command) {
        return {writeCall("wlWscConfig", command), writeCall("wsc_force_restart", "n")};
    }
    static Texts exchangeAndClear(const char* command) {
        Texts texts = exchange(command);
        texts.push_back(kClearedStation);
        return texts;
    }
    static constexpr char kClearedStation[] = "wlcsm_mngr_set(1, 2, \"wlWscAuthoStaMac\", null)";
    GuardedBlock context{700};
};

TEST_F(Wps, ReadsItsVariables) {
    for (const MappedText& text : kTexts) {
        expectRead(text);
        expectFailure(text.stem, text.variable);
    }
    expectRead(MappedNumber{"WiFiAccessPointWPSConfigurationState", "wlWscAPMode", "1", 1});
    expectFailure("WiFiAccessPointWPSConfigurationState", "wlWscAPMode");
    expectUntouched("WiFiAccessPointWPSButtonPush");
}

TEST_F(Wps, WritesItsVariables) {
    expectWritten(kTexts[1], WiFiAccessPointWPSApplyContext);
    expectWritten(MappedNumber{"WiFiAccessPointWPSConfigurationState", "wlWscAPMode", "1", 1},
                  WiFiAccessPointWPSApplyContext);
    ASSERT_EQ(WiFiAccessPointWPSDevicePINSet(context.get(), kAccessPoint, "12345670", 8), 0U);
    ASSERT_EQ(WiFiAccessPointWPSEnrolleePinSet(context.get(), kAccessPoint, "1234", 4), 0U);
    EXPECT_EQ(apply(), (Texts{writeCall("wlWscDevPin", "12345670"), writeCall("wlWscStaPin", "1234")}));
}

TEST_F(Wps, IsEnabledUnlessItsModeIsExactlyDisabled) {
    const std::pair<const char*, std::uint32_t> modes[] = {{"disabled", 0}, {"enabled", 1}, {"", 1}, {"disabled ", 1},
                                                           {"Disabled", 1}, {"disable", 1}, {"0", 1}};
    for (const auto& [mode, enabled] : modes) {
        expectRead(MappedNumber{"WiFiAccessPointWPSEnable", "wlWscMode", mode, enabled});
    }
    expectRead(MappedNumber{"WiFiAccessPointWPSEnable", "wlWscMode", std::string(1023, 'd').c_str(), 1});
}

TEST_F(Wps, SaysWhenItsModeCannotBeRead) {
    expectFailure("WiFiAccessPointWPSEnable", "wlWscMode");
    EXPECT_TRUE(platform.logged(0, "WPS enable get fail"));
    std::uint8_t enabled = 7;
    EXPECT_EQ(WiFiAccessPointWPSEnableGet(25, &enabled), 6U);
    EXPECT_EQ(enabled, 7U);
    EXPECT_EQ(platform.logCount(0, "WPS enable get fail"), 2U);
}

TEST_F(Wps, StatusIsTheBoards) {
    const std::pair<const char*, std::int32_t> texts[] = {{"2", 2}, {"19", 19},  {"-1", -1},
                                                          {"", 0},  {"done", 0}, {" 3 x", 3}};
    for (const auto& [text, number] : texts) {
        platform.setNvram("wps_proc_status", text);
        for (const std::uint32_t ap : {1U, 24U, 25U}) {
            GuardedBlock out(4);
            EXPECT_EQ(WiFiAccessPointWPSStatusGet(ap, static_cast<std::int32_t*>(out.get())), 0U);
            EXPECT_EQ(out.at<std::int32_t>(0), number);
            EXPECT_TRUE(out.intact());
        }
    }
    platform.removeNvram("wps_proc_status");
    std::int32_t status = 7;
    EXPECT_EQ(WiFiAccessPointWPSStatusGet(1, &status), 0U);
    EXPECT_EQ(status, 0);
}

TEST_F(Wps, TakesPinsOfTheirExactLengths) {
    struct Case {
        const char* pin;
        std::uint32_t len;
        std::uint32_t device;
        std::uint32_t enrollee;
    };
    const Case cases[] = {{"", 0, 8, 8},          {"123", 3, 8, 8},
                          {"1234", 4, 8, 0},      {"123456", 6, 8, 8},
                          {"1234567", 7, 8, 8},   {"12345678", 8, 0, 0},
                          {"123456789", 9, 8, 8}, {"12345678", 16, 0, 0},
                          {"1234", 16, 8, 0},     {"12345678", 17, 8, 8},
                          {"123456789", 8, 0, 0}, {"123456789", 4, 8, 0},
                          {"12345678", 9, 0, 0},  {"1234567890123456", 16, 8, 8}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.pin) + " " + std::to_string(c.len));
        char pin[32] = {};
        std::copy_n(c.pin, std::char_traits<char>::length(c.pin), pin);
        EXPECT_EQ(WiFiAccessPointWPSDevicePINSet(context.get(), 1, pin, c.len), c.device);
        EXPECT_EQ(WiFiAccessPointWPSEnrolleePinSet(context.get(), 1, pin, c.len), c.enrollee);
    }
}

// --- The switch

TEST_F(Wps, SwitchesTheAccessPointAndTheBoardOn) {
    ASSERT_EQ(WiFiAccessPointWPSEnableSet(context.get(), kAccessPoint, 1), 0U);
    EXPECT_EQ(apply(), (Texts{writeCall("wlWscMode", "enabled"), "wlcsm_nvram_set(\"wps_mode\", \"enabled\")"}));
}

TEST_F(Wps, SwitchesTheBoardOffWithItsLastRadio) {
    EXPECT_TRUE(runFresh([] {
        Platform& world = Platform::instance();
        switchWps(1, 1);
        switchWps(9, 1);
        EXPECT_EQ(world.nvram("wps_mode"), "enabled");
        switchWps(1, 0);
        EXPECT_EQ(world.nvram("wps_mode"), "enabled");
        EXPECT_EQ(world.variable(0, 0, "wlWscMode"), "disabled");
        switchWps(9, 0);
        EXPECT_EQ(world.nvram("wps_mode"), "disabled");
    }));
}

TEST_F(Wps, KeepsTheBoardOnForTheFirstRadioToo) {
    EXPECT_TRUE(runFresh([] {
        switchWps(1, 1);
        switchWps(17, 1);
        switchWps(17, 0);
        EXPECT_EQ(Platform::instance().nvram("wps_mode"), "enabled");
        switchWps(1, 0);
        EXPECT_EQ(Platform::instance().nvram("wps_mode"), "disabled");
    }));
}

TEST_F(Wps, CountsARadioOnceWhateverItsAccessPoints) {
    EXPECT_TRUE(runFresh([] {
        Platform& world = Platform::instance();
        switchWps(1, 1);
        switchWps(2, 1);
        switchWps(2, 0);
        EXPECT_EQ(world.nvram("wps_mode"), "disabled");  // although the radio's first access point still has WPS on
        EXPECT_EQ(world.variable(0, 0, "wlWscMode"), "enabled");
    }));
}

TEST_F(Wps, ForgetsTheRadiosWhenTheLibraryIsLoadedAgain) {
    EXPECT_TRUE(runFresh([] {
        Platform& world = Platform::instance();
        world.setNvram("wps_mode", "enabled");
        world.setVariable(1, 0, "wlWscMode", "enabled");
        switchWps(1, 0);
        EXPECT_EQ(world.nvram("wps_mode"), "disabled");
    }));
}

TEST_F(Wps, OfARadioThatDoesNotExistTouchesNoBit) {
    EXPECT_TRUE(runFresh([] {
        Platform& world = Platform::instance();
        switchWps(25, 1, 6);
        EXPECT_EQ(world.callTexts({"wlcsm_mngr_set"}),
                  Texts{"wlcsm_mngr_set(4294967294, 0, \"wlWscMode\", \"enabled\")"});
        EXPECT_EQ(world.nvram("wps_mode"), "enabled");
        switchWps(1, 1);
        switchWps(1, 0);
        EXPECT_EQ(world.nvram("wps_mode"), "disabled");  // no other radio had its bit set
        switchWps(1, 1);
        switchWps(25, 0, 6);
        EXPECT_EQ(world.nvram("wps_mode"), "enabled");
    }));
}

TEST_F(Wps, DoesNotLookAtWhatTheManagerAnswers) {
    platform.fail("wlcsm_mngr_set");
    platform.fail("wlcsm_nvram_set");
    ASSERT_EQ(WiFiAccessPointWPSEnableSet(context.get(), kAccessPoint, 1), 0U);
    EXPECT_EQ(apply().size(), 2U);
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

// --- Exchanges

TEST_F(Wps, PushStartsAnExchangeWhateverItsValue) {
    set("wlWscMode", "enabled");
    for (const std::uint32_t value : {1U, 0U}) {
        stageMethod("PushButton");
        stagePush(value);
        EXPECT_EQ(apply(), exchangeAndClear("client-pbc"));
        EXPECT_EQ(platform.logTexts(0), Texts{});
        EXPECT_EQ(platform.callTexts({"Quorvel_ContextClearMap"}), Texts{"Quorvel_ContextClearMap(ctx, 7)"});
    }
}

TEST_F(Wps, PushIsOnlySaidWhileWpsIsOff) {
    set("wlWscMode", "disabled");
    for (const char* method : {"PushButton", "PIN", "other", ""}) {
        stageMethod(method);
        stagePush();
        ASSERT_EQ(WiFiAccessPointWPSConfigurationStateSet(context.get(), kAccessPoint, 1), 0U);
        EXPECT_EQ(apply(), Texts{writeCall("wlWscAPMode", "1")});  // the apply goes on
        EXPECT_EQ(platform.logTexts(0), Texts{"WPS is not enabled."});
    }
}

TEST_F(Wps, AnUnreadSwitchIsOff) {
    stageMethod("PushButton");
    stagePush();
    ASSERT_EQ(WiFiAccessPointWPSCancel(context.get()), 0U);
    EXPECT_EQ(apply(), Texts{});
    EXPECT_EQ(platform.logCount(0, "WPS enable get fail"), 2U);
    EXPECT_EQ(platform.logCount(0, "WPS is not enabled."), 2U);
}

TEST_F(Wps, PinStartsAnExchangeWithThePinOfTheManager) {
    set("wlWscMode", "enabled");
    for (const char* pin : {"1234", "12345670"}) {
        set("wlWscStaPin", pin);
        stageMethod("PIN");
        stagePush();
        EXPECT_EQ(apply(), exchangeAndClear("client-pin"));
    }
}

TEST_F(Wps, PinOfAnotherLengthClearsTheStationOnly) {
    set("wlWscMode", "enabled");
    for (const std::size_t length : {0U, 1U, 3U, 5U, 7U, 9U, 15U, 16U, 64U}) {
        set("wlWscStaPin", std::string(length, '1'));
        stageMethod("PIN");
        stagePush();
        EXPECT_EQ(apply(), Texts{kClearedStation}) << length;
        EXPECT_EQ(platform.logTexts(0), Texts{"Invalid Station Pin Length."});
    }
    platform.removeVariable(kRadioIndex, kSubIndex, "wlWscStaPin");
    stageMethod("PIN");
    stagePush();
    EXPECT_EQ(apply(), Texts{kClearedStation});
    EXPECT_TRUE(platform.logged(0, "Invalid Station Pin Length."));
}

// The staged PIN is written after the exchange has begun.
TEST_F(Wps, PinStagedWithThePushIsTooLateForIt) {
    set("wlWscMode", "enabled");
    set("wlWscStaPin", "");
    ASSERT_EQ(WiFiAccessPointWPSEnrolleePinSet(context.get(), kAccessPoint, "1234", 4), 0U);
    stageMethod("PIN");
    stagePush();
    EXPECT_EQ(apply(), (Texts{kClearedStation, writeCall("wlWscStaPin", "1234")}));
}

TEST_F(Wps, AnotherMethodIsNotSupported) {
    set("wlWscMode", "enabled");
    set("wlWscStaPin", "1234");
    for (const char* method : {"pushbutton", "PushButto", "PushButtonX", "PIN ", "pin", "", "123456789012345"}) {
        stageMethod(method);
        stagePush();
        EXPECT_EQ(apply(), Texts{kClearedStation});
        EXPECT_EQ(platform.logTexts(0), Texts{"Not supported WPSMethod[" + std::string(method) + "]\n"});
    }
}

TEST_F(Wps, MethodWithoutTerminatorEndsWithItsField) {
    set("wlWscMode", "enabled");
    context.write(684, std::string(16, 'm'));
    stagePush();
    EXPECT_EQ(apply(), Texts{kClearedStation});
    EXPECT_EQ(platform.logTexts(0), Texts{"Not supported WPSMethod[" + std::string(16, 'm') + "]\n"});
}

TEST_F(Wps, MethodGoesWithTheNextPushOnly) {
    set("wlWscMode", "enabled");
    stageMethod("PushButton");
    EXPECT_EQ(apply(), Texts{});
    stagePush();
    EXPECT_EQ(apply(), Texts{kClearedStation});  // initialised by the first apply
}

TEST_F(Wps, CancelEndsTheExchange) {
    set("wlWscMode", "enabled");
    ASSERT_EQ(WiFiAccessPointWPSCancel(context.get()), 0U);
    EXPECT_EQ(apply(), exchange("cancel"));
    EXPECT_EQ(platform.callTexts({"Quorvel_ContextClearMap"}), Texts{"Quorvel_ContextClearMap(ctx, 9)"});
    set("wlWscMode", "disabled");
    ASSERT_EQ(WiFiAccessPointWPSCancel(context.get()), 0U);
    EXPECT_EQ(apply(), Texts{});
    EXPECT_EQ(platform.logTexts(0), Texts{"WPS is not enabled."});
}

// Quirk: the generic walk goes one node beyond the last row.
TEST_F(Wps, WalkEndsWithTheCancelThatIsDone) {
    set("wlWscMode", "enabled");
    ASSERT_EQ(WiFiAccessPointWPSCancel(context.get()), 0U);
    platform.forget();
    EXPECT_EQ(WiFiAccessPointWPSApplyContext(context.get(), kAccessPoint), 0U);
    Texts asked{"1", "7", "9"};  // its own nodes
    for (int node = 1; node <= 9; ++node)
        asked.push_back(std::to_string(node));
    for (std::string& node : asked)
        node = "Quorvel_IsContextSetMap(ctx, " + node + ")";
    EXPECT_EQ(platform.callTexts({"Quorvel_IsContextSetMap"}), asked);
}

TEST_F(Wps, MethodAndCancelSayWhenTheyAreStaged) {
    GuardedBlock uninitialised(700);
    const auto lines = [this](const std::string& function) {
        Texts texts;
        for (const auto& line : platform.logs()) {
            EXPECT_EQ(line.function, function);
            EXPECT_EQ(line.file, "wifi/QuorvelWiFiAccessPointWPS");
            texts.push_back(std::to_string(line.level) + " " + line.text);
        }
        platform.forget();
        return texts;
    };
    const std::string method = "WiFiAccessPointWPSMethodSet";
    EXPECT_EQ(WiFiAccessPointWPSMethodSet(context.get(), 7, "PIN", 3), 0U);
    EXPECT_EQ(lines(method), (Texts{"3 " + method + " Enter", "3 " + method + " DONE"}));
    EXPECT_EQ(WiFiAccessPointWPSMethodSet(context.get(), 7, "1234567890123456", 16), 8U);
    EXPECT_EQ(lines(method), (Texts{"3 " + method + " Enter", "0 Value out of range"}));
    EXPECT_EQ(WiFiAccessPointWPSMethodSet(context.get(), 7, nullptr, 16),
              6U);  // a null text is refused before the length
    EXPECT_EQ(lines(method), (Texts{"3 " + method + " Enter", "0 Invalid input params"}));
    EXPECT_EQ(WiFiAccessPointWPSMethodSet(uninitialised.get(), 7, nullptr, 16),
              5U);  // an uninitialised context before both
    EXPECT_EQ(lines(method), (Texts{"3 " + method + " Enter", "0 Uninit context"}));
    EXPECT_EQ(context.bytes(684, 16), "PIN" + std::string(13, '\0'));
    const std::string cancel = "WiFiAccessPointWPSCancel";
    EXPECT_EQ(WiFiAccessPointWPSCancel(context.get()), 0U);
    EXPECT_EQ(lines(cancel), (Texts{"3 " + cancel + " Enter", "3 " + cancel + " DONE"}));
    EXPECT_EQ(WiFiAccessPointWPSCancel(nullptr), 2U);
    EXPECT_EQ(lines(cancel), (Texts{"3 " + cancel + " Enter", "0 Invalid context"}));
    EXPECT_EQ(WiFiAccessPointWPSCancel(uninitialised.get()), 5U);
    EXPECT_EQ(lines(cancel), (Texts{"3 " + cancel + " Enter", "0 Uninit context"}));
}

// Quirk: the table has eight nodes, and the walk checks one more.
TEST_F(Wps, WalksNineNodesAfterItsOwnThree) {
    (void)apply();
    Texts asked = {"Quorvel_IsContextSetMap(ctx, 1)", "Quorvel_IsContextSetMap(ctx, 7)",
                   "Quorvel_IsContextSetMap(ctx, 9)"};
    for (std::uint32_t node = 1; node <= 9; ++node) {
        asked.push_back("Quorvel_IsContextSetMap(ctx, " + std::to_string(node) + ")");
    }
    Texts made = platform.callTexts({"Quorvel_IsContextSetMap"});
    ASSERT_EQ(made.size(), asked.size() + 9);  // the generic walk checks nine nodes
    made.resize(asked.size());
    EXPECT_EQ(made, asked);
    // The apply checks its own three nodes through the object's check, which logs a trace line.
    EXPECT_EQ(platform.logCount(3, "WiFiAccessPointWPSCheckContextNodeSet DONE"), 3U + 9U);
}

// Its own marks are cleared all the same; the others stay staged.
TEST_F(Wps, OfAnAccessPointThatDoesNotExistFailsAfterItsOwnSteps) {
    platform.setVariable(0xFFFFFFFE, 0, "wlWscMode", "enabled");
    stageMethod("PushButton");
    stagePush();
    ASSERT_EQ(WiFiAccessPointWPSCancel(context.get()), 0U);
    ASSERT_EQ(WiFiAccessPointWPSDevicePINSet(context.get(), 25, "12345670", 8), 0U);
    platform.forget();
    EXPECT_EQ(WiFiAccessPointWPSApplyContext(context.get(), 25), 6U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set"}), Texts{});
    EXPECT_EQ(platform.logCount(0, "WPS is not enabled."), 2U);  // the switch cannot be read
    for (std::uint32_t node = 1; node <= 9; ++node) {
        EXPECT_EQ(WiFiAccessPointWPSCheckContextNodeSet(context.get(), node), node == 4 ? 1U : 0U) << node;
    }
    EXPECT_EQ(context.bytes(684, 10), "PushButton");
}

TEST_F(Wps, DoesEverythingInOrder) {
    set("wlWscMode", "disabled");
    ASSERT_EQ(WiFiAccessPointWPSCancel(context.get()), 0U);
    stagePush();
    stageMethod("PushButton");
    ASSERT_EQ(WiFiAccessPointWPSConfigMethodsEnabledSet(context.get(), kAccessPoint, "PushButton,PIN", 14), 0U);
    ASSERT_EQ(WiFiAccessPointWPSEnableSet(context.get(), kAccessPoint, 1), 0U);
    // Switched on first, so that the push finds WPS on.
    EXPECT_EQ(apply(), (Texts{writeCall("wlWscMode", "enabled"), "wlcsm_nvram_set(\"wps_mode\", \"enabled\")",
                              writeCall("wlWscConfig", "client-pbc"), writeCall("wsc_force_restart", "n"),
                              kClearedStation, writeCall("wlWscConfig", "cancel"), writeCall("wsc_force_restart", "n"),
                              writeCall("configMethodsEnabled", "PushButton,PIN")}));
    for (const auto& call : platform.calls()) {
        if (call.name == "wlcsm_mngr_set" || call.name == "wlcsm_nvram_set") {
            EXPECT_TRUE(call.lockHeld) << call.text();
        }
    }
}

TEST_F(Wps, SnapshotEndsAtTheFirstUnreadValue) {
    set("wlWscMode", "enabled");
    GuardedBlock snapshot(700);
    EXPECT_EQ(WiFiAccessPointWPSInstanceGet(snapshot.get(), kAccessPoint), 1U);
    EXPECT_TRUE(platform.logged(0, "Get failed, result 1"));
    EXPECT_TRUE(platform.logged(3, "WiFiAccessPointWPSConfigMethodsSupportedGet Enter"));
    EXPECT_FALSE(platform.logged(3, "WiFiAccessPointWPSConfigMethodsEnabledGet Enter"));
    EXPECT_EQ(snapshot.at<std::uint8_t>(132), 1U);
}

}  // namespace

}  // namespace quorvel
