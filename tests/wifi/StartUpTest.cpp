#include <gtest/gtest.h>
#include <quorvel.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"

extern "C" void Quorvel_P_WiFiFileCopyToBuffer(const char* path, char* buffer, std::uint32_t size);

namespace {

using quorvel::scripted::PlatformTest;
using Texts = std::vector<std::string>;

const char kBoardCommand[] = "i2cget -f -y 0x00 0x24 0x00 w > /tmp/i2cget";
const char kPciCommand[] = "lspci > /tmp/lspci";
const char kDefaultProgram[] = "/usr/loca/bin/wlmngr2";
const char kDefaultArguments[] = "-c/data/quorvel-dm-wifi.xml";

std::string systemCall(const std::string& command) {
    return "system(\"" + command + "\")";
}

SpawnInfo spawnInfo(const char* program, const char* arguments) {
    SpawnInfo info{};
    std::strncpy(info.program, program, sizeof info.program - 1);
    std::strncpy(info.arguments, arguments, sizeof info.arguments - 1);
    info.option320 = 77;
    return info;
}

// A board with two chips, both drivers and the daemon configured, up for 1234 seconds.
class StartUp : public PlatformTest {
  protected:
    StartUp() {
        platform.setFile("/tmp/i2cget", "0x0030\n");
        platform.setFile("/tmp/lspci", "00:00.0 0280: 14e4:43c5\n01:00.0 0280: 14e4:4360\n02:00.0 0200: 8086:1533\n");
        platform.setConfiguration("Device.WiFi", "WL_Driver", "/lib/wl.ko");
        platform.setConfiguration("Device.WiFi", "WLCSM_Driver", "/lib/wlcsm.ko");
        platform.setSpawnInfo("Device.WiFi.Daemon", spawnInfo("/bin/daemon", "-x"));
        platform.setProcess("wler_thread0", 101);
        platform.setProcess("wler_thread1", 102);
        platform.setSystemUpSeconds(1234);
    }

    std::uint32_t start() {
        testing::internal::CaptureStderr();
        const std::uint32_t result = WiFiInit();
        standardError = testing::internal::GetCapturedStderr();
        return result;
    }

    Texts stamps() {
        return platform.callTexts({"wlcsm_mngr_set"});
    }

    static Texts stampsOf(std::uint32_t radios) {
        Texts stamps;
        for (std::uint32_t radio = 0; radio < radios; ++radio) {
            stamps.push_back("wlcsm_mngr_set(" + std::to_string(radio) + ", 0, \"wlBootTime\", \"1234\")");
        }
        return stamps;
    }

    std::uint32_t chips(const std::string& listing) {
        platform.setFile("/tmp/lspci", listing);
        EXPECT_EQ(start(), 0U);
        return static_cast<std::uint32_t>(std::stoul(platform.file("/tmp/wl_instances.txt").value_or("99")));
    }

    Texts errorsForBoard(const std::string& line) {
        platform.forget();
        platform.setFile("/tmp/i2cget", line);
        EXPECT_EQ(start(), 0U);
        EXPECT_EQ(platform.callCount("QuorvelOsSpawnProcess"), 1U) << "start-up goes on whatever the board says";
        return platform.logTexts(0);
    }

