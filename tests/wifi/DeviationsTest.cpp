#include <gtest/gtest.h>
#include <quorvel.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/wifi/AllReadsSucceed.h"
#include "tests/wifi/DataModel.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"

// Where an accessor departs from the common pattern, and texts that fill their fields on the whole way to the manager.

namespace quorvel {

namespace {

using datamodel::Parameter;
using datamodel::Type;
using scripted::GuardedBlock;
using Texts = std::vector<std::string>;

class AccessCategory : public scripted::PlatformTest {
  protected:
    AccessCategory() {
        platform.setNvram("wl0_wme_ap_be", "15 63 3 0 0 off off");
    }
};

TEST_F(AccessCategory, AppliesWithoutLookingAtTheContext) {
    GuardedBlock context(220);
    EXPECT_EQ(WiFiAccessPointACApplyContext(nullptr, 1, 1), 0U);
    EXPECT_EQ(WiFiAccessPointACApplyContext(context.get(), 1, 1), 0U);
    EXPECT_EQ(context.bytes(0, 220), std::string(220, '\xEE'));
    EXPECT_EQ(platform.callTexts({"Quorvel_IsContextInit", "Quorvel_ContextInit", "Quorvel_ContextZeroSetMap"}),
              Texts{});
    EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 2U);
    EXPECT_EQ(platform.callCount("QuorvelOsMutexUnlock"), 2U);
}

TEST_F(AccessCategory, KeepsItsStagedNodesAfterASuccessfulApply) {
    GuardedBlock context(220);
    ASSERT_EQ(WiFiAccessPointACInitContext(context.get()), 0U);
    ASSERT_EQ(WiFiAccessPointACAckPolicySet(context.get(), 1, 1, 1), 0U);
    EXPECT_EQ(WiFiAccessPointACApplyContext(context.get(), 1, 1), 0U);
    EXPECT_EQ(WiFiAccessPointACCheckContextNodeSet(context.get(), 7), 1U);
}

TEST_F(AccessCategory, WritesItsNumbersAtOnceWithoutContextAndLock) {
    EXPECT_EQ(WiFiAccessPointACAIFSNSet(nullptr, 1, 1, 7), 0U);
    EXPECT_EQ(platform.nvram("wl0_wme_ap_be"), "15 63 7 0 0 off off ");
    EXPECT_EQ(WiFiAccessPointACECWMinSet(nullptr, 1, 1, 3), 0U);
    EXPECT_EQ(WiFiAccessPointACECWMaxSet(nullptr, 1, 1, 10), 0U);
    EXPECT_EQ(WiFiAccessPointACTxOpMaxSet(nullptr, 1, 1, 94), 0U);
    EXPECT_EQ(platform.nvram("wl0_wme_ap_be"), "7 1023 7 0 94 off off ");
    EXPECT_EQ(platform.callTexts({"QuorvelOsMutexLock", "Quorvel_IsContextInit", "Quorvel_ContextSetMap"}), Texts{});
}

TEST_F(AccessCategory, SaysWhatItDoesLikeAnyObject) {
    platform.setNvram("wl0_wme_ap_vi", "15 63 3 0 0 off off");
    using Set = std::uint32_t (*)(void*, std::uint32_t, std::uint32_t, std::uint32_t);
    const std::pair<std::string, Set> setters[] = {{"WiFiAccessPointACAIFSNSet", WiFiAccessPointACAIFSNSet},
                                                   {"WiFiAccessPointACECWMinSet", WiFiAccessPointACECWMinSet},
                                                   {"WiFiAccessPointACECWMaxSet", WiFiAccessPointACECWMaxSet},
                                                   {"WiFiAccessPointACTxOpMaxSet", WiFiAccessPointACTxOpMaxSet}};
    for (const auto& [name, set] : setters) {
        SCOPED_TRACE(name);
        platform.forget();
        EXPECT_EQ(set(nullptr, 1, 1, 1), 0U);
        EXPECT_EQ(set(nullptr, 1, 3, 15), 0U);
        EXPECT_EQ(platform.logTexts(3), (Texts{name + " Enter", name + " DONE", name + " Enter", name + " DONE"}));
        EXPECT_EQ(platform.logTexts(0), Texts{});
        EXPECT_EQ(set(nullptr, 1, 2, 1), 1U);   // its text is absent
        EXPECT_EQ(set(nullptr, 1, 9, 15), 1U);  // there is no such category
        EXPECT_EQ(platform.logTexts(3), (Texts{name + " Enter", name + " DONE", name + " Enter", name + " DONE",
                                               name + " Enter", name + " Enter"}));
        for (const auto& line : platform.logs()) {
            if (line.level == 3) {
                EXPECT_EQ(line.function, name);
                EXPECT_EQ(line.file, "wifi/QuorvelWiFiAccessPointAC");
            }
        }
    }
    platform.forget();
    EXPECT_EQ(WiFiAccessPointACApplyContext(nullptr, 1, 1), 0U);
    EXPECT_EQ(platform.logTexts(3),
              (Texts{"WiFiAccessPointACApplyContext Enter", "WiFiAccessPointACApplyContext DONE"}));
}

TEST_F(AccessCategory, RefusesNumbersOutOfRange) {
    for (const std::uint32_t value : {0U, 16U, 0xFFFFFFFFU}) {
        platform.forget();
        EXPECT_EQ(WiFiAccessPointACAIFSNSet(nullptr, 1, 1, value), 8U);
        EXPECT_TRUE(platform.logged(0, "Value out of range"));
    }
    platform.forget();
    EXPECT_EQ(WiFiAccessPointACECWMinSet(nullptr, 1, 1, 16), 8U);
    EXPECT_TRUE(platform.logged(0, "Value out of range"));
    platform.forget();
    EXPECT_EQ(WiFiAccessPointACECWMaxSet(nullptr, 1, 1, 16), 8U);
    EXPECT_EQ(platform.logTexts(0), Texts{});  // the one refusal without a message
    EXPECT_EQ(platform.callCount("wlcsm_nvram_set"), 0U);
    EXPECT_EQ(WiFiAccessPointACAIFSNSet(nullptr, 1, 1, 1), 0U);
    EXPECT_EQ(WiFiAccessPointACAIFSNSet(nullptr, 1, 1, 15), 0U);
    EXPECT_EQ(WiFiAccessPointACECWMinSet(nullptr, 1, 1, 0), 0U);
    EXPECT_EQ(WiFiAccessPointACECWMaxSet(nullptr, 1, 1, 15), 0U);
    EXPECT_EQ(WiFiAccessPointACTxOpMaxSet(nullptr, 1, 1, 0xFFFFFFFFU), 0U);
}

class StationReads : public scripted::PlatformTest {};

TEST_F(StationReads, RefuseANullAddressLikeANullOutput) {
    const std::pair<std::string, std::uint32_t (*)(std::uint32_t, const char*, std::int32_t*)> reads[] = {
        {"WiFiAccessPointAssociatedDeviceRSSIGet", WiFiAccessPointAssociatedDeviceRSSIGet},
        {"WiFiAccessPointAssociatedDeviceRxRateGet", WiFiAccessPointAssociatedDeviceRxRateGet},
        {"WiFiAccessPointAssociatedDeviceTxRateGet", WiFiAccessPointAssociatedDeviceTxRateGet}};
    scripted::letAllReadsSucceed(platform);
    for (const auto& [name, read] : reads) {
        platform.forget();
        std::int32_t value = 77;
        EXPECT_EQ(read(1, nullptr, &value), 6U);
        EXPECT_EQ(value, 77);
        EXPECT_EQ(platform.logTexts(0), Texts{"Invalid input params"});
        EXPECT_EQ(platform.logTexts(3), Texts{name + " Enter"});
        EXPECT_EQ(platform.callTexts(), Texts{});
    }
}

// A text that fills its field has no terminator; the manager gets the field's bytes and nothing of what follows.
class FullTexts : public scripted::PlatformTest {
  protected:
    void check(const std::string& stem, const std::string& variable) {
        SCOPED_TRACE(stem);
        platform.forget();
        const Parameter& parameter = datamodel::parameter(stem);
        GuardedBlock context(parameter.object().contextSize);
        ASSERT_EQ(parameter.object().initContext(context.get()), 0U);
        context.write(132, std::string(context.size() - 132, 'Z'));
        const std::string text(parameter.capacity, 'q');
        ASSERT_EQ(parameter.setText(context.get(), text.c_str(), parameter.capacity), 0U);
        EXPECT_EQ(parameter.object().apply(context.get()), 0U);
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set"}),
                  Texts{"wlcsm_mngr_set(0, 0, \"" + variable + "\", \"" + text + "\")"});
        EXPECT_TRUE(context.intact());
    }
};

