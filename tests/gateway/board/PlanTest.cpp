#include "gateway/board/Plan.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

using quorvel::board::BoardError;
using quorvel::board::emulatorScript;
using quorvel::board::findStateFolder;
using quorvel::board::Options;

class StateFolderPlace : public testing::Test {
  protected:
    void TearDown() override {
        setenv("HOME", home_.c_str(), 1);
        unsetenv("XDG_STATE_HOME");
    }
    static Options optionsFor(const std::string& board) {
        Options options;
        options.board = board;
        options.programFolder = BOARD_TEST_PROGRAMS;
        return options;
    }

    std::string home_ = std::getenv("HOME") == nullptr ? "/" : std::getenv("HOME");
};

TEST_F(StateFolderPlace, IsTheOneThatIsNamed) {
    Options options = optionsFor("tri-band");
    options.stateFolder = "/somewhere/./state";
    EXPECT_EQ(findStateFolder(options), "/somewhere/state");
}

TEST_F(StateFolderPlace, IsOneOfTheUsersPerBoardOtherwise) {
    setenv("HOME", "/home/someone", 1);
    unsetenv("XDG_STATE_HOME");
    EXPECT_EQ(findStateFolder(optionsFor("tri-band")), "/home/someone/.local/state/quorvel-wifi/tri-band");
    setenv("XDG_STATE_HOME", "/states", 1);
    EXPECT_EQ(findStateFolder(optionsFor("dual-band")), "/states/quorvel-wifi/dual-band");
    setenv("XDG_STATE_HOME", "relative", 1);
    EXPECT_EQ(findStateFolder(optionsFor("tri-band")), "/home/someone/.local/state/quorvel-wifi/tri-band");
}

TEST_F(StateFolderPlace, TellsTwoDescriptionsOfOneNameApart) {
    setenv("XDG_STATE_HOME", "/states", 1);
    const std::string shipped = findStateFolder(optionsFor("tri-band"));
    const std::string file = findStateFolder(optionsFor(BOARD_TEST_PROGRAMS "/boards/tri-band.json"));
    EXPECT_NE(file, shipped);
    EXPECT_EQ(file.rfind("/states/quorvel-wifi/tri-band-", 0), 0U) << file;
    EXPECT_EQ(file, findStateFolder(optionsFor(BOARD_TEST_PROGRAMS "/./boards/tri-band.json")));
}

TEST_F(StateFolderPlace, MustBeNamedWhenTheUserHasNoHome) {
    unsetenv("HOME");
    unsetenv("XDG_STATE_HOME");
    EXPECT_THROW((void)findStateFolder(optionsFor("tri-band")), BoardError);
}

TEST(EmulatorScript, QuotesEveryWord) {
    EXPECT_EQ(emulatorScript({"qemu", "-L", "/a b", "it's"}, "/bin/x"),
              "#!/bin/sh\nexec 'qemu' '-L' '/a b' 'it'\\''s' '/bin/x' \"$@\"\n");
}

}  // namespace
