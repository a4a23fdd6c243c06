#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/wifi/MappedParameters.h"
#include "wifi/QuorvelWiFiAccessPointSecurityImpl.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Contexts.h"
#include "wifi/model/Implementations.h"

// Security: mapped parameters, mode names in both directions, WEP mode derived from the key's length, and the reset
// rule.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using Texts = std::vector<std::string>;

const MappedNumber kNumbers[] = {
    {"WiFiAccessPointSecurityPMF", "wlPmf", "2", 2},
    {"WiFiAccessPointSecurityPMF", "wlPmf", "4294967", 4294967},
    {"WiFiAccessPointSecurityRekeyingInterval", "wlWpaGTKRekey", "3600", 3600},
    {"WiFiAccessPointSecurityRadiusServerPort", "wlRadiusPort", "1812", 1812},
    {"WiFiAccessPointSecuritySecondaryRadiusServerPort", "secondaryRadiusServerPort", "1645", 1645},
    {"WiFiAccessPointSecurityWEPIndex", "wlKeyIndex", "3", 3},
    {"WiFiAccessPointSecurityWPAEncryption", "wlWpa", "tkip", 0},
    {"WiFiAccessPointSecurityWPAEncryption", "wlWpa", "aes", 1},
    {"WiFiAccessPointSecurityWPAEncryption", "wlWpa", "tkip+aes", 2},
};

const MappedText kTexts[] = {
    {"WiFiAccessPointSecurityWEPKey", "wlKey1"},
    {"WiFiAccessPointSecurityKeyPassphrase", "wlWpaPsk"},
    {"WiFiAccessPointSecurityRadiusServerIPAddr", "wlRadiusServerIP"},
    {"WiFiAccessPointSecuritySecondaryRadiusServerIPAddr", "secondaryRadiusServerIPAddr"},
    {"WiFiAccessPointSecurityRadiusSecret", "wlRadiusKey"},
    {"WiFiAccessPointSecuritySecondaryRadiusSecret", "secondaryRadiusSecret"},
    {"WiFiAccessPointSecurityWEPKey2", "wlKey2"},
    {"WiFiAccessPointSecurityWEPKey3", "wlKey3"},
    {"WiFiAccessPointSecurityWEPKey4", "wlKey4"},
    {"WiFiAccessPointSecurityWEPPassphrase", "wlWpaPsk"},
};

struct ModeName {
    const char* dataModel;
    const char* manager;
};

const ModeName kModes[] = {
    {"None", "open"},
    {"WPA-Personal", "psk"},
    {"WPA2-Personal", "psk2"},
    {"WPA-WPA2-Personal", "psk psk2"},
    {"WPA-Enterprise", "wpa"},
    {"WPA2-Enterprise", "wpa2"},
    {"WPA-WPA2-Enterprise", "wpa wpa2"},
};

