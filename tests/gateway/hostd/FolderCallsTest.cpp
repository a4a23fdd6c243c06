// The calls of a plug-in that is kept to a folder, and nobody else's.

#include "gateway/hostd/FolderCalls.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "common/InterfaceCounters.h"
#include "common/UnixListener.h"
#include "gateway/hostd/LedPlaces.h"
#include "gateway/hostd/Plugin.h"
#include "tests/gateway/framework/ScratchFolder.h"

namespace quorvel::hostd {
namespace {

class FolderCalls : public testing::Test {
  protected:
    FolderCalls() {
        for (const char* folder : {"/tmp", "/var"})
            std::filesystem::create_directory(folder_.path() + folder);
        setBoardFolder(folder_.path(), folder_.path() + "/interfaces");
    }
    [[nodiscard]] std::string textOf(const char* reader, const char* of) const {
        std::array<char, 4096> text{};
        auto* const read = plugin_.find<int(const char*, char*, std::size_t)>(reader);
        return read(of, text.data(), text.size()) == 0 ? text.data() : "(none)";
    }

    ScratchFolder folder_;
    Plugin plugin_{QUORVEL_FIXED_PLACES, folderCalls()};
};

TEST_F(FolderCalls, OpenTheBoardsOwnFiles) {
    (void)folder_.write("tmp/quorvel-fixed-place", "the board's\n");
    EXPECT_EQ(textOf("fixedPlacesRead", "/tmp/quorvel-fixed-place"), "the board's\n");
    EXPECT_EQ(std::fopen("/tmp/quorvel-fixed-place", "r"), nullptr) << "the host process's own calls are not led";
    EXPECT_EQ(textOf("fixedPlacesRead", "/tmp/quorvel-no-such-place"), "(none)");
    EXPECT_EQ(textOf("fixedPlacesRead", "/dev/null"), "");
    EXPECT_NE(textOf("fixedPlacesRead", "/proc/version"), "(none)");
}

TEST_F(FolderCalls, RunCommandsOnTheBoardsOwnFiles) {
    auto* const run = plugin_.find<int(const char*)>("fixedPlacesRun");
    EXPECT_EQ(run("echo x > /tmp/quorvel-fixed-place; echo y >\"/var/quorvel fixed place\""), 0);
    EXPECT_EQ(folder_.read("tmp/quorvel-fixed-place"), "x\n");
    EXPECT_EQ(folder_.read("var/quorvel fixed place"), "y\n");
    EXPECT_EQ(textOf("fixedPlacesReadCommand", "cat /tmp/quorvel-fixed-place"), "x\n");
    EXPECT_NE(access("/tmp/quorvel-fixed-place", F_OK), 0);
    EXPECT_NE(run(nullptr), 0) << "there is a shell";
}

TEST_F(FolderCalls, ConnectToTheBoardsOwnSockets) {
    auto* const reach = plugin_.find<int(const char*)>("fixedPlacesConnect");
    EXPECT_EQ(reach("/tmp/quorvel-fixed-socket"), -1);
    std::string problem;
    const common::Descriptor listener = common::listenOn(folder_.path() + "/tmp/quorvel-fixed-socket", problem);
    ASSERT_TRUE(listener) << problem;
    EXPECT_EQ(reach("/tmp/quorvel-fixed-socket"), 0);
    setBoardFolder(folder_.path() + "/" + std::string(100, 'x'), "");
    EXPECT_EQ(reach("/tmp/quorvel-fixed-socket"), -1);
}

TEST_F(FolderCalls, ReadTheBoardsOwnCounters) {
    EXPECT_EQ(textOf("fixedPlacesRead", "/proc/net/dev").find("wl0"), std::string::npos);
    ASSERT_EQ(common::InterfaceCounters::create(folder_.path() + "/interfaces", {"wl0"}), 0);
    common::InterfaceCounters(folder_.path() + "/interfaces").count("wl0", {1234, 5, 678, 9});
    const std::string text = textOf("fixedPlacesRead", "/proc/net/dev");
    EXPECT_NE(text.find("\n   wl0:    1234       5    0    0    0     0          0         0      678       9    0 "),
              std::string::npos)
        << text;
}

TEST_F(FolderCalls, CountTheCallsThatTheyTakeThePlaceOf) {
    void* const library = dlopen(QUORVEL_FIXED_PLACES, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(supply(library, folderCalls()), 4U);
    EXPECT_EQ(importOf(library, "fopen"), folderCalls().front().function);
    EXPECT_EQ(importOf(library, "quorvelNoSuchCall"), nullptr);
    (void)dlclose(library);
}

unsigned otherSleep(unsigned seconds) {
    return seconds;
}

TEST_F(FolderCalls, NeedAPluginThatSleepsOnTheBoard) {
    EXPECT_THROW(plugin_.requireSleep(otherSleep), std::runtime_error);
    void* const library = dlopen(QUORVEL_FIXED_PLACES, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    const std::array calls{Supplied{"sleep", reinterpret_cast<void*>(otherSleep)}};
    EXPECT_EQ(supply(library, calls), 1U);
    EXPECT_NO_THROW(plugin_.requireSleep(otherSleep));
    EXPECT_EQ(plugin_.find<unsigned(unsigned)>("fixedPlacesSleep")(7), 7U);
    (void)dlclose(library);
}

TEST(LedPlaces, AreTheFoldersOfTheBoard) {
    const LedPlaces places("/s/board");
    EXPECT_EQ(places.path("/tmp/lspci"), "/s/board/tmp/lspci");
    EXPECT_EQ(places.path("/var"), "/s/board/var");
    for (const char* other : {"/variable", "/tmpfs/x", "tmp/x", "/etc/tmp/x", "/proc/self/stat", ""})
        EXPECT_EQ(places.path(other), other);
}

TEST(LedPlaces, AreFoundInCommands) {
    const LedPlaces places("/s/board");
    EXPECT_EQ(places.command("wl -i wl0 scanresults > /var/wl0_scanresults"),
              "wl -i wl0 scanresults > /s/board/var/wl0_scanresults");
    EXPECT_EQ(places.command("lspci>/tmp/lspci;cat /tmp/a /var/b"),
              "lspci>/s/board/tmp/lspci;cat /s/board/tmp/a /s/board/var/b");
    EXPECT_EQ(places.command("--file=/tmp/x '/tmp/y' \"/var/z\""),
              "--file=/s/board/tmp/x '/s/board/tmp/y' \"/s/board/var/z\"");
    for (const char* other : {"insmod wl.ko > /dev/null", "ls /etc/tmp/x ../tmp /variable ./var/x ~/tmp $HOME/tmp", ""})
        EXPECT_EQ(places.command(other), other);
}

TEST(LedPlaces, SurviveTheShellWhateverTheirFolderIsCalled) {
    const ScratchFolder scratch;
    const std::string root = scratch.path() + "/it's \"my\" $HOME `x` \\ folder; &";
    std::filesystem::create_directories(root + "/tmp");
    const LedPlaces places(root);
    for (const char* command : {"echo x > /tmp/a", "echo x > \"/tmp/a\"", "echo x > '/tmp/a'"}) {
        EXPECT_EQ(std::system(places.command(command).c_str()), 0) << places.command(command);
        EXPECT_TRUE(std::filesystem::remove(root + "/tmp/a")) << places.command(command);
    }
}

}  // namespace
}  // namespace quorvel::hostd
