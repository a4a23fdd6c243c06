// A board, powered up for real in namespaces of its own.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <sstream>

#include "tests/gateway/board/CommandRun.h"
#include "tests/gateway/framework/LifeLine.h"

namespace {

namespace fs = std::filesystem;

std::string textOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

class BoardOn : public testing::Test {
  protected:
    void SetUp() override {
        const Outcome outcome = run(boardScript(state_, "exit 0"));
        if (outcome.err.find("namespaces cannot be created") != std::string::npos)
            GTEST_SKIP() << "NOT TESTED, this machine forbids it: " << outcome.err;
        ASSERT_EQ(outcome.status, 0) << outcome.err;
    }
    [[nodiscard]] Outcome onBoard(const std::string& script, const std::vector<std::string>& extra = {}) const {
        return run(boardScript(state_, script, extra));
    }

    ScratchFolder folder_;
    std::string state_ = folder_.path() + "/state";
};

TEST_F(BoardOn, RunsTheCommandAndEndsWithItsStatus) {
    EXPECT_EQ(onBoard("exit 0").status, 0);
    EXPECT_EQ(onBoard("exit 7").status, 7);
    EXPECT_EQ(onBoard("kill -9 $$").status, 128 + SIGKILL);
}

TEST_F(BoardOn, HasEmptyPlacesOfItsOwn) {
    const Outcome outcome = onBoard(
        "ls -A /tmp /var/run; echo marked > /tmp/quorvel-board-mark; echo marked > /var/tmp/quorvel-board-mark; cat "
        "/tmp/quorvel-board-mark");
    EXPECT_EQ(outcome.out, "/tmp:\n\n/var/run:\nmarked\n") << outcome.err;
    EXPECT_FALSE(fs::exists("/tmp/quorvel-board-mark"));
    EXPECT_FALSE(fs::exists("/var/tmp/quorvel-board-mark"));
    EXPECT_NE(onBoard("cat /tmp/quorvel-board-mark").status, 0) << "a power cycle empties them";
}

TEST_F(BoardOn, KeepsItsStateFolderOverAPowerCycle) {
    EXPECT_EQ(onBoard("echo kept > /data/file").status, 0);
    EXPECT_EQ(onBoard("cat /data/file").out, "kept\n");
    EXPECT_EQ(textOf(state_ + "/file"), "kept\n");
}

TEST_F(BoardOn, CannotChangeTheMachine) {
    const Outcome outcome = onBoard(
        "for place in / /usr /etc /root /home /opt /run /board /board/bin /board/etc /dev/shm; do"
        "  if [ -d $place ] && touch $place/quorvel-board-mark 2> /dev/null; then echo $place; fi; done;"
        "for file in /board/bin/lspci /board/lib/libquorvel.so /board/etc/host.ini; do"
        "  if : 2> /dev/null >> $file; then echo $file; fi; done");
    EXPECT_EQ(outcome.out, "/dev/shm\n") << outcome.err;
    for (const char* place : {"/", "/usr/", "/etc/", "/root/", "/home/", "/opt/", "/run/", "/dev/shm/"})
        EXPECT_NE(access((std::string(place) + "quorvel-board-mark").c_str(), F_OK), 0) << place;
}

TEST_F(BoardOn, LeavesTheMachinesMountsAndInterfacesAlone) {
    const std::string mounts = textOf("/proc/self/mountinfo");
    const auto interfaces = [] {
        std::set<std::string> names;
        for (const std::string& line : linesOf(textOf("/proc/net/dev")))
            names.insert(line.substr(0, line.find(':')));
        return names;
    };
    const std::set<std::string> before = interfaces();
    EXPECT_EQ(onBoard("insmod wl.ko && insmod wlcsm.ko && mount -t tmpfs x /mnt").status, 0);
    EXPECT_EQ(textOf("/proc/self/mountinfo"), mounts);
    EXPECT_EQ(interfaces(), before);
}

TEST_F(BoardOn, ShowsFoldersThatWereAskedForWritable) {
    // Below a place that the board has for itself there is nothing to show.
    EXPECT_NE(onBoard("touch " + folder_.path() + "/mark", {"--writable", folder_.path()}).status, 0);
    // Every other place of the machine may be one that the user cannot write, so the test mounts a folder of its own.
    const auto onBoardWithFolder = [this](const std::vector<std::string>& extra) {
        std::vector<std::string> words{
            "sh", "-c", "mount -t tmpfs folder /mnt && mkdir /mnt/asked && \"$@\" && ls /mnt/asked", "sh"};
        const std::vector<std::string> board = boardScript(state_, "touch /mnt/asked/mark", extra);
        words.insert(words.end(), board.begin(), board.end());
        return run(inNamespaces({"--mount"}, words));
    };
    EXPECT_NE(onBoardWithFolder({}).status, 0);
    const Outcome asked = onBoardWithFolder({"--writable", "/mnt/asked"});
    EXPECT_EQ(asked.status, 0) << asked.err;
    EXPECT_EQ(asked.out, "mark\n");
}

TEST_F(BoardOn, TellsItsPlacesInTheEnvironment) {
    const Outcome outcome = onBoard(
        "echo $QUORVEL_CONFIG $QUORVEL_BOARD $QUORVEL_STATE $QUORVEL_WLAN_SOCKET $QUORVEL_NOTIFY_SOCKET; echo "
        "${PATH%%:*} "
        "${LD_LIBRARY_PATH%%:*}; echo $TEST_PLUGIN $TEST_HOST_STATE; pwd");
    EXPECT_EQ(outcome.out,
              "/board/etc/host.ini /board/etc/board.json /data /var/run/wlmngr2.socket /tmp/notify-socket\n/board/bin "
              "/board/lib\n/board/lib/libquorvel_wifi.so " +
                  state_ + "\n/\n");
}

TEST_F(BoardOn, CarriesItsDescriptionAndConfiguration) {
    EXPECT_EQ(onBoard("cat /board/etc/board.json").out, textOf(BOARD_TEST_PROGRAMS "/boards/tri-band.json"));
    EXPECT_EQ(
        onBoard("cat /board/etc/host.ini").out,
        "# The host framework's configuration on this board.\n[Device.WiFi]\nWL_Driver = wl.ko\nWLCSM_Driver = "
        "wlcsm.ko\n\n[Device.WiFi.Daemon]\nprogram = /board/bin/wlmngr2\narguments = -c/data/quorvel-dm-wifi.xml\n");
    EXPECT_EQ(onBoard("cat /board/etc/host.ini", {"--configuration", folder_.write("own.ini", "[Own]\n")}).out,
              "[Own]\n");
}

TEST_F(BoardOn, AnswersTheStartUpCommands) {
    const Outcome outcome =
        onBoard("i2cget -f -y 0x00 0x24 0x00 w > /tmp/i2cget; lspci > /tmp/lspci; cat /tmp/i2cget /tmp/lspci");
    const std::vector<std::string> lines = linesOf(outcome.out);
    ASSERT_GT(lines.size(), 4U) << outcome.err;
    EXPECT_EQ(lines[0], "0x0030");
    for (const std::string& line : lines)
        EXPECT_LT(line.size(), 63U) << line;
}

TEST_F(BoardOn, HasInterfacesOnceTheDriverIsLoaded) {
    EXPECT_EQ(onBoard("cut -d: -f1 /proc/net/dev | tail -n +3 | tr -d ' '").out, "lo\n");
    const Outcome outcome = onBoard(
        "insmod wl.ko > /dev/null && grep -c ' *wl[0-2]\\(\\.[1-7]\\)\\?:' /proc/net/dev && cat "
        "/sys/class/net/wl0/address /sys/class/net/wl2.7/address /sys/class/net/wl1.3/carrier");
    const std::vector<std::string> lines = linesOf(outcome.out);
    ASSERT_EQ(lines.size(), 4U) << outcome.out << outcome.err;
    EXPECT_EQ(lines[0], "24");
    EXPECT_EQ(lines[1], "02:51:76:10:00:10");
    EXPECT_NE(lines[2], lines[1]);
    EXPECT_EQ(lines[3], "1");
}

TEST_F(BoardOn, CountsTrafficWhereItPassesAndNothingElse) {
    // Through the state folder: where the program was built may not be seen on a board.
    std::vector<std::string> sender = builtProgram("board_send_frame");
    fs::copy_file(sender.back(), state_ + "/send_frame");
    sender.back() = "/data/send_frame";
    std::string call;
    for (const std::string& word : sender)
        call += word + " ";
    const Outcome outcome =
        onBoard("insmod wl.ko; " + call + "air0.2 100; " + call + "air0.2 60; " + call +
                "wl1 80; awk '/wl/ && ($2 || $3 || $10 || $11) {print $1, $2, $3, $10, $11}' /proc/net/dev");
    EXPECT_EQ(outcome.out, "wl0.2: 160 2 0 0\nwl1: 0 0 80 1\n") << outcome.err;
}

TEST_F(BoardOn, RefusesToLoadADriverTwiceOrAnUnknownOne) {
    EXPECT_EQ(onBoard("insmod wl.ko; insmod wl.ko").status, 1);
    EXPECT_EQ(onBoard("insmod wlcsm.ko; insmod wlcsm.ko").status, 1);
    const Outcome outcome = onBoard("insmod other.ko");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "insmod: cannot load other.ko: this board has the modules wl.ko and wlcsm.ko\n");
}