class Security : public MappedParameters {
  protected:
    Security() {
        EXPECT_EQ(WiFiAccessPointSecurityInitContext(context.get()), 0U);
        platform.forget();
    }
    void set(const char* variable, const std::string& value) {
        platform.setVariable(kRadioIndex, kSubIndex, variable, value);
    }
    std::optional<std::string> at(const char* variable) const {
        return platform.variable(kRadioIndex, kSubIndex, variable);
    }
    void setMode(const char* managerMode) {
        set("wlWep", "disabled");
        set("wlAuthMode", managerMode);
    }
    void setWep(const char* index, const char* variable, const std::string& key) {
        set("wlWep", "enabled");
        set("wlAuthMode", "open");
        set("wlKeyIndex", index);
        set(variable, key);
    }
    std::string mode() {
        platform.forget();
        GuardedBlock out(64);
        EXPECT_EQ(WiFiAccessPointSecurityModeEnabledGet(kAccessPoint, out.text(), 64), 0U);
        EXPECT_TRUE(out.intact());
        for (const std::string& text : platform.logTexts(0)) {
            EXPECT_EQ(text.find("Invalid"), std::string::npos) << text;
        }
        return out.text();
    }
    // The read of the mode fails with 1 and leaves the output; returns the implementation's log lines.
    Texts modeFailure() {
        platform.forget();
        GuardedBlock out(64);
        EXPECT_EQ(WiFiAccessPointSecurityModeEnabledGet(kAccessPoint, out.text(), 64), 1U);
        EXPECT_EQ(out.bytes(0, 64), std::string(64, '\xEE'));
        EXPECT_TRUE(platform.logged(0, "Impl call failed, result 1"));
        Texts lines;
        for (const auto& line : platform.logs()) {
            if (line.level == 0 && line.file == "wifi/QuorvelWiFiAccessPointSecurityImpl") {
                lines.push_back(line.text);
                EXPECT_EQ(line.function, "WiFiAccessPointSecurityModeEnabledGetImpl");
            }
        }
        return lines;
    }
    void stageMode(const std::string& name) {
        ASSERT_EQ(WiFiAccessPointSecurityModeEnabledSet(context.get(), kAccessPoint, name.c_str(),
                                                        static_cast<std::uint32_t>(name.size())),
                  0U);
    }
    Texts apply() {
        platform.forget();
        EXPECT_EQ(WiFiAccessPointSecurityApplyContext(context.get(), kAccessPoint), 0U);
        for (std::uint32_t node = 1; node <= 21; ++node) {
            EXPECT_EQ(WiFiAccessPointSecurityCheckContextNodeSet(context.get(), node), 0U) << node;
        }
        return platform.callTexts({"wlcsm_mngr_set", "wlcsm_nvram_set"});
    }
    // Where a line of this text was logged.
    std::string placeOf(const std::string& text) const {
        for (const auto& line : platform.logs()) {
            if (line.text == text) {
                return line.file + " " + line.function;
            }
        }
        return "nowhere";
    }
    Texts modeWrites(const char* wep, const char* managerMode) {
        return {writeCall("wlWep", wep), writeCall("wlAuthMode", managerMode)};
    }
    GuardedBlock context{800};
};

TEST_F(Security, ReadsItsVariables) {
    expectRead(MappedNumber{"WiFiAccessPointSecurityReset", "reset", "1", 1});
    expectRead(MappedText{"WiFiAccessPointSecurityModesSupported", "modesSupported"});
    for (const MappedNumber& number : kNumbers) {
        expectRead(number);
    }
    for (const MappedText& text : kTexts) {
        expectRead(text);
    }
}

TEST_F(Security, FailsToReadWhatTheManagerDoesNotHave) {
    expectFailure("WiFiAccessPointSecurityReset", "reset");
    expectFailure("WiFiAccessPointSecurityModesSupported", "modesSupported");
    expectFailure("WiFiAccessPointSecurityPreSharedKey", "wlWpaPsk");
    for (const MappedNumber& number : kNumbers) {
        expectFailure(number.stem, number.variable);
    }
    for (const MappedText& text : kTexts) {
        expectFailure(text.stem, text.variable);
    }
}

TEST_F(Security, WritesItsVariables) {
    for (const MappedNumber& number : kNumbers) {
        expectWritten(number, WiFiAccessPointSecurityApplyContext);
    }
    for (const MappedText& text : kTexts) {
        expectWritten(text, WiFiAccessPointSecurityApplyContext);
    }
    expectWritten(MappedText{"WiFiAccessPointSecurityPreSharedKey", "preSharedKey"},
                  WiFiAccessPointSecurityApplyContext);
}

TEST_F(Security, LeavesTheOutputOfTheRadiusRetries) {
    expectUntouched("WiFiAccessPointSecurityRadiusRetries");
}

TEST_F(Security, ReadsThePassphraseForThePreSharedKey) {
    expectRead(MappedText{"WiFiAccessPointSecurityPreSharedKey", "wlWpaPsk"});
    set("wlWpaPsk", "the passphrase");
    ASSERT_EQ(WiFiAccessPointSecurityPreSharedKeySet(context.get(), kAccessPoint, "the key", 7), 0U);
    EXPECT_EQ(apply(), Texts{writeCall("preSharedKey", "the key")});
    char key[33] = {};
    EXPECT_EQ(WiFiAccessPointSecurityPreSharedKeyGet(kAccessPoint, key, 32), 0U);
    EXPECT_STREQ(key, "the passphrase");
}