TEST_F(FullTexts, ReachTheManagerWhole) {
    check("WiFiSSIDSSID", "wlSsid");  // 32 characters, the last field of its context
    check("WiFiSSIDAlias", "sAlias");
    check("WiFiBridgeInfo", "wlBridgeInfo");
    check("WiFiAccessPointAlias", "apAlias");
    check("WiFiAccessPointSSIDReference", "SSIDReference");
    check("WiFiAccessPointAccessPointControlFilterTableMacAddress", "wlFltMacList");
    check("WiFiAccessPointSecurityWEPKey2", "wlKey2");
    check("WiFiAccessPointSecurityPreSharedKey", "preSharedKey");
    check("WiFiAccessPointSecurityKeyPassphrase", "wlWpaPsk");
    check("WiFiAccessPointSecurityRadiusServerIPAddr", "wlRadiusServerIP");
    check("WiFiAccessPointSecurityRadiusSecret", "wlRadiusKey");
    check("WiFiAccessPointWPSConfigMethodsEnabled", "configMethodsEnabled");
}

class WpsExtras : public scripted::PlatformTest {
  protected:
    WpsExtras() {
        EXPECT_EQ(WiFiAccessPointWPSInitContext(context.get()), 0U);
        platform.forget();
    }
    GuardedBlock context{700};
};

