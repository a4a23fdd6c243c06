#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/wifi/platform/FreshProcess.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"

namespace {

using quorvel::scripted::GuardedBlock;
using quorvel::scripted::Platform;
using quorvel::scripted::PlatformTest;
using quorvel::scripted::runFresh;
using Texts = std::vector<std::string>;

constexpr std::uint32_t kNoRadio = 0xFFFFFFFFU;

// One of the operations that lock, call the manager once and unlock.
struct Operation {
    const char* name;
    std::uint32_t (*run)();
    const char* managerCall;
    const char* expected;
    const char* failure;
};

const Operation kOperations[] = {
    {"WiFiSystemInit", [] { return WiFiSystemInit(); }, "wlcsm_mngr_wifi_hal_started",
     "wlcsm_mngr_wifi_hal_started(0, 10, 1)", "wlcsm_mngr_run_cmd - WLCSM_MNGR_CMD_WIFI_HAL_STARTED, FAIL."},
    {"WiFiSystemStartStopSecurityDaemons", [] { return WiFiSystemStartStopSecurityDaemons(1, 4); },
     "wlcsm_mngr_start_stop_services", "wlcsm_mngr_start_stop_services(4, 0, 1, 7)",
     "wlcsm_mngr_start_stop_security_daemons: FAIL."},
    {"WiFiSystemStartStopSecurityDaemons", [] { return WiFiSystemStartStopSecurityDaemons(0, 4294967295U); },
     "wlcsm_mngr_start_stop_services", "wlcsm_mngr_start_stop_services(4294967295, 0, 1, 8)",
     "wlcsm_mngr_start_stop_security_daemons: FAIL."},
    {"WiFiSystemStartStopSecurityDaemons", [] { return WiFiSystemStartStopSecurityDaemons(99, 0); },
     "wlcsm_mngr_start_stop_services", "wlcsm_mngr_start_stop_services(0, 0, 1, 7)",
     "wlcsm_mngr_start_stop_security_daemons: FAIL."},
    {"WiFiSystemRadioInit", [] { return WiFiSystemRadioInit(3); }, "wlcsm_mngr_restart",
     "wlcsm_mngr_restart(2, 0, 0, 1)", "wlcsm_mngr_restart: radio[2], FAIL."},
    {"WiFiSystemResetRadioToFactory", [] { return WiFiSystemResetRadioToFactory(2); }, "wlcsm_mngr_set",
     "wlcsm_mngr_set(1, 0, \"wlResetRadio\", \"1\")", "wlcsm_mngr_set wlResetRadio FAIL, radio[1]"},
    {"WiFiSystemResetAccessPointToFactory", [] { return WiFiSystemResetAccessPointToFactory(10); }, "wlcsm_mngr_set",
     "wlcsm_mngr_set(1, 1, \"wlResetAP\", \"1\")", "wlcsm_mngr_set wlResetAP FAIL, radio[1] accessPointIndex[1]"},
};

class SystemOperations : public PlatformTest {
  protected:
    // The position of the last unlock among calls and log lines.
    std::uint64_t unlocked() const {
        std::uint64_t order = 0;
        for (const auto& call : platform.calls()) {
            if (call.name == "QuorvelOsMutexUnlock") order = call.order;
        }
        return order;
    }

    // The source file of the last line is that of the operation.
    void expectItsLine(const Operation& operation) const {
        EXPECT_EQ(platform.logs().back().file, "wifi/QuorvelWiFiSystem");
        EXPECT_EQ(platform.logs().back().function, operation.name);
        EXPECT_GT(platform.logs().back().line, 0U);
    }

