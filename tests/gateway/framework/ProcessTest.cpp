#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <quorvel.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include "gateway/framework/HostControl.h"
#include "tests/gateway/framework/LifeLine.h"
#include "tests/gateway/framework/QuietHost.h"
#include "tests/gateway/framework/ScratchFolder.h"

namespace {

SpawnInfo infoOf(const std::string& program, const std::string& arguments) {
    SpawnInfo info{};
    program.copy(info.program, sizeof info.program - 1);
    arguments.copy(info.arguments, sizeof info.arguments - 1);
    return info;
}

pid_t pidOf(const ProcessRecord& record) {
    pid_t pid = 0;
    std::memcpy(&pid, record.bytes, sizeof pid);
    return pid;
}

class HostProcess : public QuietHost {
  protected:
    // A script that writes a byte to the life line and then runs `rest`.
    [[nodiscard]] SpawnInfo scriptInfo(const std::string& rest) const {
        return infoOf("sh", folder_.write("script", "exec 3>" + line_.path() + "\nprintf u >&3\n" + rest + "\n"));
    }

    ScratchFolder folder_;
    LifeLine line_{folder_.path() + "/line"};
    ProcessRecord record_{};
};

TEST_F(HostProcess, RunsUntilItIsTerminated) {
    SpawnInfo info = scriptInfo("exec sleep 1000");
    ASSERT_EQ(QuorvelOsSpawnProcess(&info, &record_), 0U) << QuorvelHost_LastError();
    ASSERT_TRUE(line_.waitForByte());
    EXPECT_EQ(kill(pidOf(record_), 0), 0);
    EXPECT_EQ(QuorvelOsTerminateProcess(&info, info.arguments), 0U);
    EXPECT_TRUE(line_.waitForEnd());
    EXPECT_EQ(kill(pidOf(record_), 0), -1);
    EXPECT_EQ(errno, ESRCH) << "the process must have been reaped";
}

TEST_F(HostProcess, IsFoundAgainByProgramAndArgumentsOnly) {
    SpawnInfo info = scriptInfo("exec sleep 1000");
    ASSERT_EQ(QuorvelOsSpawnProcess(&info, &record_), 0U);
    SpawnInfo same = infoOf(info.program, info.arguments);
    same.option320 = 1;
    same.option324 = 1;
    SpawnInfo otherArguments = infoOf(info.program, "x");
    SpawnInfo otherProgram = infoOf("bash", info.arguments);
    EXPECT_NE(QuorvelOsTerminateProcess(&otherArguments, otherArguments.arguments), 0U);
    EXPECT_NE(QuorvelOsTerminateProcess(&otherProgram, otherProgram.arguments), 0U);
    EXPECT_EQ(QuorvelOsTerminateProcess(&same, same.arguments), 0U);
    EXPECT_NE(QuorvelOsTerminateProcess(&same, same.arguments), 0U);
}

TEST_F(HostProcess, IsKilledWhenItWillNotEnd) {
    SpawnInfo info = scriptInfo("trap '' TERM; printf t >&3; exec sleep 1000");
    ASSERT_EQ(QuorvelOsSpawnProcess(&info, &record_), 0U);
    ASSERT_TRUE(line_.waitForByte());
    ASSERT_TRUE(line_.waitForByte()) << "the signal must be ignored by now";
    EXPECT_EQ(QuorvelOsTerminateProcess(&info, info.arguments), 0U);
    EXPECT_TRUE(line_.waitForEnd());
}

TEST_F(HostProcess, IsReapedWhenItEndsByItself) {
    SpawnInfo info = scriptInfo("exit 3");
    ASSERT_EQ(QuorvelOsSpawnProcess(&info, &record_), 0U);
    ASSERT_TRUE(line_.waitForByte());
    ASSERT_TRUE(line_.waitForEnd());
    // Nobody calls anything: it goes by itself. Bounded by the test's time limit.
    while (kill(pidOf(record_), 0) == 0)
        std::this_thread::yield();
    EXPECT_EQ(errno, ESRCH);
    EXPECT_NE(QuorvelOsTerminateProcess(&info, info.arguments), 0U);
}

TEST_F(HostProcess, StartedTwiceIsEndedTwice) {
    SpawnInfo info = scriptInfo("exec sleep 1000");
    ProcessRecord second{};
    ASSERT_EQ(QuorvelOsSpawnProcess(&info, &record_), 0U);
    ASSERT_EQ(QuorvelOsSpawnProcess(&info, &second), 0U);
    ASSERT_TRUE(line_.waitForByte());
    ASSERT_TRUE(line_.waitForByte());
    EXPECT_EQ(QuorvelOsTerminateProcess(&info, info.arguments), 0U);
    EXPECT_TRUE(line_.waitForEnd());
    EXPECT_EQ(kill(pidOf(record_), 0), -1);
    EXPECT_EQ(kill(pidOf(second), 0), -1);
}

TEST_F(HostProcess, OutlivesTheThreadThatAskedForIt) {
    SpawnInfo info = scriptInfo("read word < " + folder_.path() + "/go; printf g >&3");
    ASSERT_EQ(mkfifo((folder_.path() + "/go").c_str(), 0600), 0);
    std::thread([&] { ASSERT_EQ(QuorvelOsSpawnProcess(&info, &record_), 0U); }).join();
    ASSERT_TRUE(line_.waitForByte());
    const int go = open((folder_.path() + "/go").c_str(), O_WRONLY);
    ASSERT_GE(go, 0);
    ASSERT_EQ(write(go, "\n", 1), 1);
    EXPECT_TRUE(line_.waitForByte());
    close(go);
}

TEST_F(HostProcess, SplitsItsArgumentTextAtBlanks) {
    SpawnInfo info = scriptInfo("printf '%s,' \"$#\" \"$@\" > " + folder_.path() + "/arguments");
    std::strcat(info.arguments, "  -c/data/x \t second ");
    ASSERT_EQ(QuorvelOsSpawnProcess(&info, &record_), 0U);
    ASSERT_TRUE(line_.waitForByte());
    ASSERT_TRUE(line_.waitForEnd());
    EXPECT_EQ(folder_.read("arguments"), "2,-c/data/x,second,");
}

TEST_F(HostProcess, DoesNotInheritTheHostsDescriptors) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    SpawnInfo info = scriptInfo("exec sleep 1000");
    ASSERT_EQ(QuorvelOsSpawnProcess(&info, &record_), 0U);
    ASSERT_TRUE(line_.waitForByte());
    close(ends[1]);
    // The end of the pipe comes only when nobody else has it open for writing.
    pollfd entry{ends[0], POLLIN, 0};
    EXPECT_EQ(poll(&entry, 1, 0), 1);
    EXPECT_EQ(entry.revents, POLLHUP);
    close(ends[0]);
    EXPECT_EQ(QuorvelOsTerminateProcess(&info, info.arguments), 0U);
}