TEST_F(WpsExtras, MethodIsKeptAtTheEndOfTheContextAndMarksNothing) {
    EXPECT_EQ(WiFiAccessPointWPSMethodSet(context.get(), 7, "PushButton", 10), 0U);
    EXPECT_EQ(context.bytes(684, 16), std::string("PushButton\0\0\0\0\0\0", 16));
    EXPECT_EQ(WiFiAccessPointWPSMethodSet(context.get(), 0, "PIN", 3), 0U);
    EXPECT_EQ(context.bytes(684, 16), "PIN" + std::string(13, '\0'));
    EXPECT_EQ(platform.callCount("Quorvel_ContextSetMap"), 0U);
    EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 0U);
    EXPECT_TRUE(context.intact());
}

TEST_F(WpsExtras, MethodIsCheckedLikeAnyText) {
    EXPECT_EQ(WiFiAccessPointWPSMethodSet(nullptr, 7, "PIN", 3), 2U);
    EXPECT_TRUE(platform.logged(0, "Invalid context"));
    EXPECT_EQ(WiFiAccessPointWPSMethodSet(context.get(), 7, nullptr, 3), 6U);
    EXPECT_TRUE(platform.logged(0, "Invalid input params"));
    EXPECT_EQ(WiFiAccessPointWPSMethodSet(context.get(), 7, "1234567890123456", 16), 8U);
    EXPECT_TRUE(platform.logged(0, "Value out of range"));
    EXPECT_EQ(WiFiAccessPointWPSMethodSet(context.get(), 7, "123456789012345", 15), 0U);
    GuardedBlock uninitialised(700);
    EXPECT_EQ(WiFiAccessPointWPSMethodSet(uninitialised.get(), 7, "PIN", 3), 5U);
    EXPECT_TRUE(platform.logged(0, "Uninit context"));
}

TEST_F(WpsExtras, CancelMarksTheNodeBehindTheParameters) {
    EXPECT_EQ(WiFiAccessPointWPSCancel(context.get()), 0U);
    EXPECT_EQ(WiFiAccessPointWPSCheckContextNodeSet(context.get(), 9), 1U);
    EXPECT_EQ(WiFiAccessPointWPSCancel(nullptr), 2U);
    GuardedBlock uninitialised(700);
    EXPECT_EQ(WiFiAccessPointWPSCancel(uninitialised.get()), 5U);
}

