// A board in the folder sandbox: kept to its state folder without namespaces.

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>

#include "common/BoardProcesses.h"
#include "common/UnixAddress.h"
#include "tests/gateway/board/CommandRun.h"
#include "tests/gateway/framework/LifeLine.h"

namespace {

namespace fs = std::filesystem;

const std::vector<std::string> kFolder{"--sandbox", "folder"};

class FolderBoard : public testing::Test {
  protected:
    [[nodiscard]] Outcome onBoard(const std::string& script) const {
        return run(boardScript(state_, script, kFolder));
    }
    [[nodiscard]] std::string root() const {
        return state_ + "/board";
    }

    ScratchFolder folder_;
    std::string state_ = folder_.path() + "/state";
};

TEST_F(FolderBoard, HasItsPlacesInTheStateFolder) {
    const Outcome outcome = onBoard(
        "echo $QUORVEL_CONFIG $QUORVEL_BOARD $QUORVEL_STATE; echo $QUORVEL_WLAN_SOCKET $QUORVEL_NOTIFY_SOCKET; tail -2 "
        "$QUORVEL_CONFIG; ls -d $TEST_PLUGIN");
    EXPECT_EQ(outcome.out, root() + "/etc/host.ini " + root() + "/etc/board.json " + state_ + "\n" + root() +
                               "/var/run/wlmngr2.socket " + root() +
                               "/tmp/notify-socket\nprogram = wlmngr2\narguments = -c" + state_ +
                               "/quorvel-dm-wifi.xml\n" + root() + "/lib/libquorvel_wifi.so\n")
        << outcome.err;
}

TEST_F(FolderBoard, FindsItsToolsOnThePath) {
    EXPECT_EQ(onBoard("i2cget -f -y 0x00 0x24 0x00 w; command -v lspci").out, "0x0030\n" + root() + "/bin/lspci\n");
}

TEST_F(FolderBoard, WorksInItsFolderOnTheMachinesRoot) {
    EXPECT_EQ(onBoard("pwd; [ -e " + folder_.path() + " ] && echo there").out, root() + "\nthere\n");
}

TEST_F(FolderBoard, BeginsWithEmptyPlacesAndLeavesNone) {
    const std::string script =
        "find tmp var interfaces 2> /dev/null | sort | tr '\\n' ' '; echo x > tmp/mark; insmod wl.ko";
    const std::string empty = "tmp var var/lib var/log var/run var/tmp ";
    EXPECT_EQ(onBoard(script).out, empty);
    EXPECT_FALSE(fs::exists(root()));
    EXPECT_EQ(onBoard(script).out, empty) << "a power cycle empties them";
    // A board whose processes outside were killed could not remove them.
    fs::create_directories(root() + "/tmp/left");
    EXPECT_EQ(onBoard(script).out, empty);
}

TEST_F(FolderBoard, HasCountersInsteadOfInterfacesOnceTheDriverIsLoaded) {
    const Outcome outcome = onBoard("insmod wl.ko && strings -n 3 $QUORVEL_INTERFACES | head -3; insmod wl.ko");
    EXPECT_EQ(outcome.out, "wl0\nwl0.1\nwl0.2\n");
    EXPECT_EQ(outcome.err, "insmod: cannot load wl.ko: interface wl0: File exists\n");
}

TEST_F(FolderBoard, FindsTheTasksOfNoOtherBoard) {
    if (emulated()) GTEST_SKIP() << "the emulator lets no process take in orphans";
    fs::create_directories(state_);
    const LifeLine line(state_ + "/line");
    CommandRun other(boardScript(
        state_, "insmod wlcsm.ko && exec 3> " + line.path() + " && printf u >&3 && exec sleep 1000", kFolder));
    ASSERT_TRUE(line.waitForByte());
    state_ = folder_.path() + "/second";
    const Outcome own = onBoard("insmod wlcsm.ko; insmod wlcsm.ko");
    EXPECT_EQ(own.err, "insmod: cannot load wlcsm.ko: wler_thread0 runs already\n");
}

TEST_F(FolderBoard, EndsWithItsHostsStatusAndTakesEverythingAlong) {
    fs::create_directories(state_);
    const LifeLine line(state_ + "/line");
    const std::string go = state_ + "/go";
    ASSERT_EQ(mkfifo(go.c_str(), 0600), 0);
    std::vector<std::string> words = boardScript(
        state_, "(exec 3> " + line.path() + "; printf u >&3; exec setsid sleep 1000) & read x < " + go + "; exit 5",
        kFolder);
    // The emulator does not let a process take in orphans, unless it is the first of its namespace.
    if (emulated()) words = inNamespaces({"--pid", "--fork", "--mount-proc"}, words);
    CommandRun board(words);
    ASSERT_TRUE(line.waitForByte());
    const int writer = open(go.c_str(), O_WRONLY | O_CLOEXEC);
    close(writer);
    EXPECT_EQ(board.finish().status, 5);
    EXPECT_TRUE(line.waitForEnd());
}

// A board with a process that has left its parents behind, and a line that shows when the last has ended.
class KilledFolderBoard : public FolderBoard {
  protected:
    void SetUp() override {
        if (emulated()) GTEST_SKIP() << "the emulator lets no process take in orphans";
        fs::create_directories(state_);
        line_ = std::make_unique<LifeLine>(state_ + "/line");
        board_ = std::make_unique<CommandRun>(
            boardScript(state_,
                        "exec 3> " + line_->path() + "; (setsid sleep 1000 &); insmod wlcsm.ko; echo $$ > " + state_ +
                            "/host; printf u >&3; "
                            "exec sleep 1000",
                        kFolder));
        ASSERT_TRUE(line_->waitForByte());
        first_ = onlyChildOf(board_->pid());
        // The host and, with orphans of its own, the board's first process.
        ASSERT_EQ(quorvel::common::childrenOf(first_).size(), 4U) << "host, orphan and two tasks";
    }
    static pid_t onlyChildOf(pid_t process) {
        const std::vector<pid_t> children = quorvel::common::childrenOf(process);
        EXPECT_EQ(children.size(), 1U);
        return children.empty() ? 0 : children.front();
    }