    template <typename Check>
    void forEach(Check check) {
        for (const Operation& operation : kOperations) {
            SCOPED_TRACE(operation.expected);
            platform.reset();
            check(operation);
        }
    }
};

TEST_F(SystemOperations, CallTheManagerOnceUnderTheLock) {
    forEach([this](const Operation& operation) {
        EXPECT_EQ(operation.run(), 0U);
        EXPECT_EQ(platform.callTexts({operation.managerCall}), Texts{operation.expected});
        for (const auto& call : platform.calls()) {
            if (call.name == operation.managerCall) {
                EXPECT_TRUE(call.lockHeld);
            }
        }
        EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 1U);
        EXPECT_EQ(platform.callCount("QuorvelOsMutexUnlock"), 1U);
        EXPECT_TRUE(platform.logged(3, std::string(operation.name) + " DONE"));
        EXPECT_EQ(platform.logTexts(0), Texts{});
        EXPECT_EQ(platform.logs().back().text, std::string(operation.name) + " DONE");
        EXPECT_GT(platform.logs().back().order, unlocked());
        expectItsLine(operation);
    });
}

TEST_F(SystemOperations, ReleaseTheLockAndReturnOneWhenTheManagerFails) {
    forEach([this](const Operation& operation) {
        platform.fail(operation.managerCall);
        platform.answer("QuorvelOsMutexUnlock", 55);  // not looked at
        EXPECT_EQ(operation.run(), 1U);
        EXPECT_EQ(platform.logTexts(0), Texts{operation.failure});
        EXPECT_EQ(platform.callCount("QuorvelOsMutexUnlock"), 1U);
        EXPECT_LT(platform.logs().back().order, unlocked());
        EXPECT_FALSE(platform.logged(3, std::string(operation.name) + " DONE"));
        expectItsLine(operation);
    });
}

TEST_F(SystemOperations, TakeAnyNonZeroAnswerOfACommandForSuccess) {
    platform.answer("wlcsm_mngr_restart", -5);
    EXPECT_EQ(WiFiSystemRadioInit(1), 0U);
    platform.answer("wlcsm_mngr_wifi_hal_started", 2);
    EXPECT_EQ(WiFiSystemInit(), 0U);
    platform.answer("wlcsm_mngr_set", -1);
    EXPECT_EQ(WiFiSystemResetRadioToFactory(1), 1U);
}

TEST_F(SystemOperations, ReturnTheLocksFailure) {
    forEach([this](const Operation& operation) {
        platform.answer("QuorvelOsMutexLock", 31);
        EXPECT_EQ(operation.run(), 31U);
        EXPECT_EQ(platform.logTexts(0), Texts{"Lock failed, result 31"});
        EXPECT_EQ(platform.callCount(operation.managerCall), 0U);
        EXPECT_EQ(platform.callCount("QuorvelOsMutexUnlock"), 0U);
        expectItsLine(operation);
    });
}

TEST_F(SystemOperations, ReturnTheUnlocksFailure) {
    forEach([this](const Operation& operation) {
        platform.answer("QuorvelOsMutexUnlock", 32);
        EXPECT_EQ(operation.run(), 32U);
        EXPECT_EQ(platform.logTexts(0), Texts{"Unlock failed, result 32"});
        expectItsLine(operation);
        EXPECT_FALSE(platform.logged(3, std::string(operation.name) + " DONE"));
    });
}

TEST_F(SystemOperations, SayTheirNumbersSigned) {
    platform.answer("QuorvelOsMutexLock", -2);
    EXPECT_EQ(WiFiSystemResetRadiosToFactory(), 0xFFFFFFFEU);
    EXPECT_EQ(platform.logTexts(0), (Texts{"Lock failed, result -2", "WiFiSystemResetRadioToFactory FAIL result -2"}));
    platform.succeed("QuorvelOsMutexLock");
    platform.answer("QuorvelOsMutexUnlock", -3);
    platform.forget();
    EXPECT_EQ(WiFiSystemInit(), 0xFFFFFFFDU);
    EXPECT_EQ(WiFiSystemRadioInit(0xFFFFFFFFU), 1U);
    EXPECT_EQ(WiFiSystemAccessPointDelete(0xFFFFFFFFU), 1U);
    EXPECT_EQ(platform.logTexts(0),
              (Texts{"Unlock failed, result -3", "Invalid input params radioIndex:-1 WiFiSystemMaxNumberOfRadios():3",
                     "Invalid input params accessPointIndex:-1 max:24"}));
}