TEST_F(WpsExtras, SayWhatTheyDoLikeAnySetter) {
    GuardedBlock uninitialised(700);
    const auto method = [](void* ctx, const char* text, std::uint32_t len) {
        return WiFiAccessPointWPSMethodSet(ctx, 7, text, len);
    };
    const std::string set = "3 WiFiAccessPointWPSMethodSet ";
    const std::string cancel = "3 WiFiAccessPointWPSCancel ";
    const std::string before = context.bytes(0, 700);
    const auto expect = [this](std::uint32_t result, std::uint32_t expected, const Texts& lines) {
        EXPECT_EQ(result, expected);
        Texts logged;
        for (const auto& line : platform.logs()) {
            logged.push_back(std::to_string(line.level) + " " + line.text);
            EXPECT_EQ(line.file, "wifi/QuorvelWiFiAccessPointWPS");
            EXPECT_EQ(logged.back().find(line.function) == std::string::npos, line.level == 0);
        }
        EXPECT_EQ(logged, lines);
        platform.forget();
    };
    // Each refusal for the first reason, and the context as it was.
    expect(method(nullptr, nullptr, 99), 2, {set + "Enter", "0 Invalid context"});
    expect(method(uninitialised.get(), nullptr, 99), 5, {set + "Enter", "0 Uninit context"});
    expect(method(context.get(), nullptr, 99), 6, {set + "Enter", "0 Invalid input params"});
    expect(method(context.get(), "PIN", 16), 8, {set + "Enter", "0 Value out of range"});
    EXPECT_EQ(context.bytes(0, 700), before);
    expect(method(context.get(), "PIN", 15), 0, {set + "Enter", set + "DONE"});
    expect(WiFiAccessPointWPSCancel(nullptr), 2, {cancel + "Enter", "0 Invalid context"});
    expect(WiFiAccessPointWPSCancel(uninitialised.get()), 5, {cancel + "Enter", "0 Uninit context"});
    platform.answer("Quorvel_ContextSetMap", 9);
    expect(WiFiAccessPointWPSCancel(context.get()), 0, {cancel + "Enter", cancel + "DONE"});
}

TEST_F(WpsExtras, CancelMarksOneNodeWithoutTheLock) {
    EXPECT_EQ(WiFiAccessPointWPSCancel(context.get()), 0U);
    EXPECT_EQ(platform.callTexts(), (Texts{"Quorvel_IsContextInit(ctx)", "Quorvel_ContextSetMap(ctx, 9)"}));
}

class SystemObject : public scripted::PlatformTest {
  protected:
    GuardedBlock context{132};
};