    std::unique_ptr<LifeLine> line_;
    std::unique_ptr<CommandRun> board_;
    pid_t first_ = 0;
};

TEST_F(KilledFolderBoard, GoesOffWithTheProcessOutside) {
    ASSERT_EQ(kill(board_->pid(), SIGKILL), 0);
    EXPECT_TRUE(line_->waitForEnd());
}

TEST_F(KilledFolderBoard, GoesOffWithItsFirstProcess) {
    ASSERT_EQ(kill(first_, SIGKILL), 0);
    EXPECT_TRUE(line_->waitForEnd());
    EXPECT_EQ(board_->finish().status, 128 + SIGKILL);
    EXPECT_FALSE(fs::exists(root()));
}

TEST_F(KilledFolderBoard, GoesOffWithItsHost) {
    pid_t host = 0;
    std::ifstream(state_ + "/host") >> host;
    ASSERT_GT(host, 0);
    ASSERT_EQ(kill(host, SIGKILL), 0);
    EXPECT_TRUE(line_->waitForEnd());
    EXPECT_EQ(board_->finish().status, 128 + SIGKILL);
}

TEST_F(FolderBoard, IsChosenWhereNamespacesAreRefused) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can take the namespaces away";
    // An ordinary user below a limit of none.
    const std::vector<std::string> words =
        boardScript("/mnt/state", "echo $TEST_NOTICE; echo ${QUORVEL_INTERFACES##*/}", {"--sandbox", "automatic"});
    const std::string script =
        "mount -t tmpfs none /mnt && echo 0 > /proc/sys/user/max_user_namespaces && exec setpriv "
        "--bounding-set=-all --inh-caps=-all \"$@\"";
    std::vector<std::string> limited{"sh", "-c", script, "sh"};
    limited.insert(limited.end(), words.begin(), words.end());
    const Outcome outcome = run(inNamespaces({"--mount"}, limited));
    EXPECT_EQ(outcome.out,
              "namespaces are refused here, so the board is kept to its folder (--sandbox namespaces says why)\n"
              "interfaces\n")
        << outcome.err;
}

TEST_F(FolderBoard, CanBePoweredUpAgain) {
    EXPECT_EQ(onBoard("exit 0").status, 0);
    EXPECT_EQ(onBoard("lspci").status, 0);
}

TEST_F(FolderBoard, NeedsAStateFolderThatASocketFitsIn) {
    const std::size_t longest = quorvel::common::kMaxSocketPath - std::string("/board/var/run/wlmngr2.socket").size();
    state_ += std::string(longest - state_.size(), 'x');
    EXPECT_EQ(onBoard("exit 0").status, 0);
    state_ += "xy";
    const Outcome outcome = onBoard("exit 0");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "board_command: The path of the state folder " + state_ +
                               " is 2 characters too long for a socket in it (at most 107); name a shorter one.\n");
}

}  // namespace
