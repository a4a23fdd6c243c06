// A board without a sandbox.

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>

#include "tests/gateway/board/CommandRun.h"
#include "tests/gateway/framework/LifeLine.h"

namespace {

class OpenBoard : public testing::Test {
  protected:
    [[nodiscard]] Outcome onBoard(const std::string& script) const {
        return run(boardScript(state_, script, {"--no-sandbox"}));
    }

    ScratchFolder folder_;
    std::string state_ = folder_.path() + "/state";
};

TEST_F(OpenBoard, HasItsPlacesInTheStateFolder) {
    const Outcome outcome = onBoard(
        "echo $QUORVEL_CONFIG $QUORVEL_BOARD $QUORVEL_STATE; echo $QUORVEL_WLAN_SOCKET $QUORVEL_NOTIFY_SOCKET; tail -2 "
        "$QUORVEL_CONFIG; ls -d $TEST_PLUGIN");
    EXPECT_EQ(outcome.out, state_ + "/board/etc/host.ini " + state_ + "/board/etc/board.json " + state_ + "\n" +
                               state_ +
                               "/board/run/wlmngr2.socket /tmp/notify-socket\nprogram = wlmngr2\narguments = -c" +
                               state_ + "/quorvel-dm-wifi.xml\n" + state_ + "/board/lib/libquorvel_wifi.so\n")
        << outcome.err;
}

TEST_F(OpenBoard, FindsItsToolsOnThePath) {
    EXPECT_EQ(onBoard("i2cget -f -y 0x00 0x24 0x00 w; command -v lspci").out,
              "0x0030\n" + state_ + "/board/bin/lspci\n");
}

TEST_F(OpenBoard, KeepsTheWorkingFolderAndTheMachinesPlaces) {
    EXPECT_EQ(onBoard("pwd; [ -e " + folder_.path() + " ] && echo there").out,
              std::filesystem::current_path().string() + "\nthere\n");
}

TEST_F(OpenBoard, LeavesTheMachinesInterfacesAlone) {
    const Outcome outcome = onBoard("insmod wl.ko");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "insmod: cannot load wl.ko: without a sandbox the board has no network interfaces of its own\n");
}

TEST_F(OpenBoard, EndsWithItsHostsStatusAndTakesEverythingAlong) {
    std::filesystem::create_directories(state_);
    const LifeLine line(state_ + "/line");
    const std::string go = state_ + "/go";
    ASSERT_EQ(mkfifo(go.c_str(), 0600), 0);
    std::vector<std::string> words = boardScript(
        state_, "(exec 3> " + line.path() + "; printf u >&3; exec setsid sleep 1000) & read x < " + go + "; exit 5",
        {"--no-sandbox"});
    // The emulator does not let a process take in orphans, unless it is the first of its namespace.
    if (emulated()) words = inNamespaces({"--pid", "--fork", "--mount-proc"}, words);
    CommandRun board(words);
    ASSERT_TRUE(line.waitForByte());
    const int writer = open(go.c_str(), O_WRONLY | O_CLOEXEC);
    close(writer);
    EXPECT_EQ(board.finish().status, 5);
    EXPECT_TRUE(line.waitForEnd());
}

TEST_F(OpenBoard, GoesOffWhenTheProcessOutsideIsKilled) {
    std::filesystem::create_directories(state_);
    const LifeLine line(state_ + "/line");
    CommandRun board(
        boardScript(state_, "exec 3> " + line.path() + "; printf u >&3; exec sleep 1000", {"--no-sandbox"}));
    ASSERT_TRUE(line.waitForByte());
    ASSERT_EQ(kill(board.pid(), SIGKILL), 0);
    EXPECT_TRUE(line.waitForEnd());
}

TEST_F(OpenBoard, CanBePoweredUpAgain) {
    EXPECT_EQ(onBoard("exit 0").status, 0);
    EXPECT_EQ(onBoard("lspci").status, 0);
}

TEST_F(OpenBoard, NeedsAStateFolderThatASocketFitsIn) {
    state_ += std::string(100, 'x');
    const Outcome outcome = onBoard("exit 0");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("too long for a socket"), std::string::npos) << outcome.err;
}

}  // namespace