TEST_F(SystemOperations, RefuseRadiosThatDoNotExistWithoutLocking) {
    for (const std::uint32_t radio : {0U, 4U}) {
        const std::string message =
            "Invalid input params radioIndex:" + std::to_string(radio) + " WiFiSystemMaxNumberOfRadios():3";
        platform.forget();
        EXPECT_EQ(WiFiSystemRadioInit(radio), 1U);
        EXPECT_EQ(WiFiSystemResetRadioToFactory(radio), 1U);
        EXPECT_EQ(platform.logTexts(0), (Texts{message, message}));
        EXPECT_EQ(platform.logs().front().function, "WiFiSystemRadioInit");
        EXPECT_EQ(platform.logs().back().function, "WiFiSystemResetRadioToFactory");
        EXPECT_EQ(platform.logs().size(), 2U);
        EXPECT_EQ(platform.callTexts(), Texts{});
    }
}

TEST_F(SystemOperations, ResetsOfTheWholeSystemDoNothing) {
    EXPECT_EQ(WiFiSystemReset(), 0U);
    EXPECT_EQ(WiFiSystemResetToFactory(), 0U);
    EXPECT_EQ(platform.callTexts(), Texts{});
    EXPECT_EQ(platform.logTexts(3), (Texts{"WiFiSystemReset DONE", "WiFiSystemResetToFactory DONE"}));
    EXPECT_EQ(platform.logs().size(), 2U);
}

TEST_F(SystemOperations, HaveFixedDimensions) {
    EXPECT_EQ(WiFiSystemMaxNumberOfRadios(), 3U);
    EXPECT_EQ(WiFiSystemMaxNumberOfAccessPointsPerRadio(), 8U);
    EXPECT_EQ(platform.logs().size(), 0U);
    EXPECT_EQ(platform.callTexts(), Texts{});
}

TEST_F(SystemOperations, ResetAllRadiosOneAfterTheOther) {
    EXPECT_EQ(WiFiSystemResetRadiosToFactory(), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set"}),
              (Texts{"wlcsm_mngr_set(0, 0, \"wlResetRadio\", \"1\")", "wlcsm_mngr_set(1, 0, \"wlResetRadio\", \"1\")",
                     "wlcsm_mngr_set(2, 0, \"wlResetRadio\", \"1\")"}));
    EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 3U);
    EXPECT_EQ(platform.callCount("QuorvelOsMutexUnlock"), 3U);
    EXPECT_TRUE(platform.logged(3, "WiFiSystemResetRadiosToFactory DONE"));
}

TEST_F(SystemOperations, StopResettingAtTheFirstRadioThatFails) {
    platform.failAt("wlcsm_mngr_set", 2);
    EXPECT_EQ(WiFiSystemResetRadiosToFactory(), 1U);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_set"), 2U);
    EXPECT_EQ(platform.logs().back().text, "WiFiSystemResetRadioToFactory FAIL result 1");
    EXPECT_EQ(platform.logs().back().level, 0U);
    EXPECT_EQ(platform.logs().back().function, "WiFiSystemResetRadiosToFactory");
    EXPECT_FALSE(platform.logged(3, "WiFiSystemResetRadiosToFactory DONE"));
    platform.forget();
    platform.succeed("wlcsm_mngr_set");
    platform.answerAt("QuorvelOsMutexLock", 1, 17);
    EXPECT_EQ(WiFiSystemResetRadiosToFactory(), 17U);
    EXPECT_TRUE(platform.logged(0, "WiFiSystemResetRadioToFactory FAIL result 17"));
}