TEST_F(BoardOn, HasDriverTasksThatOutliveTheirLoading) {
    const Outcome outcome = onBoard(
        "insmod wlcsm.ko > /dev/null; cat /proc/[0-9]*/comm | grep wler; for id in $(grep -l wler_thread "
        "/proc/[0-9]*/comm | "
        "tr -dc '0-9\\n'); do cut -d' ' -f4 /proc/$id/stat; done");
    EXPECT_EQ(outcome.out, "wler_thread0\nwler_thread1\n1\n1\n") << outcome.err;
}

TEST_F(BoardOn, HoldsNobodysOutputOpenThroughItsDriverTasks) {
    EXPECT_EQ(onBoard("echo $(insmod wlcsm.ko 2>&1)loaded").out, "loaded\n");
}

TEST_F(BoardOn, ReapsOrphans) {
    // The orphan ends by itself; its process id is free as soon as somebody has reaped it. Bounded by the test's time
    // limit.
    const Outcome outcome = onBoard("id=$(sh -c 'true & echo $!'); while [ -e /proc/$id ]; do :; done; echo gone");
    EXPECT_EQ(outcome.out, "gone\n") << outcome.err;
}

TEST_F(BoardOn, SeesNoProcessesButItsOwn) {
    // The first process and the shell, which counts without starting another.
    EXPECT_EQ(onBoard("set -- /proc/[0-9]*; echo $#").out, "2\n");
}