TEST_F(Security, WritesTheEmptyCipherForAnUnknownCode) {
    for (const std::int32_t code : {3, -1}) {
        ASSERT_EQ(WiFiAccessPointSecurityWPAEncryptionSet(context.get(), kAccessPoint, code), 0U);
        EXPECT_EQ(apply(), Texts{writeCall("wlWpa", "")});
        EXPECT_EQ(platform.logTexts(0), Texts{"Invalid wpaEncryption[" + std::to_string(code) + "]"});
    }
}

TEST_F(Security, LeavesTheCodeOfAnUnknownCipher) {
    set("wlWpa", "wep");
    std::int32_t code = 77;
    EXPECT_EQ(WiFiAccessPointSecurityWPAEncryptionGet(kAccessPoint, &code), 0U);
    EXPECT_EQ(code, 77);
}

TEST_F(Security, RefusesAResetThatIsNoBoolean) {
    EXPECT_EQ(WiFiAccessPointSecurityResetSet(context.get(), kAccessPoint, 2), 8U);
    EXPECT_TRUE(platform.logged(0, "Value out of range"));
    EXPECT_EQ(WiFiAccessPointSecurityCheckContextNodeSet(context.get(), 1), 0U);
}

// --- Mode names

TEST_F(Security, ReadsTheModeByItsName) {
    for (const ModeName& name : kModes) {
        setMode(name.manager);
        EXPECT_EQ(mode(), name.dataModel);
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get"}),
                  (Texts{"wlcsm_mngr_get(1, 2, \"wlWep\")", "wlcsm_mngr_get(1, 2, \"wlAuthMode\")"}));
        const std::string line =
            "dm_value[" + std::string(name.dataModel) + "], wlmngr_value[" + name.manager + "], loading[0]\n";
        EXPECT_TRUE(platform.logged(2, line));
        EXPECT_EQ(placeOf(line), "wifi/QuorvelWiFiAccessPointSecurityImpl wlcsm_dm_adjust_security");
    }
}

TEST_F(Security, ReadsNoneForAModeItDoesNotKnow) {
    for (const char* unknown : {"*DEL*", "", "PSK", "psk2 psk", "psk psk2 ", " psk", "psk3", "sae",
                                "a mode whose name is longer than the buffer"}) {
        setMode(unknown);
        EXPECT_EQ(mode(), "None") << unknown;
    }
    platform.removeVariable(kRadioIndex, kSubIndex, "wlAuthMode");
    EXPECT_EQ(mode(), "None");
    EXPECT_TRUE(platform.logged(2, "dm_value[None], wlmngr_value[], loading[0]\n"));  // the switch's text is cleared
}

TEST_F(Security, TakesAWepSwitchByItsBeginning) {
    setMode("psk2");
    set("wlWep", "disabled for good");
    EXPECT_EQ(mode(), "WPA2-Personal");
    setWep("1", "wlKey1", "abcde");
    set("wlWep", "enabledness");
    EXPECT_EQ(mode(), "WEP-64");
}

// Compares 32 characters of the switch and of a mode's name.
TEST_F(Security, BoundsWhatItReadsOfAMode) {
    set("wlWep", std::string(32, 'w') + "beyond");
    EXPECT_EQ(modeFailure(), Texts{"Invalid wlWep value: " + std::string(32, 'w')});
    setMode((std::string(32, 'm') + "beyond").c_str());
    EXPECT_EQ(mode(), "None");
    EXPECT_EQ(platform.formatOf("dm_value[None], wlmngr_value[" + std::string(32, 'm') + "], loading[0]\n"),
              "dm_value[%s], wlmngr_value[%s], loading[%u]\n");
}

TEST_F(Security, FailsForAnotherWepSwitch) {
    for (const char* value : {"", "enable", "disable", "Enabled", "DISABLED", "1", " enabled"}) {
        set("wlWep", value);
        EXPECT_EQ(modeFailure(), Texts{"Invalid wlWep value: " + std::string(value)});
    }
    platform.removeVariable(kRadioIndex, kSubIndex, "wlWep");
    EXPECT_EQ(modeFailure(), Texts{"Invalid wlWep value: "});
}

