#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include <quorvel.h>
#include <wlcsm.h>
#include "tests/wifi/platform/FreshProcess.h"
#include "tests/wifi/platform/PlatformTest.h"

namespace quorvel::scripted {

namespace {

using Texts = std::vector<std::string>;
class ScriptedPlatform : public PlatformTest {};

int loadsSeen = 0;

TEST_F(ScriptedPlatform, KeepsContextsFaithfully) {
    GuardedBlock block(284);
    EXPECT_NE(Quorvel_IsContextInit(block.get()), 0U);
    EXPECT_EQ(Quorvel_ContextInit(block.get(), 284), 0U);
    EXPECT_EQ(Quorvel_IsContextInit(block.get()), 0U);
    EXPECT_EQ(block.bytes(132, 152), std::string(152, '\0'));
    EXPECT_EQ(Quorvel_ContextSetMap(block.get(), 9), 0U);
    EXPECT_NE(Quorvel_IsContextSetMap(block.get(), 9), 0U);
    EXPECT_EQ(Quorvel_IsContextSetMap(block.get(), 8), 0U);
    EXPECT_EQ(Quorvel_ContextClearMap(block.get(), 9), 0U);
    EXPECT_EQ(Quorvel_IsContextSetMap(block.get(), 9), 0U);
    EXPECT_EQ(Quorvel_ContextSetMap(block.get(), 0), 0U);
    EXPECT_EQ(Quorvel_ContextZeroSetMap(block.get()), 0U);
    EXPECT_EQ(Quorvel_IsContextSetMap(block.get(), 0), 0U);
    EXPECT_EQ(Quorvel_IsContextInit(block.get()), 0U);
    EXPECT_NE(Quorvel_ContextInit(nullptr, 284), 0U);
    EXPECT_NE(Quorvel_ContextInit(block.get(), 131), 0U);
    EXPECT_TRUE(block.intact());
}

TEST_F(ScriptedPlatform, WritesCallsAndLogLinesDownInOrder) {
    (void)wlcsm_mngr_restart(2, 0, 0, 1);
    Quorvel_LogPrint(2, "wifi/File", "function", 7, "radio[%d] %s", 2, "text");
    (void)wlcsm_mngr_set(0, 1, "wlSsid", nullptr);
    EXPECT_EQ(platform.callTexts(),
              (Texts{"wlcsm_mngr_restart(2, 0, 0, 1)", "wlcsm_mngr_set(0, 1, \"wlSsid\", null)"}));
    ASSERT_EQ(platform.logs().size(), 1U);
    EXPECT_EQ(platform.logs()[0].text, "radio[2] text");
    EXPECT_LT(platform.calls()[0].order, platform.logs()[0].order);
    EXPECT_LT(platform.logs()[0].order, platform.calls()[1].order);
}

TEST_F(ScriptedPlatform, KeepsTheRecordThatAMeasurementCameWith) {
    platform.setRecord("wlcsm_mngr_channelstats", std::string(80, 'm'));
    std::string record(80, 'q');
    EXPECT_EQ(platform.handed("wlcsm_mngr_channelstats"), std::nullopt);
    EXPECT_EQ(wlcsm_mngr_channelstats(0, record.data()), 0);
    EXPECT_EQ(record, std::string(80, 'm'));
    EXPECT_EQ(platform.handed("wlcsm_mngr_channelstats"), std::string(80, 'q'));
    platform.forget();
    EXPECT_EQ(platform.handed("wlcsm_mngr_channelstats"), std::nullopt);
}

TEST_F(ScriptedPlatform, ForcesResultsByTheCountOfCalls) {
    platform.failAt("wlcsm_mngr_restart", 2);
    platform.answerFrom("wlcsm_mngr_restart", 4, 9);
    EXPECT_EQ(wlcsm_mngr_restart(0, 0, 0, 0), 1);
    EXPECT_EQ(wlcsm_mngr_restart(0, 0, 0, 0), 0);
    EXPECT_EQ(wlcsm_mngr_restart(0, 0, 0, 0), 1);
    EXPECT_EQ(wlcsm_mngr_restart(0, 0, 0, 0), 9);
    EXPECT_EQ(wlcsm_mngr_restart(0, 0, 0, 0), 9);
}

TEST_F(ScriptedPlatform, ServesVariablesOfEachIndex) {
    char value[WLCSM_VALUE_SIZE] = "before";
    EXPECT_EQ(wlcsm_mngr_get(0, 0, "name", value), 0);
    EXPECT_STREQ(value, "before");
    platform.setVariableEverywhere("name", "common");
    platform.setVariable(1, 2, "name", "own");
    EXPECT_NE(wlcsm_mngr_get(0, 0, "name", value), 0);
    EXPECT_STREQ(value, "common");
    EXPECT_NE(wlcsm_mngr_ext_get(1, 2, "name", value), 0);
    EXPECT_STREQ(value, "own");
    EXPECT_EQ(wlcsm_nvram_get("absent"), nullptr);
    EXPECT_EQ(wlcsm_nvram_set("key", "text"), 0);
    EXPECT_STREQ(wlcsm_nvram_get("key"), "text");
}

TEST_F(ScriptedPlatform, NoticesAnUnlockWithoutLockAndASecondLock) {
    expectLockMisuse();
    void* handle = nullptr;
    ASSERT_EQ(QuorvelOsCreateMutex("WiFi", &handle), 0U);
    EXPECT_NE(QuorvelOsMutexUnlock(handle), 0U);
    EXPECT_EQ(QuorvelOsMutexLock(handle), 0U);
    EXPECT_TRUE(platform.lockHeld());
    EXPECT_NE(QuorvelOsMutexLock(handle), 0U);
    EXPECT_EQ(platform.lockMisuse().size(), 2U);
    EXPECT_EQ(QuorvelOsMutexUnlock(handle), 0U);
    EXPECT_FALSE(platform.lockHeld());
}

TEST_F(ScriptedPlatform, AnswersCommandsAndFilesFromTheScript) {
    platform.setCommandOutput("wl -i wl0 status", "SSID: \"x\"\n");
    std::FILE* output = popen("wl -i wl0 status", "r");
    ASSERT_NE(output, nullptr);
    char line[64] = "";
    EXPECT_STREQ(fgets(line, sizeof line, output), "SSID: \"x\"\n");
    EXPECT_EQ(fgets(line, sizeof line, output), nullptr);
    EXPECT_EQ(platform.openStreams(), Texts{"wl -i wl0 status"});
    EXPECT_EQ(pclose(output), 0);

    platform.onCommand("wl -i wl0 scanresults > /var/wl0_scanresults", [this] {
        platform.setFile("/var/wl0_scanresults", "one\n");
        return 0;
    });
    EXPECT_EQ(fopen("/var/wl0_scanresults", "r"), nullptr);
    EXPECT_EQ(system("wl -i wl0 scanresults > /var/wl0_scanresults"), 0);
    std::FILE* file = fopen("/var/wl0_scanresults", "r");
    ASSERT_NE(file, nullptr);
    EXPECT_STREQ(fgets(line, sizeof line, file), "one\n");
    EXPECT_EQ(fclose(file), 0);

    std::FILE* written = fopen("/tmp/wl_instances.txt", "w");
    ASSERT_NE(written, nullptr);
    (void)fprintf(written, "%d", 3);
    EXPECT_EQ(fclose(written), 0);
    EXPECT_EQ(platform.file("/tmp/wl_instances.txt"), "3");

    platform.fail("popen");
    EXPECT_EQ(popen("anything", "r"), nullptr);
    platform.failOpen("/tmp/wl_instances.txt");
    EXPECT_EQ(fopen("/tmp/wl_instances.txt", "w"), nullptr);
}

TEST_F(ScriptedPlatform, CountsSleepsWithoutSleeping) {
    EXPECT_EQ(sleep(5), 0U);
    EXPECT_EQ(usleep(250000), 0);
    EXPECT_EQ(platform.sleeps(), (std::vector<double>{5, 0.25}));
}

TEST_F(ScriptedPlatform, FailsAllocationsOnDemandOnly) {
    void* memory = calloc(4, 4);
    EXPECT_NE(memory, nullptr);
    free(memory);
    platform.fail("calloc");
    memory = calloc(4, 4);
    EXPECT_EQ(memory, nullptr);
    free(memory);
}

void* readTwice(void*) {
    char buffer[16];
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    for (;;) {
        (void)read(descriptor, buffer, sizeof buffer);
    }
}

TEST_F(ScriptedPlatform, TellsForcedCallsFromOthers) {
    platform.failAt("wlcsm_mngr_restart", 2);
    (void)wlcsm_mngr_restart(0, 0, 0, 1);
    (void)wlcsm_mngr_restart(1, 0, 0, 1);
    ASSERT_EQ(platform.calls().size(), 2U);
    EXPECT_FALSE(platform.calls()[0].forced);
    EXPECT_TRUE(platform.calls()[1].forced);
}

TEST_F(ScriptedPlatform, BreaksReadingWhereTheTextEnds) {
    platform.setFile("/tmp/file", "one\ntw");
    platform.breakReading("/tmp/file");
    std::FILE* file = std::fopen("/tmp/file", "r");
    ASSERT_NE(file, nullptr);
    for (int round = 0; round < 2; ++round) {
        char line[16] = {};
        ASSERT_NE(std::fgets(line, sizeof line, file), nullptr);
        EXPECT_STREQ(line, "one\n");
        while (std::fgets(line, sizeof line, file) != nullptr) {
        }
        EXPECT_NE(std::ferror(file), 0);
        EXPECT_EQ(std::feof(file), 0);
        std::rewind(file);
    }
    (void)std::fclose(file);
}

TEST_F(ScriptedPlatform, CountsTheBlocksThatAreNotFreed) {
    const std::size_t before = platform.liveBlocks();
    void* volatile block = std::calloc(1, 8);
    EXPECT_EQ(platform.liveBlocks(), before + 1);
    void* volatile larger = std::realloc(block, 4096);
    EXPECT_EQ(platform.liveBlocks(), before + 1);
    std::free(larger);
    EXPECT_EQ(platform.liveBlocks(), before);
}

TEST_F(ScriptedPlatform, EndsTheReaderWhenTheScriptedReadsAreUsedUp) {
    platform.scriptReads({{"abc", 0, 0}, {"", -1, 5}});
    platform.runInThread(readTwice, nullptr);
    EXPECT_EQ(platform.callCount("read"), 3U);
}

TEST_F(ScriptedPlatform, RunsABodyInAProcessThatHasSeenNothing) {
    ++loadsSeen;
    EXPECT_TRUE(runFresh([] {
        EXPECT_EQ(loadsSeen, 0);
        ++loadsSeen;
    }));
    EXPECT_TRUE(runFresh([] { EXPECT_EQ(loadsSeen, 0); }));
    EXPECT_EQ(loadsSeen, 1);
}

}  // namespace

}  // namespace quorvel::scripted