    std::string standardError;
};

TEST_F(StartUp, DoesEverythingInOrder) {
    EXPECT_EQ(start(), 0U);
    const Texts calls = platform.callTexts(
        {"system", "fopen", "wlcsm_mngr_wifi_hal_started", "QuorvelUtilGetCfg", "QuorvelUtilGetPidByName",
         "sched_setscheduler", "QuorvelUtilGetSpawnInfoFromCfg", "QuorvelOsSpawnProcess", "wlcsm_mngr_set"});
    EXPECT_EQ(
        calls,
        (Texts{systemCall(kBoardCommand), systemCall(kPciCommand), "fopen(\"/tmp/i2cget\", \"r\")",
               "fopen(\"/tmp/lspci\", \"r\")", "fopen(\"/tmp/wl_instances.txt\", \"w\")",
               "wlcsm_mngr_wifi_hal_started(0, 10, 1)", "QuorvelUtilGetCfg(\"Device.WiFi\", \"WL_Driver\")",
               systemCall("insmod /lib/wl.ko > /dev/null"), "QuorvelUtilGetCfg(\"Device.WiFi\", \"WLCSM_Driver\")",
               systemCall("insmod /lib/wlcsm.ko > /dev/null"), "QuorvelUtilGetPidByName(\"wler_thread0\")",
               "sched_setscheduler(101, SCHED_RR, 5)", "QuorvelUtilGetPidByName(\"wler_thread1\")",
               "sched_setscheduler(102, SCHED_RR, 5)", "QuorvelUtilGetSpawnInfoFromCfg(\"Device.WiFi.Daemon\")",
               "QuorvelOsSpawnProcess(\"/bin/daemon\", \"-x\")", "wlcsm_mngr_set(0, 0, \"wlBootTime\", \"1234\")",
               "wlcsm_mngr_set(1, 0, \"wlBootTime\", \"1234\")"}));
    EXPECT_EQ(platform.file("/tmp/wl_instances.txt"), "2");
    EXPECT_EQ(standardError, "Loading wireless driver...\nLoading WL wireless driver...\nLoading WLCSM driver...\n");
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(StartUp, AnnouncesEachDriverBeforeItLoadsIt) {
    for (const std::string command : {"insmod /lib/wl.ko > /dev/null", "insmod /lib/wlcsm.ko > /dev/null"}) {
        platform.onCommand(command, [command] {
            (void)std::fputs((command + "\n").c_str(), stderr);
            return 256;  // a module that the kernel refuses
        });
    }
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(standardError,
              "Loading wireless driver...\n"
              "Loading WL wireless driver...\n"
              "insmod /lib/wl.ko > /dev/null\n"
              "Loading WLCSM driver...\n"
              "insmod /lib/wlcsm.ko > /dev/null\n");
}

TEST_F(StartUp, ReportsTheBoardBeforeItCountsTheChips) {
    platform.setFile("/tmp/i2cget", "0xffff\n");
    EXPECT_EQ(start(), 0U);
    const auto calls = platform.calls();
    const auto logs = platform.logs();
    ASSERT_EQ(logs.at(0).text, "WBID is not supported");
    for (const auto& call : calls) {
        if (call.text() == "fopen(\"/tmp/i2cget\", \"r\")") {
            EXPECT_LT(call.order, logs[0].order);
        }
        if (call.text() == "fopen(\"/tmp/lspci\", \"r\")") {
            EXPECT_GT(call.order, logs[0].order);
        }
    }
}

TEST_F(StartUp, HoldsTheLockOnlyToAnnounceItself) {
    EXPECT_EQ(start(), 0U);
    for (const auto& call : platform.calls()) {
        EXPECT_EQ(call.lockHeld, call.name == "wlcsm_mngr_wifi_hal_started" || call.name == "QuorvelOsMutexUnlock")
            << call.text();
    }
}

TEST_F(StartUp, AcceptsTheKnownBoards) {
    for (const char* board : {"0x0030\n", "0x0040\n", "0x0070\n", "0x0160\n", "0x0080\n", "0x0030", "0x00301\n"}) {
        EXPECT_EQ(errorsForBoard(board), Texts{}) << board;
    }
}

TEST_F(StartUp, ReportsABoardWithoutIdentifier) {
    for (const char* line : {"", "0xffff\n", "0xff00\n", "0xff", "0xff30\n"}) {
        EXPECT_EQ(errorsForBoard(line), Texts{"WBID is not supported"}) << line;
    }
}

// Quirk: start-up goes on although the message says that it ends.
TEST_F(StartUp, ReportsAnUnknownBoardAndGoesOn) {
    EXPECT_EQ(errorsForBoard("0x0031\nsecond line\n"), Texts{"Found WBID:0x0031\n unsupported, WiFiInit terminated."});
    EXPECT_EQ(errorsForBoard("\n"), Texts{"Found WBID:\n unsupported, WiFiInit terminated."});
    EXPECT_EQ(errorsForBoard("0xf030\n"), Texts{"Found WBID:0xf030\n unsupported, WiFiInit terminated."});
    EXPECT_EQ(errorsForBoard("0xFFFF\n"), Texts{"Found WBID:0xFFFF\n unsupported, WiFiInit terminated."});
    const std::string longLine(100, 'x');
    EXPECT_EQ(errorsForBoard(longLine),
              Texts{"Found WBID:" + longLine.substr(0, 63) + " unsupported, WiFiInit terminated."});
}

TEST_F(StartUp, ReportsABoardFileThatCannotBeOpened) {
    platform.failOpen("/tmp/i2cget");
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"File /tmp/i2cget Open fail.", "WBID is not supported"}));
    EXPECT_EQ(stamps(), stampsOf(2));
}