TEST_F(Security, TellsTheWepModeByTheSelectedKey) {
    const std::pair<const char*, const char*> keys[] = {
        {"1", "wlKey1"}, {"2", "wlKey2"}, {"3", "wlKey3"}, {"4", "wlKey4"}};
    for (const auto& [index, variable] : keys) {
        setWep(index, variable, "abcde");
        EXPECT_EQ(mode(), "WEP-64");
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get"}),
                  (Texts{"wlcsm_mngr_get(1, 2, \"wlWep\")", readCall("wlKeyIndex"), readCall(variable)}));
        setWep(index, variable, "abcdefghijklm");
        EXPECT_EQ(mode(), "WEP-128");
        platform.removeVariable(kRadioIndex, kSubIndex, variable);
    }
}

TEST_F(Security, FailsForAWepKeyOfAnotherLength) {
    for (const std::size_t length : {0U, 1U, 4U, 6U, 10U, 12U, 14U, 15U, 16U}) {
        const std::string key(length, 'k');
        setWep("1", "wlKey1", key);
        EXPECT_EQ(modeFailure(), Texts{"Invalid key[" + key + "], length[" + std::to_string(length) + "]"});
    }
    // The buffer cuts a longer one.
    setWep("1", "wlKey1", std::string(26, 'k'));
    EXPECT_EQ(modeFailure(), Texts{"Invalid key[" + std::string(15, 'k') + "], length[15]"});
    platform.removeVariable(kRadioIndex, kSubIndex, "wlKey1");
    EXPECT_EQ(modeFailure(), Texts{"Invalid key[], length[0]"});
}

TEST_F(Security, FailsForAWepKeyThatDoesNotExist) {
    const std::pair<const char*, const char*> indices[] = {{"5", "5"}, {"0", "0"}, {"-1", "-1"}};
    for (const auto& [index, shown] : indices) {
        setWep(index, "wlKey1", "abcde");
        EXPECT_EQ(modeFailure(), (Texts{"Invalid keyIdx[" + std::string(shown) + "]", "Invalid key[], length[0]"}));
    }
}

TEST_F(Security, AssumesTheFirstKeyWhenTheIndexIsNotRead) {
    setWep("2", "wlKey1", "abcde");
    platform.removeVariable(kRadioIndex, kSubIndex, "wlKeyIndex");
    EXPECT_EQ(mode(), "WEP-64");
}

TEST(ModeTranslation, LooksUpExactNames) {
    struct Case {
        const char* from;
        const char* to;
        std::uint8_t loading;
    };
    const Case cases[] = {{"None", "open", 1},
                          {"WPA-Personal", "psk", 1},
                          {"WPA2-Personal", "psk2", 255},
                          {"WPA-WPA2-Personal", "psk psk2", 1},
                          {"WPA-Enterprise", "wpa", 1},
                          {"WPA2-Enterprise", "wpa2", 1},
                          {"WPA-WPA2-Enterprise", "wpa wpa2", 1},
                          {"", "open", 1},
                          {"none", "open", 1},
                          {"WPA2-Personal ", "open", 1},
                          {"WPA2-Persona", "open", 1},
                          {"open", "open", 1},
                          {"open", "None", 0},
                          {"*DEL*", "None", 0},
                          {"psk psk2", "WPA-WPA2-Personal", 0},
                          {"wpa", "WPA-Enterprise", 0},
                          {"wpa3", "None", 0}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.from);
        char from[32] = {};
        std::strcpy(from, c.from);
        GuardedBlock to(20);
        char* dataModel = c.loading != 0 ? from : to.text();
        char* manager = c.loading != 0 ? to.text() : from;
        const std::uint32_t dataModelLen = c.loading != 0 ? 32 : 20;
        EXPECT_EQ(wlcsm_dm_adjust_security(dataModel, dataModelLen, manager, 52 - dataModelLen, c.loading), 0U);
        EXPECT_STREQ(to.text(), c.to);
        EXPECT_STREQ(from, c.from);
        EXPECT_TRUE(to.intact());
    }
}