// Quirk: an unknown access point reaches the manager with radio index 0xFFFFFFFE.
TEST_F(SystemOperations, ResetAnUnknownAccessPointAllTheSame) {
    EXPECT_EQ(WiFiSystemResetAccessPointToFactory(25), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set"}), Texts{"wlcsm_mngr_set(4294967294, 0, \"wlResetAP\", \"1\")"});
    platform.forget();
    EXPECT_EQ(WiFiSystemResetAccessPointToFactory(0), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set"}), Texts{"wlcsm_mngr_set(4294967294, 7, \"wlResetAP\", \"1\")"});
}

TEST_F(SystemOperations, ReturnWhatTheManagerSaysToAnUnknownAccessPoint) {
    platform.fail("wlcsm_mngr_set");
    EXPECT_EQ(WiFiSystemResetAccessPointToFactory(25), 1U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"Invalid input params accessPointIndex:25 max:24",
                                           "wlcsm_mngr_set wlResetAP FAIL, radio[-2] accessPointIndex[0]"}));
}

TEST_F(SystemOperations, LookTheAccessPointUpBeforeLocking) {
    EXPECT_EQ(WiFiSystemResetAccessPointToFactory(9), 0U);
    const auto logs = platform.logs();
    ASSERT_FALSE(logs.empty());
    EXPECT_EQ(logs.front().text, "WiFiSystemAccessPointRadioInstanceGet DONE");
    for (const auto& call : platform.calls()) {
        if (call.name == "QuorvelOsMutexLock") {
            EXPECT_LT(logs.front().order, call.order);
        }
    }
}

// Each body starts from the initial slot table.

TEST(SlotTable, StartsWithEightAccessPointsOnEachRadio) {
    EXPECT_TRUE(runFresh([] {
        for (std::uint32_t ap = 1; ap <= 24; ++ap) {
            EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(ap), (ap - 1) / 8 + 1);
        }
        EXPECT_EQ(Platform::instance().callTexts(), Texts{});
        EXPECT_EQ(Platform::instance().logTexts(3), Texts(24, "WiFiSystemAccessPointRadioInstanceGet DONE"));
    }));
}

TEST(SlotTable, RefusesAccessPointsThatDoNotExist) {
    EXPECT_TRUE(runFresh([] {
        for (const std::uint32_t ap : {0U, 25U}) {
            const std::string message = "Invalid input params accessPointIndex:" + std::to_string(ap) + " max:24";
            Platform::instance().forget();
            EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(ap), kNoRadio);
            EXPECT_EQ(WiFiSystemAccessPointDelete(ap), 1U);
            EXPECT_EQ(WiFiSystemAccessPointCreate(1, ap), 1U);
            EXPECT_EQ(Platform::instance().logTexts(0), (Texts{message, message, message}));
        }
    }));
}

TEST(SlotTable, RefusesToCreateOnARadioThatDoesNotExist) {
    EXPECT_TRUE(runFresh([] {
        EXPECT_EQ(WiFiSystemAccessPointCreate(0, 3), 1U);
        EXPECT_EQ(WiFiSystemAccessPointCreate(4, 99), 1U);
        EXPECT_EQ(Platform::instance().logTexts(0),
                  (Texts{"Invalid input params radioIndex:0 WiFiSystemMaxNumberOfRadios():3",
                         "Invalid input params radioIndex:4 WiFiSystemMaxNumberOfRadios():3"}));
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(3), 1U);
    }));
}

// Quirk: an access point that finds no free slot stays in no row.
TEST(SlotTable, LosesAnAccessPointThatIsCreatedOnAFullRadio) {
    EXPECT_TRUE(runFresh([] {
        EXPECT_EQ(WiFiSystemAccessPointCreate(1, 9), 1U);
        EXPECT_EQ(Platform::instance().logTexts(0), Texts{"No access point match found"});
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(9), kNoRadio);
        EXPECT_EQ(Platform::instance().logTexts(0), Texts(2, "No access point match found"));
        EXPECT_EQ(WiFiSystemAccessPointDelete(9), 1U);
        EXPECT_EQ(WiFiSystemAccessPointCreate(2, 9), 0U);
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(9), 2U);
    }));
}