TEST_F(StartUp, EndsAtOnceWithoutAPciListing) {
    platform.failOpen("/tmp/lspci");
    EXPECT_EQ(start(), 1U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Open /tmp/lspci fail."});
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_wifi_hal_started", "QuorvelUtilGetCfg", "QuorvelOsSpawnProcess",
                                  "wlcsm_mngr_set", "QuorvelUtilGetPidByName"}),
              Texts{});
    EXPECT_EQ(platform.file("/tmp/wl_instances.txt"), std::nullopt);
    EXPECT_EQ(standardError, "");
}

TEST_F(StartUp, CountsEachLineWithAChipOnce) {
    EXPECT_EQ(chips("a 43c5\nb 43c5\nc 4360\n"), 3U);
    EXPECT_EQ(stamps(), stampsOf(3));
    platform.forget();
    EXPECT_EQ(chips("a 43c5\nb 43c5\nc 4360\nd a8db\n"), 4U);
    EXPECT_EQ(stamps(), stampsOf(4));  // also beyond the existing radios
    EXPECT_EQ(chips("a 43c5 43c4 4365\n"), 1U);
    EXPECT_EQ(chips("a 43c5"), 1U);
    EXPECT_EQ(chips("x43c5x\n"), 1U);
    EXPECT_EQ(chips("a 43C5\n"), 0U);
}

TEST_F(StartUp, KnowsFifteenChips) {
    for (const char* chip : {"43c5", "43c4", "4365", "4359", "43a9", "4331", "4332", "43a0", "43a2", "4360", "43a1",
                             "43b1", "43c3", "a8d1", "a8db"}) {
        EXPECT_EQ(chips(std::string("01:00.0 0280: 14e4:") + chip + "\n"), 1U) << chip;
    }
}

TEST_F(StartUp, TakesALongLineInPiecesOfSixtyThree) {
    const std::string pad(59, '.');
    EXPECT_EQ(chips(pad + "43c5" + pad + "4360\n"), 2U);    // each piece holds one
    EXPECT_EQ(chips(std::string(61, '.') + "43c5\n"), 0U);  // split between two pieces
    EXPECT_EQ(chips(std::string(63, '.') + "43c5\n"), 1U);
}

TEST_F(StartUp, WithoutChipsSkipsTheirDriverAndStampsNothing) {
    EXPECT_EQ(chips("02:00.0 0200: 8086:1533\n"), 0U);
    EXPECT_EQ(platform.callTexts({"QuorvelUtilGetCfg"}), Texts{"QuorvelUtilGetCfg(\"Device.WiFi\", \"WLCSM_Driver\")"});
    EXPECT_EQ(platform.callTexts({"system"}), (Texts{systemCall(kBoardCommand), systemCall(kPciCommand),
                                                     systemCall("insmod /lib/wlcsm.ko > /dev/null")}));
    EXPECT_EQ(platform.callCount("QuorvelOsSpawnProcess"), 1U);
    EXPECT_EQ(stamps(), Texts{});
    EXPECT_EQ(standardError, "Loading wireless driver...\nLoading WLCSM driver...\n");
    EXPECT_EQ(chips(""), 0U);
}

TEST_F(StartUp, GoesOnWhenTheCountCannotBeWritten) {
    platform.failOpen("/tmp/wl_instances.txt");
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Open /tmp/wl_instances.txt fail."});
    EXPECT_EQ(platform.callCount("QuorvelOsSpawnProcess"), 1U);
    EXPECT_EQ(stamps(), stampsOf(2));
}

TEST_F(StartUp, ReturnsTheAnnouncementsFailureAfterStampingTheRadios) {
    platform.fail("wlcsm_mngr_wifi_hal_started");
    EXPECT_EQ(start(), 1U);
    EXPECT_TRUE(platform.logged(0, "WiFiSystemInit Failure with errno 1"));
    EXPECT_EQ(platform.callTexts({"QuorvelUtilGetCfg", "QuorvelUtilGetPidByName", "QuorvelOsSpawnProcess"}), Texts{});
    EXPECT_EQ(platform.callCount("system"), 2U);
    EXPECT_EQ(stamps(), stampsOf(2));
    EXPECT_EQ(standardError, "");
    EXPECT_EQ(platform.file("/tmp/wl_instances.txt"), "2");
}