// A board that is held on.
class BoardHeldOn : public BoardOn {
  protected:
    void SetUp() override {
        BoardOn::SetUp();
        if (!IsSkipped() && !HasFatalFailure()) line_ = std::make_unique<LifeLine>(state_ + "/line");
    }

    std::unique_ptr<LifeLine> line_;
};

constexpr const char* kHold = "exec 3> /data/line; printf u >&3; sleep 1000 & wait";

TEST_F(BoardHeldOn, GoesOffWhenTheProcessOutsideIsKilled) {
    CommandRun board(boardScript(state_, std::string("insmod wlcsm.ko; setsid sleep 1000 3> /data/line & ") + kHold));
    ASSERT_TRUE(line_->waitForByte());
    ASSERT_EQ(kill(board.pid(), SIGKILL), 0);
    EXPECT_TRUE(line_->waitForEnd());
    EXPECT_EQ(board.finish().status, 128 + SIGKILL);
    EXPECT_EQ(onBoard("echo on again").out, "on again\n");
}

TEST_F(BoardHeldOn, GoesOffWithItsHostAndTakesEverythingAlong) {
    ASSERT_EQ(mkfifo((state_ + "/go").c_str(), 0600), 0);
    CommandRun board(
        boardScript(state_, "(exec 3> /data/line; printf u >&3; exec setsid sleep 1000) & read x < /data/go"));
    ASSERT_TRUE(line_->waitForByte());
    const int go = open((state_ + "/go").c_str(), O_WRONLY | O_CLOEXEC);
    close(go);
    (void)board.finish();  // the status of the script's read
    EXPECT_TRUE(line_->waitForEnd());
}