TEST(ModeTranslation, IsBoundedByTheBuffers) {
    for (std::uint32_t size = 0; size <= 9; ++size) {
        char name[] = "WPA-WPA2-Personal";
        GuardedBlock manager(size);
        EXPECT_EQ(wlcsm_dm_adjust_security(name, sizeof name, manager.text(), size, 1), 0U);
        EXPECT_TRUE(manager.intact()) << size;
        char value[] = "psk psk2";
        GuardedBlock dataModel(size);
        EXPECT_EQ(wlcsm_dm_adjust_security(dataModel.text(), size, value, sizeof value, 0), 0U);
        EXPECT_TRUE(dataModel.intact()) << size;
    }
    // A name that fills its buffer has no terminator.
    std::vector<char> name(64, 'x');
    char manager[32] = {};
    EXPECT_EQ(wlcsm_dm_adjust_security(name.data(), 64, manager, sizeof manager, 1), 0U);
    EXPECT_STREQ(manager, "open");
    std::vector<char> value{'p', 's', 'k', '2'};
    char dataModel[32] = {};
    EXPECT_EQ(wlcsm_dm_adjust_security(dataModel, sizeof dataModel, value.data(), 4, 0), 0U);
    EXPECT_STREQ(dataModel, "WPA2-Personal");
}

// --- Apply

TEST_F(Security, WritesAModeByTheManagersName) {
    for (const ModeName& name : kModes) {
        stageMode(name.dataModel);
        EXPECT_EQ(apply(), modeWrites("disabled", name.manager));
        EXPECT_TRUE(platform.logged(
            2, "dm_value[" + std::string(name.dataModel) + "], wlmngr_value[" + name.manager + "], loading[1]\n"));
        EXPECT_EQ(mode(), name.dataModel);
    }
}

TEST_F(Security, WritesAnUnknownModeAsOpen) {
    for (const std::string& unknown :
         {std::string("WPA3-Personal"), std::string("wpa2-personal"), std::string("wep-64"), std::string("Wep-128"),
          std::string("WEP-6"), std::string("WEP-12"), std::string(" WEP-64"), std::string(), std::string(64, 'x')}) {
        stageMode(unknown);
        EXPECT_EQ(apply(), modeWrites("disabled", "open")) << unknown;
        EXPECT_EQ(mode(), "None");
    }
}

TEST_F(Security, TakesAWepModeByItsBeginning) {
    for (const std::string& wep : {std::string("WEP-64"), std::string("WEP-128"), std::string("WEP-64bit"),
                                   std::string("WEP-1280"), "WEP-64" + std::string(58, 'x')}) {
        stageMode(wep);
        EXPECT_EQ(apply(), modeWrites("enabled", "open")) << wep;
    }
}

TEST_F(Security, ReadsTheWepModeOfTheKeyNotTheOneThatWasSet) {
    setWep("1", "wlKey1", "abcde");
    stageMode("WEP-128");
    (void)apply();
    EXPECT_EQ(mode(), "WEP-64");
    set("wlKey1", "abcdefghij");
    EXPECT_EQ(modeFailure(), Texts{"Invalid key[abcdefghij], length[10]"});
}

TEST_F(Security, GoesOnWhenTheManagerRefusesAMode) {
    platform.fail("wlcsm_mngr_set");
    stageMode("WPA2-Personal");
    ASSERT_EQ(WiFiAccessPointSecurityKeyPassphraseSet(context.get(), kAccessPoint, "secret words", 12), 0U);
    EXPECT_EQ(apply(), (Texts{writeCall("wlWep", "disabled"), writeCall("wlAuthMode", "psk2"),
                              writeCall("wlWpaPsk", "secret words")}));
}

TEST_F(Security, WritesTheModeBeforeTheRest) {
    ASSERT_EQ(WiFiAccessPointSecurityWEPKey2Set(context.get(), kAccessPoint, "abcde", 5), 0U);
    ASSERT_EQ(WiFiAccessPointSecurityWEPIndexSet(context.get(), kAccessPoint, 2), 0U);
    ASSERT_EQ(WiFiAccessPointSecurityPMFSet(context.get(), kAccessPoint, 1), 0U);
    stageMode("WEP-64");
    EXPECT_EQ(apply(), (Texts{writeCall("wlWep", "enabled"), writeCall("wlAuthMode", "open"), writeCall("wlPmf", "1"),
                              writeCall("wlKey2", "abcde"), writeCall("wlKeyIndex", "2")}));
    EXPECT_EQ(mode(), "WEP-64");
}