TEST(SlotTable, PutsADeletedAccessPointBack) {
    EXPECT_TRUE(runFresh([] {
        EXPECT_EQ(WiFiSystemAccessPointDelete(3), 0U);
        EXPECT_TRUE(Platform::instance().logged(3, "WiFiSystemAccessPointDelete DONE"));
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(3), kNoRadio);
        EXPECT_EQ(WiFiSystemAccessPointCreate(1, 3), 0U);
        EXPECT_TRUE(Platform::instance().logged(3, "WiFiSystemAccessPointCreate DONE"));
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(3), 1U);
    }));
}

TEST(SlotTable, MovesAnAccessPointToAFreeSlotOfAnotherRadio) {
    EXPECT_TRUE(runFresh([] {
        EXPECT_EQ(WiFiSystemAccessPointDelete(5), 0U);
        EXPECT_EQ(WiFiSystemAccessPointCreate(1, 24), 0U);
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(24), 1U);
        EXPECT_EQ(WiFiSystemAccessPointCreate(3, 5), 0U);
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(5), 3U);
        // A reset addresses the radio that holds it now, and the place that its number implies.
        EXPECT_EQ(WiFiSystemResetAccessPointToFactory(24), 0U);
        EXPECT_EQ(Platform::instance().callTexts({"wlcsm_mngr_set"}),
                  Texts{"wlcsm_mngr_set(0, 7, \"wlResetAP\", \"1\")"});
    }));
}

TEST(SlotTable, HoldsEightAccessPointsARadio) {
    EXPECT_TRUE(runFresh([] {
        EXPECT_EQ(WiFiSystemAccessPointDelete(2), 0U);
        EXPECT_EQ(WiFiSystemAccessPointDelete(8), 0U);
        EXPECT_EQ(WiFiSystemAccessPointCreate(1, 9), 0U);
        EXPECT_EQ(WiFiSystemAccessPointCreate(1, 10), 0U);
        EXPECT_EQ(WiFiSystemAccessPointCreate(1, 11), 1U);
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(9), 1U);
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(10), 1U);
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(11), kNoRadio);
        // In their radio's own row the three left free places behind.
        for (const std::uint32_t ap : {2U, 8U, 11U}) {
            EXPECT_EQ(WiFiSystemAccessPointCreate(2, ap), 0U);
            EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(ap), 2U);
        }
        EXPECT_EQ(WiFiSystemAccessPointCreate(2, 1), 1U);
    }));
}

TEST(SlotTable, SaysWhatItDoesUnderTheFunctionsNames) {
    EXPECT_TRUE(runFresh([] {
        (void)WiFiSystemAccessPointDelete(3);
        (void)WiFiSystemAccessPointDelete(3);
        (void)WiFiSystemAccessPointRadioInstanceGet(3);
        (void)WiFiSystemAccessPointCreate(1, 3);
        (void)WiFiSystemAccessPointCreate(1, 3);
        (void)WiFiSystemAccessPointCreate(1, 9);
        (void)WiFiSystemAccessPointCreate(0, 9);
        (void)WiFiSystemAccessPointCreate(1, 0);
        (void)WiFiSystemAccessPointDelete(0);
        (void)WiFiSystemAccessPointRadioInstanceGet(0);
        Texts lines;
        for (const auto& line : Platform::instance().logs()) {
            lines.push_back(std::to_string(line.level) + " " + line.function + ": " + line.text);
            EXPECT_EQ(line.file, "wifi/QuorvelWiFiSystem");
        }
        const Texts expected = {
            "3 WiFiSystemAccessPointDelete: WiFiSystemAccessPointDelete DONE",
            "0 WiFiSystemAccessPointDelete: No access point match found",
            "0 WiFiSystemAccessPointRadioInstanceGet: No access point match found",
            // A create deletes first.
            "0 WiFiSystemAccessPointDelete: No access point match found",
            "3 WiFiSystemAccessPointCreate: WiFiSystemAccessPointCreate DONE",
            "3 WiFiSystemAccessPointDelete: WiFiSystemAccessPointDelete DONE",
            "3 WiFiSystemAccessPointCreate: WiFiSystemAccessPointCreate DONE",
            "3 WiFiSystemAccessPointDelete: WiFiSystemAccessPointDelete DONE",
            "0 WiFiSystemAccessPointCreate: No access point match found",
            "0 WiFiSystemAccessPointCreate: Invalid input params radioIndex:0 WiFiSystemMaxNumberOfRadios():3",
            "0 WiFiSystemAccessPointCreate: Invalid input params accessPointIndex:0 max:24",
            "0 WiFiSystemAccessPointDelete: Invalid input params accessPointIndex:0 max:24",
            "0 WiFiSystemAccessPointRadioInstanceGet: Invalid input params accessPointIndex:0 max:24"};
        EXPECT_EQ(lines, expected);
    }));
}