TEST_F(HostProcess, StartsWithDefaultSignals) {
    const auto before = signal(SIGPIPE, SIG_IGN);
    sigset_t terminate;
    sigemptyset(&terminate);
    sigaddset(&terminate, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &terminate, nullptr);
    SpawnInfo info = scriptInfo("grep -E '^Sig(Blk|Ign)' /proc/self/status > " + folder_.path() + "/signals");
    ASSERT_EQ(QuorvelOsSpawnProcess(&info, &record_), 0U);
    pthread_sigmask(SIG_UNBLOCK, &terminate, nullptr);
    signal(SIGPIPE, before);
    ASSERT_TRUE(line_.waitForByte());
    ASSERT_TRUE(line_.waitForEnd());
    EXPECT_EQ(folder_.read("signals"), "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST_F(HostProcess, ThatDoesNotExistIsReported) {
    for (const char* program : {"/nowhere/wlmngr2", "no-such-program-anywhere"}) {
        SpawnInfo info = infoOf(program, "-c/data/x");
        EXPECT_NE(QuorvelOsSpawnProcess(&info, &record_), 0U);
        EXPECT_NE(std::string(QuorvelHost_LastError()).find(std::string(program) + ": No such file"), std::string::npos)
            << QuorvelHost_LastError();
        EXPECT_NE(QuorvelOsTerminateProcess(&info, info.arguments), 0U);
    }
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child may be left";
}

// The PATH of this process for the life of the object.
class Path {
  public:
    explicit Path(const std::string& path) {
        (void)setenv("PATH", path.c_str(), 1);
    }
    ~Path() {
        (void)setenv("PATH", before_.c_str(), 1);
    }
    Path(const Path&) = delete;
    Path& operator=(const Path&) = delete;

  private:
    std::string before_ = std::getenv("PATH") == nullptr ? "/bin:/usr/bin" : std::getenv("PATH");
};

TEST_F(HostProcess, ThatIsInNoSearchedFolderIsReportedAsMissing) {
    const std::string closed = folder_.path() + "/closed";
    ASSERT_EQ(mkdir(closed.c_str(), 0), 0);
    const Path path(closed + ":/nowhere:" + folder_.path());
    SpawnInfo info = infoOf("no-such-program-anywhere", "");
    EXPECT_NE(QuorvelOsSpawnProcess(&info, &record_), 0U);
    EXPECT_NE(std::string(QuorvelHost_LastError()).find("no-such-program-anywhere: No such file"), std::string::npos)
        << QuorvelHost_LastError();
}

TEST_F(HostProcess, ThatMayNotBeExecutedIsReportedUnlessAnotherFolderHasIt) {
    (void)folder_.write("program", "#!/bin/sh\nprintf u > " + line_.path() + "\n");
    const std::string other = folder_.path() + "/other";
    ASSERT_EQ(mkdir(other.c_str(), 0700), 0);
    const Path path(folder_.path() + ":" + other);
    SpawnInfo info = infoOf("program", "");
    EXPECT_NE(QuorvelOsSpawnProcess(&info, &record_), 0U);
    EXPECT_NE(std::string(QuorvelHost_LastError()).find("program: Permission denied"), std::string::npos)
        << QuorvelHost_LastError();
    std::filesystem::copy_file(folder_.path() + "/program", other + "/program");
    std::filesystem::permissions(other + "/program", std::filesystem::perms::owner_all);
    ASSERT_EQ(QuorvelOsSpawnProcess(&info, &record_), 0U) << QuorvelHost_LastError();
    EXPECT_TRUE(line_.waitForByte());
}

TEST_F(HostProcess, ThatMayNotBeExecutedIsReported) {
    SpawnInfo info = infoOf(folder_.write("plain", "text"), "");
    EXPECT_NE(QuorvelOsSpawnProcess(&info, &record_), 0U);
    EXPECT_NE(std::string(QuorvelHost_LastError()).find("Permission denied"), std::string::npos);
}

TEST_F(HostProcess, CallsRefuseBadArguments) {
    SpawnInfo empty{};
    SpawnInfo endless{};
    std::memset(endless.program, 'p', sizeof endless.program);
    EXPECT_NE(QuorvelOsSpawnProcess(nullptr, &record_), 0U);
    EXPECT_NE(QuorvelOsSpawnProcess(&empty, nullptr), 0U);
    EXPECT_NE(QuorvelOsSpawnProcess(&empty, &record_), 0U);
    EXPECT_NE(QuorvelOsSpawnProcess(&endless, &record_), 0U);
    EXPECT_NE(QuorvelOsTerminateProcess(nullptr, empty.arguments), 0U);
    EXPECT_NE(QuorvelOsTerminateProcess(&empty, empty.arguments), 0U);
}

// Starts `info` in a host process of its own, which ends as `end` says once the program is up.
template <typename End>
void runHost(SpawnInfo info, const LifeLine& line, End end) {
    const pid_t host = fork();
    ASSERT_GE(host, 0);
    if (host == 0) {
        ProcessRecord record{};
        if (QuorvelOsSpawnProcess(&info, &record) != 0 || !line.waitForByte()) _exit(9);
        end();
    }
    int status = 0;
    ASSERT_EQ(waitpid(host, &status, 0), host);
    ASSERT_FALSE(WIFEXITED(status) && WEXITSTATUS(status) == 9);
}

TEST_F(HostProcess, DiesWithItsHost) {
    runHost(scriptInfo("trap '' TERM HUP; exec sleep 1000"), line_, [] { _exit(0); });
    EXPECT_TRUE(line_.waitForEnd());
}

TEST_F(HostProcess, DiesWhenItsHostCrashes) {
    runHost(scriptInfo("exec sleep 1000"), line_, [] { (void)raise(SIGKILL); });
    EXPECT_TRUE(line_.waitForEnd());
}

TEST(HostTaskLookup, FindsATaskByName) {
    std::array<char, 16> before{};
    ASSERT_EQ(prctl(PR_GET_NAME, before.data()), 0);
    ASSERT_EQ(prctl(PR_SET_NAME, "wler (x) test"), 0);
    EXPECT_EQ(QuorvelUtilGetPidByName("wler (x) test"), getpid());
    EXPECT_LE(QuorvelUtilGetPidByName("wler (x) tes"), 0);
    ASSERT_EQ(prctl(PR_SET_NAME, "a-name-of-15-ch"), 0);
    EXPECT_EQ(QuorvelUtilGetPidByName("a-name-of-15-characters"), getpid());
    ASSERT_EQ(prctl(PR_SET_NAME, before.data()), 0);
}

TEST(HostTaskLookup, DoesNotFindOneThatHasEnded) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        (void)prctl(PR_SET_NAME, "wler-ended-test");
        _exit(0);
    }
    siginfo_t ended{};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT), 0);
    EXPECT_LE(QuorvelUtilGetPidByName("wler-ended-test"), 0);
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
}

TEST(HostTaskLookup, FindsNothingForNoName) {
    EXPECT_LE(QuorvelUtilGetPidByName(nullptr), 0);
    EXPECT_LE(QuorvelUtilGetPidByName(""), 0);
    EXPECT_LE(QuorvelUtilGetPidByName("no-such-task"), 0);
}

}  // namespace