TEST_F(Security, ClearsItsOwnMarksBeforeTheGenericApply) {
    setMode("psk");
    ASSERT_EQ(WiFiAccessPointSecurityResetSet(context.get(), kAccessPoint, 1), 0U);
    stageMode("WPA2-Personal");
    (void)apply();
    EXPECT_EQ(platform.callTexts({"Quorvel_ContextClearMap", "wlcsm_mngr_set"}),
              (Texts{"Quorvel_ContextClearMap(ctx, 1)", writeCall("wlWep", "disabled"), writeCall("wlAuthMode", "open"),
                     "Quorvel_ContextClearMap(ctx, 3)"}));
}

TEST_F(Security, PassesAnAccessPointThatDoesNotExistToTheGenericApply) {
    ASSERT_EQ(WiFiAccessPointSecurityPMFSet(context.get(), 25, 1), 0U);
    EXPECT_EQ(WiFiAccessPointSecurityApplyContext(context.get(), 25), 6U);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_set"), 0U);
    // The mode is written first and its mark cleared when the apply fails; the other mark stays.
    stageMode("WPA2-Personal");
    EXPECT_EQ(WiFiAccessPointSecurityApplyContext(context.get(), 25), 6U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set"}),
              (Texts{"wlcsm_mngr_set(4294967294, 0, \"wlWep\", \"disabled\")",
                     "wlcsm_mngr_set(4294967294, 0, \"wlAuthMode\", \"psk2\")"}));
    EXPECT_EQ(WiFiAccessPointSecurityCheckContextNodeSet(context.get(), 3), 0U);
    EXPECT_EQ(WiFiAccessPointSecurityCheckContextNodeSet(context.get(), 4), 1U);
}

TEST_F(Security, WalksItsTwentyOneNodes) {
    platform.forget();
    EXPECT_EQ(WiFiAccessPointSecurityApplyContext(context.get(), kAccessPoint), 0U);
    Texts asked = {"Quorvel_IsContextSetMap(ctx, 1)", "Quorvel_IsContextSetMap(ctx, 3)"};  // its own two first
    for (std::uint32_t node = 1; node <= 21; ++node) {
        asked.push_back("Quorvel_IsContextSetMap(ctx, " + std::to_string(node) + ")");
    }
    EXPECT_EQ(platform.callTexts({"Quorvel_IsContextSetMap"}), asked);
    // The apply checks its own two nodes through the object's check, which logs a trace line.
    EXPECT_EQ(platform.logCount(3, "WiFiAccessPointSecurityCheckContextNodeSet DONE"), 2U);
}

// --- Reset

TEST_F(Security, ResetOpensAPersonalAccessPoint) {
    for (const char* managerMode : {"psk", "psk2", "psk psk2", "open", "*DEL*"}) {
        setMode(managerMode);
        ASSERT_EQ(WiFiAccessPointSecurityResetSet(context.get(), kAccessPoint, 1), 0U);
        EXPECT_EQ(apply(), modeWrites("disabled", "open")) << managerMode;
        EXPECT_EQ(mode(), "None");
    }
    setWep("1", "wlKey1", "abcde");
    ASSERT_EQ(WiFiAccessPointSecurityResetSet(context.get(), kAccessPoint, 1), 0U);
    EXPECT_EQ(apply(), modeWrites("disabled", "open"));
}

TEST_F(Security, ResetIsRefusedInTheLogForAnEnterpriseAccessPoint) {
    const ModeName enterprise[] = {
        {"WPA-Enterprise", "wpa"}, {"WPA2-Enterprise", "wpa2"}, {"WPA-WPA2-Enterprise", "wpa wpa2"}};
    for (const ModeName& name : enterprise) {
        setMode(name.manager);
        ASSERT_EQ(WiFiAccessPointSecurityResetSet(context.get(), kAccessPoint, 1), 0U);
        EXPECT_EQ(apply(), Texts{});
        EXPECT_EQ(platform.logTexts(0),
                  Texts{"WiFi.AccessPoint.Security.Reset is not allowed to set when modeEnabled[" +
                        std::string(name.dataModel) + "] is Enterprise type"});
        EXPECT_EQ(placeOf(platform.logTexts(0)[0]),
                  "wifi/QuorvelWiFiAccessPointSecurityImpl WiFiAccessPointSecurityApplyContextImpl");
        EXPECT_EQ(platform.callTexts({"Quorvel_ContextClearMap", "Quorvel_ContextSetMap"}),
                  Texts{"Quorvel_ContextClearMap(ctx, 1)"});
        EXPECT_EQ(mode(), name.dataModel);
    }
}