TEST(SlotTable, CreatesTwiceInTheSamePlace) {
    EXPECT_TRUE(runFresh([] {
        EXPECT_EQ(WiFiSystemAccessPointCreate(2, 12), 0U);
        EXPECT_EQ(WiFiSystemAccessPointCreate(2, 12), 0U);
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(12), 2U);
        EXPECT_EQ(WiFiSystemAccessPointDelete(12), 0U);
        EXPECT_EQ(WiFiSystemAccessPointDelete(12), 1U);
    }));
}

TEST(SlotTable, IsReadAndWrittenWithoutTheLock) {
    EXPECT_TRUE(runFresh([] {
        (void)WiFiSystemAccessPointDelete(5);
        (void)WiFiSystemAccessPointCreate(1, 5);
        (void)WiFiSystemAccessPointRadioInstanceGet(5);
        EXPECT_EQ(Platform::instance().callTexts(), Texts{});
    }));
}

// The front ends of the object without parameters.
class SystemContext : public PlatformTest {
  protected:
    Texts lines(const std::string& function) const {
        Texts lines;
        for (const auto& line : platform.logs()) {
            EXPECT_EQ(line.file, "wifi/QuorvelWiFiSystem");
            EXPECT_EQ(line.function, function);
            lines.push_back(std::to_string(line.level) + " " + line.text);
        }
        platform.forget();
        return lines;
    }

    GuardedBlock context{132};
};

TEST_F(SystemContext, IsInitialisedAsTheHostAnswers) {
    EXPECT_EQ(WiFiSystemInitContext(nullptr), 2U);
    EXPECT_EQ(platform.callTexts(), Texts{});
    EXPECT_EQ(lines("WiFiSystemInitContext"), (Texts{"3 WiFiSystemInitContext Enter", "0 Invalid context"}));
    platform.answer("Quorvel_ContextInit", 9);
    EXPECT_EQ(WiFiSystemInitContext(context.get()), 9U);
    EXPECT_EQ(platform.callTexts(), Texts{"Quorvel_ContextInit(ctx, 132)"});
    EXPECT_LT(platform.logs().back().order, platform.calls().back().order);
    EXPECT_EQ(lines("WiFiSystemInitContext"), (Texts{"3 WiFiSystemInitContext Enter", "3 WiFiSystemInitContext DONE"}));
}

TEST_F(SystemContext, AnswersYesOrNo) {
    platform.answer("Quorvel_IsContextSetMap", 128);
    EXPECT_EQ(WiFiSystemCheckContextNodeSet(context.get(), 0), 1U);
    EXPECT_EQ(platform.callTexts(), Texts{"Quorvel_IsContextSetMap(ctx, 0)"});
    EXPECT_EQ(lines("WiFiSystemCheckContextNodeSet"), Texts{"3 WiFiSystemCheckContextNodeSet DONE"});
    EXPECT_EQ(WiFiSystemCheckContextNodeSet(context.get(), 1), 0U);
    EXPECT_EQ(WiFiSystemCheckContextNodeSet(context.get(), 0xFFFFFFFFU), 0U);
    EXPECT_EQ(platform.callTexts(), Texts{});
    EXPECT_EQ(lines("WiFiSystemCheckContextNodeSet"), (Texts{"0 Exceeded subnodes", "0 Exceeded subnodes"}));
    EXPECT_EQ(WiFiSystemCheckContextNodeSet(nullptr, 1), 0U);
    EXPECT_EQ(platform.callTexts(), Texts{});
    EXPECT_EQ(lines("WiFiSystemCheckContextNodeSet"), Texts{"0 Invalid context"});
}