TEST_F(StartUp, ReturnsTheLocksFailure) {
    platform.answer("QuorvelOsMutexLock", 19);
    EXPECT_EQ(start(), 19U);
    EXPECT_TRUE(platform.logged(0, "WiFiSystemInit Failure with errno 19"));
    EXPECT_EQ(stamps(), stampsOf(2));
}

TEST_F(StartUp, ReturnsTheUnlocksFailure) {
    platform.answer("QuorvelOsMutexUnlock", 23);
    EXPECT_EQ(start(), 23U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"Unlock failed, result 23", "WiFiSystemInit Failure with errno 23"}));
    EXPECT_EQ(platform.callTexts({"QuorvelUtilGetCfg", "QuorvelOsSpawnProcess"}), Texts{});
    EXPECT_EQ(stamps(), stampsOf(2));
}

TEST_F(StartUp, StopsWhenTheFirstDriverIsNotConfigured) {
    platform.answerAt("QuorvelUtilGetCfg", 1, 41);
    EXPECT_EQ(start(), 41U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Don't find WL_Driver in configure file."});
    EXPECT_EQ(platform.callCount("QuorvelUtilGetCfg"), 1U);
    EXPECT_EQ(platform.callCount("system"), 2U);
    EXPECT_EQ(platform.callTexts({"QuorvelUtilGetPidByName", "QuorvelOsSpawnProcess"}), Texts{});
    EXPECT_EQ(stamps(), stampsOf(2));
    EXPECT_EQ(standardError, "Loading wireless driver...\n");
}

TEST_F(StartUp, StopsWhenTheSecondDriverIsNotConfigured) {
    platform.answerAt("QuorvelUtilGetCfg", 2, 42);
    EXPECT_EQ(start(), 42U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Don't find WLCSM_Driver in configure file."});
    EXPECT_EQ(platform.callCount("system"), 3U);
    EXPECT_EQ(platform.callTexts({"QuorvelUtilGetPidByName", "QuorvelOsSpawnProcess"}), Texts{});
    EXPECT_EQ(stamps(), stampsOf(2));
    EXPECT_EQ(standardError, "Loading wireless driver...\nLoading WL wireless driver...\n");
}

TEST_F(StartUp, PassesOverFailingCommands) {
    platform.fail("system");
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{});
    EXPECT_EQ(platform.callCount("system"), 4U);
}

TEST_F(StartUp, TakesADriverTextThatFillsItsBuffer) {
    const std::string path(63, 'd');
    platform.setConfiguration("Device.WiFi", "WLCSM_Driver", path);
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(platform.callTexts({"system"}).back(), systemCall("insmod " + path + " > /dev/null"));
}

TEST_F(StartUp, LooksEachDriverUpAfresh) {
    platform.answerAt("QuorvelUtilGetCfg", 2, 0);  // found, and nothing written
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(platform.callTexts({"system"}).back(), systemCall("insmod  > /dev/null"));
    platform.answer("QuorvelUtilGetCfg", 0);
    platform.forget();
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(platform.callTexts({"system"}).at(2), systemCall("insmod  > /dev/null"));
}

TEST_F(StartUp, SaysItsCodesSigned) {
    platform.answer("QuorvelOsMutexLock", -2);
    EXPECT_EQ(start(), 0xFFFFFFFEU);
    EXPECT_TRUE(platform.logged(0, "WiFiSystemInit Failure with errno -2"));
    platform.succeed("QuorvelOsMutexLock");
    platform.answer("QuorvelOsSpawnProcess", -3);
    EXPECT_EQ(start(), 0xFFFFFFFDU);
    EXPECT_TRUE(platform.logged(0, "Quorvel_P_WiFiLaunchWldaemon Failure with errno -3"));
    platform.answer("QuorvelOsTerminateProcess", -4);
    EXPECT_EQ(WiFiUnInit(), -4);
    EXPECT_TRUE(platform.logged(0, "Quorvel_P_WiFiTerminateWldaemon Failure with errno -4"));
}

TEST_F(StartUp, PassesOverDriverTasksThatAreNotThere) {
    platform.setProcess("wler_thread0", 0);
    platform.setProcess("wler_thread1", -1);
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(platform.callCount("sched_setscheduler"), 0U);
    EXPECT_EQ(platform.callCount("QuorvelUtilGetPidByName"), 2U);
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(StartUp, ReportsPrioritiesThatCannotBeSet) {
    platform.fail("sched_setscheduler");
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(platform.logTexts(0),
              (Texts{"Could not set priority on wler_thread0.\n", "Could not set priority on wler_thread1.\n"}));
    EXPECT_EQ(platform.callCount("QuorvelOsSpawnProcess"), 1U);
}

TEST_F(StartUp, ReportsTheOnePriorityThatCannotBeSet) {
    platform.failAt("sched_setscheduler", 2);
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Could not set priority on wler_thread1.\n"});
}

TEST_F(StartUp, ReturnsTheSpawnsFailureAfterStampingTheRadios) {
    platform.answer("QuorvelOsSpawnProcess", 61);
    EXPECT_EQ(start(), 61U);
    EXPECT_EQ(platform.logTexts(0),
              (Texts{"could not spawn child /bin/daemon", "Quorvel_P_WiFiLaunchWldaemon Failure with errno 61"}));
    EXPECT_EQ(stamps(), stampsOf(2));
}

TEST_F(StartUp, RepeatsEveryStepWhenCalledAgain) {
    EXPECT_EQ(start(), 0U);
    const Texts first = platform.callTexts({"system", "QuorvelOsSpawnProcess", "wlcsm_mngr_set"});
    platform.forget();
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(platform.callTexts({"system", "QuorvelOsSpawnProcess", "wlcsm_mngr_set"}), first);
}

TEST_F(StartUp, SpawnsItsDefaultDaemonAndShutDownTerminatesIt) {
    platform.fail("QuorvelUtilGetSpawnInfoFromCfg");
    EXPECT_EQ(start(), 0U);
    EXPECT_EQ(WiFiUnInit(), 0);
    EXPECT_EQ(platform.callTexts({"QuorvelOsSpawnProcess", "QuorvelOsTerminateProcess"}),
              (Texts{"QuorvelOsSpawnProcess(\"/usr/loca/bin/wlmngr2\", \"-c/data/quorvel-dm-wifi.xml\")",
                     "QuorvelOsTerminateProcess(\"/usr/loca/bin/wlmngr2\", \"-c/data/quorvel-dm-wifi.xml\", "
                     "arguments of the record)"}));
}

TEST_F(StartUp, LogsEachStepUnderTheFunctionThatTakesIt) {
    platform.failOpen("/tmp/i2cget");
    platform.failOpen("/tmp/wl_instances.txt");
    platform.fail("sched_setscheduler");
    platform.fail("QuorvelUtilGetSpawnInfoFromCfg");
    platform.answer("QuorvelOsSpawnProcess", 61);
    EXPECT_EQ(start(), 61U);
    Texts lines;
    for (const auto& line : platform.logs()) {
        lines.push_back(std::to_string(line.level) + " " + line.function + ": " + line.text);
        EXPECT_EQ(line.file, line.function == "WiFiSystemInit" ? "wifi/QuorvelWiFiSystem" : "wifi/QuorvelWiFiBaseAPI")
            << line.text;
        EXPECT_GT(line.line, 0U) << line.text;
        EXPECT_NE(line.format, "%s") << line.text;
    }
    const Texts expected = {
        "0 Quorvel_P_WiFiFileCopyToBuffer: File /tmp/i2cget Open fail.",
        "0 WiFiInit: WBID is not supported",
        "0 WiFiInit: Open /tmp/wl_instances.txt fail.",
        "3 WiFiSystemInit: WiFiSystemInit DONE",
        "0 WiFiInit: Could not set priority on wler_thread0.\n",
        "0 WiFiInit: Could not set priority on wler_thread1.\n",
        "1 Quorvel_P_WiFiLaunchWldaemon: Failed to get WiFi daemon info from config file. Fall back to default...",
        "0 Quorvel_P_WiFiLaunchWldaemon: could not spawn child /usr/loca/bin/wlmngr2",
        "3 Quorvel_P_WiFiLaunchWldaemon: Quorvel_P_WiFiLaunchWldaemon DONE",
        "0 WiFiInit: Quorvel_P_WiFiLaunchWldaemon Failure with errno 61",
        "2 Quorvel_P_WiFiSetCurrentTimeAsStartTime: Set startTime[1234] for radio[1]",
        "3 Quorvel_P_WiFiSetCurrentTimeAsStartTime: Quorvel_P_WiFiSetCurrentTimeAsStartTime DONE",
        "2 Quorvel_P_WiFiSetCurrentTimeAsStartTime: Set startTime[1234] for radio[2]",
        "3 Quorvel_P_WiFiSetCurrentTimeAsStartTime: Quorvel_P_WiFiSetCurrentTimeAsStartTime DONE"};
    EXPECT_EQ(lines, expected);
}

TEST_F(StartUp, LogsItsRefusalsUnderItsOwnName) {
    const auto expectRefusal = [this](const std::string& format, const std::string& text) {
        for (const auto& line : platform.logs()) {
            if (line.level != 0 || line.function != "WiFiInit") continue;
            EXPECT_EQ(line.format, format);
            EXPECT_EQ(line.text, text);
            return;
        }
        ADD_FAILURE() << "nothing logged: " << text;
    };
    EXPECT_EQ(errorsForBoard("0x0031\n").size(), 1U);
    expectRefusal("Found WBID:%s unsupported, WiFiInit terminated.",
                  "Found WBID:0x0031\n unsupported, WiFiInit terminated.");
    platform.setFile("/tmp/i2cget", "0x0030\n");
    platform.forget();
    platform.answerAt("QuorvelUtilGetCfg", 1, 41);
    EXPECT_EQ(start(), 41U);
    expectRefusal("Don't find WL_Driver in configure file.", "Don't find WL_Driver in configure file.");
    platform.succeed("QuorvelUtilGetCfg");
    platform.forget();
    platform.answerAt("QuorvelUtilGetCfg", 2, 42);
    EXPECT_EQ(start(), 42U);
    expectRefusal("Don't find WLCSM_Driver in configure file.", "Don't find WLCSM_Driver in configure file.");
    platform.forget();
    platform.fail("wlcsm_mngr_wifi_hal_started");
    EXPECT_EQ(start(), 1U);
    expectRefusal("WiFiSystemInit Failure with errno %d", "WiFiSystemInit Failure with errno 1");
    platform.forget();
    platform.failOpen("/tmp/lspci");
    EXPECT_EQ(start(), 1U);
    expectRefusal("Open %s fail.", "Open /tmp/lspci fail.");
}

class FirstLine : public PlatformTest {};

TEST_F(FirstLine, IsCopiedWithItsNewlineAsFarAsItFits) {
    platform.setFile("/tmp/some", "first\nsecond\n");
    char buffer[16] = {};
    Quorvel_P_WiFiFileCopyToBuffer("/tmp/some", buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "first\n");
    Quorvel_P_WiFiFileCopyToBuffer("/tmp/some", buffer, 4);
    EXPECT_STREQ(buffer, "fir");
    EXPECT_EQ(platform.callTexts({"fopen"}), Texts(2, "fopen(\"/tmp/some\", \"r\")"));
    EXPECT_EQ(platform.logs().size(), 0U);
}

TEST_F(FirstLine, LeavesTheBufferWhenThereIsNone) {
    char buffer[16] = "as it was";
    Quorvel_P_WiFiFileCopyToBuffer("/tmp/none", buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "as it was");
    EXPECT_EQ(platform.logTexts(0), Texts{"File /tmp/none Open fail."});
    platform.setFile("/tmp/empty", "");
    Quorvel_P_WiFiFileCopyToBuffer("/tmp/empty", buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "as it was");
}

class Daemon : public PlatformTest {
  protected:
    static void expectDefault(const std::optional<SpawnInfo>& info, std::uint32_t option320, std::uint8_t option324) {
        ASSERT_TRUE(info.has_value());
        SpawnInfo expected{};
        std::strncpy(expected.program, kDefaultProgram, sizeof expected.program - 1);
        std::strncpy(expected.arguments, kDefaultArguments, sizeof expected.arguments - 1);
        expected.option320 = option320;
        expected.option324 = option324;
        EXPECT_EQ(std::memcmp(&*info, &expected, sizeof expected), 0);
        EXPECT_EQ(sizeof(SpawnInfo), 344U);
    }
};

TEST_F(Daemon, IsLaunchedFromTheConfiguration) {
    const SpawnInfo info = spawnInfo("/bin/daemon", "-x -y");
    platform.setSpawnInfo("Device.WiFi.Daemon", info);
    EXPECT_EQ(Quorvel_P_WiFiLaunchWldaemon(), 0U);
    ASSERT_TRUE(platform.spawned().has_value());
    const SpawnInfo spawned = *platform.spawned();
    EXPECT_EQ(std::memcmp(&spawned, &info, sizeof info), 0);
    const ProcessRecord nothing{};
    const auto filled = platform.spawnedInto();
    ASSERT_TRUE(filled.has_value());
    EXPECT_EQ(std::memcmp(&*filled, &nothing, sizeof nothing), 0);
    EXPECT_EQ(platform.logTexts(1), Texts{});
    EXPECT_EQ(platform.logTexts(3), Texts{"Quorvel_P_WiFiLaunchWldaemon DONE"});
}

// Quirk: the path says "loca", not "local".
TEST_F(Daemon, IsLaunchedWithItsDefaultsWithoutConfiguration) {
    EXPECT_EQ(Quorvel_P_WiFiLaunchWldaemon(), 0U);
    expectDefault(platform.spawned(), 1, 1);
    EXPECT_EQ(platform.logTexts(1), Texts{"Failed to get WiFi daemon info from config file. Fall back to default..."});
}

TEST_F(Daemon, LaunchSaysDoneThoughTheSpawnFailed) {
    platform.answer("QuorvelOsSpawnProcess", 5);
    EXPECT_EQ(Quorvel_P_WiFiLaunchWldaemon(), 5U);
    EXPECT_EQ(platform.logTexts(0), Texts{"could not spawn child /usr/loca/bin/wlmngr2"});
    EXPECT_EQ(platform.logs().at(1).format, "could not spawn child %s");
    EXPECT_EQ(platform.logTexts(3), Texts{"Quorvel_P_WiFiLaunchWldaemon DONE"});
}

TEST_F(Daemon, IsNamedWholeWhenItsPathFillsTheField) {
    SpawnInfo info = spawnInfo("", "-x");
    std::memset(info.program, 'p', sizeof info.program);
    platform.setSpawnInfo("Device.WiFi.Daemon", info);
    platform.answer("QuorvelOsSpawnProcess", 5);
    // The scripted host renders the path as a text, which ends with the arguments behind it.
    EXPECT_EQ(Quorvel_P_WiFiLaunchWldaemon(), 5U);
    EXPECT_EQ(platform.logTexts(0), Texts{"could not spawn child " + std::string(64, 'p')});
}

TEST_F(Daemon, IsTerminatedFromTheConfiguration) {
    platform.setSpawnInfo("Device.WiFi.Daemon", spawnInfo("/bin/daemon", "-x"));
    EXPECT_EQ(Quorvel_P_WiFiTerminateWldaemon(), 0U);
    EXPECT_EQ(platform.callTexts({"QuorvelOsTerminateProcess"}),
              Texts{"QuorvelOsTerminateProcess(\"/bin/daemon\", \"-x\", arguments of the record)"});
    EXPECT_EQ(platform.logTexts(3), Texts{"Quorvel_P_WiFiTerminateWldaemon DONE"});
}

// Quirk: termination by the default leaves the options 0 and logs nothing, unlike the launch.
TEST_F(Daemon, IsTerminatedWithItsDefaultsWithoutConfiguration) {
    EXPECT_EQ(Quorvel_P_WiFiTerminateWldaemon(), 0U);
    expectDefault(platform.terminated(), 0, 0);
    EXPECT_EQ(platform.logTexts(1), Texts{});
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

class ShutDown : public PlatformTest {};

TEST_F(ShutDown, TerminatesTheDaemonAndNothingElse) {
    EXPECT_EQ(WiFiUnInit(), 0);
    EXPECT_EQ(platform.callTexts({"QuorvelOsTerminateProcess"}).size(), 1U);
    EXPECT_EQ(platform.callTexts({"system", "fopen", "pthread_cancel", "QuorvelOsMutexLock", "wlcsm_mngr_set"}),
              Texts{});
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(ShutDown, ReturnsTheTerminationsFailure) {
    platform.answer("QuorvelOsTerminateProcess", 8);
    EXPECT_EQ(WiFiUnInit(), 8);
    EXPECT_EQ(platform.logTexts(0), Texts{"Quorvel_P_WiFiTerminateWldaemon Failure with errno 8"});
    EXPECT_EQ(platform.logs().back().function, "WiFiUnInit");
    EXPECT_EQ(platform.logs().back().file, "wifi/QuorvelWiFiBaseAPI");
}

TEST_F(ShutDown, ReleasesTheStoredResultsEvenWhenTheTerminationFails) {
    platform.setVariableEverywhere("name", "wl0");
    platform.onCommand("wl -i wl0 scanresults > /var/wl0_scanresults", [this] {
        platform.setFile("/var/wl0_scanresults", "SSID: \"one\"\nBSSID: 00:11:22:33:44:55\n\n");
        return 0;
    });
    alignas(4) char context[192];
    ASSERT_EQ(WiFiRadioStatsInitContext(context), 0U);
    ASSERT_EQ(WiFiRadioStatsDiagnosticsStateSet(context, 1, 2), 0U);
    ASSERT_EQ(WiFiRadioStatsApplyContext(context, 1, 0), 0U);
    char ssid[64] = "";
    ASSERT_EQ(WiFiNeighboringDiagnosticsResultSSIDGet(1, ssid, 32), 0U);
    EXPECT_STREQ(ssid, "one");
    platform.answer("QuorvelOsTerminateProcess", 8);
    EXPECT_EQ(WiFiUnInit(), 8);
    EXPECT_EQ(WiFiUnInit(), 8);  // and once more: the store is empty then
    EXPECT_EQ(WiFiNeighboringDiagnosticsResultSSIDGet(1, ssid, 32), 1U);
}

class RadioTime : public PlatformTest {};

TEST_F(RadioTime, StartIsStampedAsTheSystemsUpTime) {
    platform.setSystemUpSeconds(98765);
    EXPECT_EQ(Quorvel_P_WiFiSetCurrentTimeAsStartTime(2), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set"}), Texts{"wlcsm_mngr_set(1, 0, \"wlBootTime\", \"98765\")"});
    EXPECT_EQ(platform.logTexts(2), Texts{"Set startTime[98765] for radio[2]"});
    EXPECT_EQ(platform.logTexts(3), Texts{"Quorvel_P_WiFiSetCurrentTimeAsStartTime DONE"});
    platform.setSystemUpSeconds(0xFFFFFFFFU);
    EXPECT_EQ(Quorvel_P_WiFiSetCurrentTimeAsStartTime(1), 0U);
    EXPECT_EQ(platform.variable(0, 0, "wlBootTime"), "-1");  // Quirk: written as a signed number.
}

TEST_F(RadioTime, StartIsStampedForAnyNumberAndWhateverTheManagerSays) {
    platform.fail("wlcsm_mngr_set");
    EXPECT_EQ(Quorvel_P_WiFiSetCurrentTimeAsStartTime(9), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set"}), Texts{"wlcsm_mngr_set(8, 0, \"wlBootTime\", \"0\")"});
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(RadioTime, ElapsesAsTheManagerCounts) {
    platform.setRadioUpSeconds(0, 321);
    platform.setRadioUpSeconds(2, 4);
    std::uint32_t seconds = 0;
    EXPECT_EQ(Quorvel_P_WiFiGetTimeElapseFromStartTime(1, &seconds), 0U);
    EXPECT_EQ(seconds, 321U);
    EXPECT_EQ(platform.logTexts(2), Texts{"Elapsed time: 321 secs for radio[1]"});
    EXPECT_EQ(platform.logTexts(3), Texts{"Quorvel_P_WiFiGetTimeElapseFromStartTime DONE"});
    EXPECT_EQ(Quorvel_P_WiFiGetTimeElapseFromStartTime(3, &seconds), 0U);
    EXPECT_EQ(seconds, 4U);
    EXPECT_EQ(platform.callTexts(), (Texts{"wlcsm_get_wlUpSecs(0)", "wlcsm_get_wlUpSecs(2)"}));
}

TEST_F(RadioTime, IsRefusedForRadiosThatDoNotExist) {
    std::uint32_t seconds = 7;
    EXPECT_EQ(Quorvel_P_WiFiGetTimeElapseFromStartTime(0, &seconds), 1U);
    EXPECT_EQ(Quorvel_P_WiFiGetTimeElapseFromStartTime(4, &seconds), 1U);
    EXPECT_EQ(seconds, 7U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"Incorrect radioIdx: 0 WiFiSystemMaxNumberOfRadios():3",
                                           "Incorrect radioIdx: 4 WiFiSystemMaxNumberOfRadios():3"}));
    EXPECT_EQ(platform.callTexts(), Texts{});
}

}  // namespace