TEST_F(Security, ARefusedResetKeepsTheStagedMode) {
    setMode("wpa2");
    ASSERT_EQ(WiFiAccessPointSecurityResetSet(context.get(), kAccessPoint, 1), 0U);
    stageMode("WPA2-Personal");
    EXPECT_EQ(apply(), modeWrites("disabled", "psk2"));
}

TEST_F(Security, ResetOverrulesTheStagedMode) {
    setMode("psk");
    stageMode("WPA2-Personal");
    ASSERT_EQ(WiFiAccessPointSecurityResetSet(context.get(), kAccessPoint, 1), 0U);
    EXPECT_EQ(apply(), modeWrites("disabled", "open"));
    stageMode("WEP-64" + std::string(58, 'x'));
    ASSERT_EQ(WiFiAccessPointSecurityResetSet(context.get(), kAccessPoint, 1), 0U);
    EXPECT_EQ(apply(), modeWrites("disabled", "open"));
}

TEST_F(Security, ResetStagesTheNameAloneInItsField) {
    setMode("psk");
    stageMode("WEP-64" + std::string(58, 'x'));
    ASSERT_EQ(WiFiAccessPointSecurityResetSet(context.get(), kAccessPoint, 1), 0U);
    platform.forget();
    EXPECT_EQ(WiFiAccessPointSecurityApplyContextImpl(context.get(), kAccessPoint), 0U);
    const std::size_t offset = datamodel::parameter("WiFiAccessPointSecurityModeEnabled").offset();
    EXPECT_EQ(context.bytes(offset, 64), "None" + std::string(60, '\0'));
    EXPECT_EQ(
        platform.callTexts({"Quorvel_ContextSetMap", "Quorvel_ContextClearMap"}),
        (Texts{"Quorvel_ContextSetMap(ctx, 3)", "Quorvel_ContextClearMap(ctx, 1)", "Quorvel_ContextClearMap(ctx, 3)"}));
    EXPECT_TRUE(platform.logged(2, "dm_value[None], wlmngr_value[open], loading[1]\n"));
    EXPECT_TRUE(context.intact());
}

TEST_F(Security, ResetStagesNothingWhenTheModeCannotBeRead) {
    set("wlWep", "perhaps");
    ASSERT_EQ(WiFiAccessPointSecurityResetSet(context.get(), kAccessPoint, 1), 0U);
    EXPECT_EQ(apply(), Texts{});
    EXPECT_EQ(platform.logTexts(0),
              (Texts{"Invalid wlWep value: perhaps", "WiFiAccessPointSecurityModeEnabledGetImpl fail."}));
    EXPECT_EQ(placeOf("WiFiAccessPointSecurityModeEnabledGetImpl fail."),
              "wifi/QuorvelWiFiAccessPointSecurityImpl WiFiAccessPointSecurityApplyContextImpl");
    EXPECT_EQ(platform.callTexts({"Quorvel_ContextClearMap", "Quorvel_ContextSetMap"}),
              Texts{"Quorvel_ContextClearMap(ctx, 1)"});
}

TEST_F(Security, ResetOfZeroDoesNothing) {
    setMode("psk");
    ASSERT_EQ(WiFiAccessPointSecurityResetSet(context.get(), kAccessPoint, 0), 0U);
    EXPECT_EQ(apply(), Texts{});
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get"}), Texts{});
    EXPECT_EQ(mode(), "WPA-Personal");
}

TEST_F(Security, SnapshotEndsAtAModeThatCannotBeRead) {
    set("reset", "0");
    set("modesSupported", "None");
    set("wlWep", "perhaps");
    GuardedBlock snapshot(800);
    EXPECT_EQ(WiFiAccessPointSecurityInstanceGet(snapshot.get(), kAccessPoint), 1U);
    EXPECT_TRUE(platform.logged(0, "Get failed, result 1"));
    EXPECT_FALSE(platform.logged(3, "WiFiAccessPointSecurityPMFGet Enter"));
    EXPECT_TRUE(snapshot.intact());
}

}  // namespace

}  // namespace quorvel