TEST_F(SystemObject, IsInitialisedWithTheHeaderAlone) {
    EXPECT_EQ(WiFiSystemInitContext(nullptr), 2U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Invalid context"});
    platform.forget();
    EXPECT_EQ(WiFiSystemInitContext(context.get()), 0U);
    EXPECT_EQ(platform.callTexts(), Texts{"Quorvel_ContextInit(ctx, 132)"});
    EXPECT_EQ(platform.logTexts(3), (Texts{"WiFiSystemInitContext Enter", "WiFiSystemInitContext DONE"}));
    EXPECT_TRUE(context.intact());
}

TEST_F(SystemObject, AnswersForNodeZeroOnly) {
    ASSERT_EQ(WiFiSystemInitContext(context.get()), 0U);
    EXPECT_EQ(WiFiSystemCheckContextNodeSet(context.get(), 0), 0U);
    (void)Quorvel_ContextSetMap(context.get(), 0);
    (void)Quorvel_ContextSetMap(context.get(), 1);
    platform.forget();
    EXPECT_EQ(WiFiSystemCheckContextNodeSet(context.get(), 0), 1U);
    EXPECT_EQ(platform.logTexts(3), Texts{"WiFiSystemCheckContextNodeSet DONE"});
    EXPECT_EQ(WiFiSystemCheckContextNodeSet(context.get(), 1), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Exceeded subnodes"});
    EXPECT_EQ(platform.callCount("Quorvel_IsContextSetMap"), 1U);
    platform.forget();
    platform.answer("Quorvel_IsContextSetMap", 64);
    EXPECT_EQ(WiFiSystemCheckContextNodeSet(context.get(), 0), 1U);  // one for any truth value of the host's
    platform.forget();
    EXPECT_EQ(WiFiSystemCheckContextNodeSet(nullptr, 0), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Invalid context"});
}

TEST_F(SystemObject, ClearsItsMarksInsteadOfInitialisingAgain) {
    ASSERT_EQ(WiFiSystemInitContext(context.get()), 0U);
    (void)Quorvel_ContextSetMap(context.get(), 0);
    platform.forget();
    EXPECT_EQ(WiFiSystemApplyContext(context.get()), 0U);
    EXPECT_EQ(platform.callCount("Quorvel_ContextInit"), 0U);
    EXPECT_EQ(platform.callCount("Quorvel_ContextZeroSetMap"), 1U);
    EXPECT_EQ(WiFiSystemCheckContextNodeSet(context.get(), 0), 0U);
    EXPECT_EQ(Quorvel_IsContextInit(context.get()), 0U);
    EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 1U);
    EXPECT_TRUE(platform.logged(3, "WiFiSystemApplyContext DONE"));
}

TEST_F(SystemObject, AppliesInOrder) {
    ASSERT_EQ(WiFiSystemInitContext(context.get()), 0U);
    ASSERT_EQ(WiFiLock(), 0U);  // the lock has been created
    ASSERT_EQ(WiFiUnlock(), 0U);
    platform.forget();
    EXPECT_EQ(WiFiSystemApplyContext(context.get()), 0U);
    EXPECT_EQ(platform.callTexts(), (Texts{"Quorvel_IsContextInit(ctx)", "QuorvelOsMutexLock(\"WiFi\")",
                                           "QuorvelOsMutexUnlock(\"WiFi\")", "Quorvel_ContextZeroSetMap(ctx)"}));
    ASSERT_EQ(platform.logs().size(), 2U);
    EXPECT_EQ(platform.logs()[0].text, "WiFiSystemApplyContext Enter");
    EXPECT_LT(platform.logs()[0].order, platform.calls().front().order);
    EXPECT_EQ(platform.logs()[1].text, "WiFiSystemApplyContext DONE");
    EXPECT_GT(platform.logs()[1].order, platform.calls().back().order);
}

TEST_F(SystemObject, RefusesToApplyLikeAnyObject) {
    EXPECT_EQ(WiFiSystemApplyContext(nullptr), 2U);
    EXPECT_EQ(WiFiSystemApplyContext(context.get()), 5U);
    ASSERT_EQ(WiFiSystemInitContext(context.get()), 0U);
    platform.answer("QuorvelOsMutexLock", 71);
    EXPECT_EQ(WiFiSystemApplyContext(context.get()), 71U);
    EXPECT_TRUE(platform.logged(0, "Lock failed, result 71"));
    platform.succeed("QuorvelOsMutexLock");
    platform.answer("QuorvelOsMutexUnlock", 72);
    EXPECT_EQ(WiFiSystemApplyContext(context.get()), 72U);
    EXPECT_TRUE(platform.logged(0, "Unlock failed, result 72"));
    EXPECT_EQ(platform.callCount("Quorvel_ContextZeroSetMap"), 0U);
}

TEST_F(SystemObject, SnapshotOnlyInitialises) {
    EXPECT_EQ(WiFiSystemInstanceGet(context.get()), 0U);
    EXPECT_EQ(platform.callTexts(), Texts{"Quorvel_ContextInit(ctx, 132)"});
    EXPECT_EQ(platform.logTexts(3), (Texts{"WiFiSystemInstanceGet Enter", "WiFiSystemInstanceGet DONE"}));
    EXPECT_LT(platform.logs()[0].order, platform.calls()[0].order);
    EXPECT_GT(platform.logs()[1].order, platform.calls()[0].order);
    platform.answer("Quorvel_ContextInit", 9);
    EXPECT_EQ(WiFiSystemInstanceGet(context.get()), 0U);
    for (const auto& line : platform.logs()) {
        EXPECT_EQ(line.file, "wifi/QuorvelWiFiSystem");
    }
}

}  // namespace

}  // namespace quorvel