TEST_F(SystemContext, IsRefusedWithoutLocking) {
    EXPECT_EQ(WiFiSystemApplyContext(nullptr), 2U);
    EXPECT_EQ(platform.callTexts(), Texts{});
    EXPECT_EQ(lines("WiFiSystemApplyContext"), (Texts{"3 WiFiSystemApplyContext Enter", "0 Invalid context"}));
    EXPECT_EQ(WiFiSystemApplyContext(context.get()), 5U);
    EXPECT_EQ(platform.callTexts(), Texts{"Quorvel_IsContextInit(ctx)"});
    EXPECT_EQ(lines("WiFiSystemApplyContext"), (Texts{"3 WiFiSystemApplyContext Enter", "0 Uninit context"}));
}

TEST_F(SystemContext, IsAppliedUnderTheLockAndItsMarksAreClearedAfter) {
    ASSERT_EQ(WiFiSystemInitContext(context.get()), 0U);
    (void)WiFiLock();
    (void)WiFiUnlock();  // the lock exists
    platform.forget();
    platform.answer("Quorvel_ContextZeroSetMap", 9);  // not looked at
    EXPECT_EQ(WiFiSystemApplyContext(context.get()), 0U);
    EXPECT_EQ(platform.callTexts(), (Texts{"Quorvel_IsContextInit(ctx)", "QuorvelOsMutexLock(\"WiFi\")",
                                           "QuorvelOsMutexUnlock(\"WiFi\")", "Quorvel_ContextZeroSetMap(ctx)"}));
    EXPECT_EQ(lines("WiFiSystemApplyContext"),
              (Texts{"3 WiFiSystemApplyContext Enter", "3 WiFiSystemApplyContext DONE"}));
    EXPECT_EQ(WiFiSystemApplyContextImpl(context.get()), 0U);
    EXPECT_EQ(WiFiSystemApplyContextImpl(nullptr), 0U);
    EXPECT_EQ(platform.callTexts(), Texts{});
    EXPECT_EQ(platform.logs().size(), 0U);
}

TEST_F(SystemContext, KeepsItsMarksWhenTheLockFails) {
    ASSERT_EQ(WiFiSystemInitContext(context.get()), 0U);
    (void)Quorvel_ContextSetMap(context.get(), 0);
    const std::string before = context.bytes(0, 132);
    for (const char* call : {"QuorvelOsMutexLock", "QuorvelOsMutexUnlock"}) {
        platform.answer(call, -2);
        EXPECT_EQ(WiFiSystemApplyContext(context.get()), 0xFFFFFFFEU);
        platform.succeed(call);
        EXPECT_EQ(context.bytes(0, 132), before);
    }
    EXPECT_EQ(platform.logTexts(0), (Texts{"Lock failed, result -2", "Unlock failed, result -2"}));
}

TEST_F(SystemContext, SnapshotSucceedsWhateverTheHostSays) {
    EXPECT_EQ(WiFiSystemInstanceGet(nullptr), 0U);
    EXPECT_EQ(platform.callTexts(), Texts{"Quorvel_ContextInit(null, 132)"});
    EXPECT_EQ(lines("WiFiSystemInstanceGet"), (Texts{"3 WiFiSystemInstanceGet Enter", "3 WiFiSystemInstanceGet DONE"}));
}

}  // namespace