TEST_F(BoardHeldOn, IsToldOfATermination) {
    CommandRun board(boardScript(state_, std::string("trap 'exit 9' TERM; ") + kHold));
    ASSERT_TRUE(line_->waitForByte());
    ASSERT_EQ(kill(board.pid(), SIGTERM), 0);
    EXPECT_EQ(board.finish().status, 9);
    EXPECT_TRUE(line_->waitForEnd());
}

TEST_F(BoardHeldOn, HasItsStateFolderToItself) {
    CommandRun board(boardScript(state_, kHold));
    ASSERT_TRUE(line_->waitForByte());
    const Outcome second = onBoard("echo on");
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.out, "");
    EXPECT_NE(second.err.find("The state folder " + state_ + " is in use by the board of process " +
                              std::to_string(board.pid())),
              std::string::npos)
        << second.err;
    EXPECT_EQ(run(boardScript(state_ + "-other", "echo on")).out, "on\n") << "many boards run side by side";
}

TEST_F(BoardHeldOn, GivesItsDescriptorsToTheHostAlone) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    constexpr int kNumber = 9;
    const int copy = dup2(ends[1], kNumber);
    ASSERT_EQ(copy, kNumber);
    CommandRun board(boardScript(state_, std::string("echo through >&9; exec 9>&-; ") + kHold));
    close(ends[1]);
    close(copy);
    ASSERT_TRUE(line_->waitForByte());
    // The host has closed it and stays: the end comes only when nobody else on or around the board keeps it.
    std::array<char, 32> text{};
    EXPECT_EQ(read(ends[0], text.data(), text.size()), 8);
    pollfd entry{ends[0], POLLIN, 0};
    constexpr int kMilliseconds = 20000;
    EXPECT_EQ(poll(&entry, 1, kMilliseconds), 1);
    EXPECT_EQ(entry.revents, POLLHUP);
    close(ends[0]);
}

TEST_F(BoardOn, KeepsItsStatePrivate) {
    struct stat status {};
    ASSERT_EQ(stat(state_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
    ASSERT_EQ(chmod(state_.c_str(), 0755), 0);
    EXPECT_EQ(onBoard("exit 0").status, 0);
    ASSERT_EQ(stat(state_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0700U);
}

TEST_F(BoardOn, FindsItsFilesBelowPlacesThatItHides) {
    // The programs lie below /tmp this time, like a checkout there.
    const std::string programs = folder_.path() + "/programs";
    fs::create_directories(programs);
    fs::copy(BOARD_TEST_PROGRAMS "/boards", programs + "/boards", fs::copy_options::recursive);
    fs::create_directories(programs + "/bin");
    fs::create_directories(programs + "/lib");
    for (const char* file : {"bin/lspci", "bin/i2cget", "lib/libquorvel.so"})
        fs::copy(std::string(BOARD_TEST_PROGRAMS "/") + file, programs + "/" + file);
    const Outcome outcome =
        onBoard("i2cget 0 0x24 0 w; ls /board/lib; ls " + folder_.path(),
                {"--programs", programs, "--plugin", programs + "/lib/libquorvel.so", "--board", "dual-band"});
    EXPECT_TRUE(outcome.out.ends_with("\nlibquorvel.so\nlibquorvel_wifi.so\n")) << outcome.out << outcome.err;
}

}  // namespace
