#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/wifi/platform/FreshProcess.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"

namespace {

using quorvel::scripted::Platform;
using quorvel::scripted::PlatformTest;
using quorvel::scripted::runFresh;
using Texts = std::vector<std::string>;

const Texts kCreateLock = {"QuorvelOsCreateMutex(\"WiFi\", out)", "QuorvelOsMutexLock(\"WiFi\")"};

class Lock : public PlatformTest {};

TEST(FirstLock, CreatesTheMutexOnce) {
    EXPECT_TRUE(runFresh([] {
        Platform& platform = Platform::instance();
        EXPECT_EQ(WiFiLock(), 0U);
        EXPECT_EQ(platform.callTexts(), kCreateLock);
        EXPECT_EQ(WiFiUnlock(), 0U);
        platform.forget();
        EXPECT_EQ(WiFiLock(), 0U);
        EXPECT_EQ(WiFiUnlock(), 0U);
        EXPECT_EQ(platform.callTexts(), (Texts{"QuorvelOsMutexLock(\"WiFi\")", "QuorvelOsMutexUnlock(\"WiFi\")"}));
    }));
}

TEST(FirstLock, CreatesAgainAfterAFailedCreation) {
    EXPECT_TRUE(runFresh([] {
        Platform& platform = Platform::instance();
        platform.answerAt("QuorvelOsCreateMutex", 1, 33);
        platform.answerAt("QuorvelOsCreateMutex", 2, 34);
        std::uint8_t value = 0;
        EXPECT_EQ(WiFiLock(), 33U);
        EXPECT_EQ(WiFiBandSteeringCapabilityGet(&value), 34U);
        EXPECT_TRUE(platform.logged(0, "Lock failed, result 34"));
        EXPECT_EQ(value, 0);
        EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 0U);
        EXPECT_EQ(WiFiBandSteeringCapabilityGet(&value), 0U);
        EXPECT_EQ(value, 1);
        EXPECT_EQ(platform.callCount("QuorvelOsCreateMutex"), 3U);
        EXPECT_EQ(WiFiLock(), 0U);
        EXPECT_EQ(platform.callCount("QuorvelOsCreateMutex"), 3U);
        EXPECT_EQ(WiFiUnlock(), 0U);
    }));
}

TEST(FirstLock, DoesNotCreateAgainAfterAFailedLock) {
    EXPECT_TRUE(runFresh([] {
        Platform& platform = Platform::instance();
        platform.answerAt("QuorvelOsMutexLock", 1, 21);
        EXPECT_EQ(WiFiLock(), 21U);
        EXPECT_EQ(WiFiLock(), 0U);
        EXPECT_EQ(platform.callCount("QuorvelOsCreateMutex"), 1U);
        EXPECT_EQ(WiFiUnlock(), 0U);
    }));
}

TEST_F(Lock, GivesTheUnlocksCode) {
    EXPECT_EQ(WiFiLock(), 0U);
    platform.answer("QuorvelOsMutexUnlock", 44);
    EXPECT_EQ(WiFiUnlock(), 44U);
}

TEST(FirstLock, IsNotNeededByAnUnlock) {
    EXPECT_TRUE(runFresh([] {
        Platform& platform = Platform::instance();
        EXPECT_NE(WiFiUnlock(), 0U);
        EXPECT_EQ(platform.callCount("QuorvelOsMutexUnlock"), 1U);
        EXPECT_EQ(platform.callCount("QuorvelOsCreateMutex"), 0U);
    }));
}

class Saving : public PlatformTest {};

TEST_F(Saving, AsksTheManagerUnderTheLock) {
    EXPECT_EQ(WifiSaveNvram(), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_save_nvram"}), Texts{"wlcsm_mngr_save_nvram(0, 9, 1)"});
    for (const auto& call : platform.calls()) {
        EXPECT_EQ(call.lockHeld, call.name == "wlcsm_mngr_save_nvram" || call.name == "QuorvelOsMutexUnlock")
            << call.text();
    }
    EXPECT_EQ(platform.logTexts(3), (Texts{"WifiSaveNvram Enter", "WifiSaveNvram DONE"}));
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(Saving, TakesAnyAnswerButZeroForSuccess) {
    platform.answer("wlcsm_mngr_save_nvram", -1);
    EXPECT_EQ(WifiSaveNvram(), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

// Quirk: a failed save keeps the lock; the next caller waits until the host releases it.
TEST_F(Saving, KeepsTheLockWhenTheManagerCouldNotSave) {
    expectLockLeftHeld();
    platform.fail("wlcsm_mngr_save_nvram");
    EXPECT_EQ(WifiSaveNvram(), 1U);
    EXPECT_TRUE(platform.lockHeld());
    EXPECT_EQ(platform.callCount("QuorvelOsMutexUnlock"), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{"wlcsm_mngr_run_cmd - WLCSM_MNGR_CMD_SAVE_NVRAM, FAIL."});
    EXPECT_FALSE(platform.logged(3, "WifiSaveNvram DONE"));
}

TEST_F(Saving, ReturnsTheLocksFailure) {
    platform.answer("QuorvelOsMutexLock", 12);
    EXPECT_EQ(WifiSaveNvram(), 12U);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_save_nvram"), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Lock failed, result 12"});
}

TEST_F(Saving, ReturnsTheUnlocksFailure) {
    platform.answer("QuorvelOsMutexUnlock", 13);
    EXPECT_EQ(WifiSaveNvram(), 13U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Unlock failed, result 13"});
    EXPECT_FALSE(platform.logged(3, "WifiSaveNvram DONE"));
}

TEST_F(Saving, LogsWithTheBridgesFileName) {
    EXPECT_EQ(WifiSaveNvram(), 0U);
    for (const auto& line : platform.logs()) {
        EXPECT_EQ(line.file, "wifi/QuorvelWiFiBaseAPI");
        EXPECT_EQ(line.function, "WifiSaveNvram");
    }
}

}  // namespace
