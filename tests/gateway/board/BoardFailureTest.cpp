// Boards that cannot be powered up: nothing of them runs, and the message helps.

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/gateway/board/CommandRun.h"

namespace {

class BoardFailure : public testing::Test {
  protected:
    void expectRefusal(const std::vector<std::string>& extra, const std::string& message) const {
        const Outcome outcome = run(boardScript(state_, "echo on", extra));
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err.find(message), std::string::npos) << outcome.err;
    }

    ScratchFolder folder_;
    std::string state_ = folder_.path() + "/state";
};

TEST_F(BoardFailure, NamesTheShippedBoards) {
    expectRefusal({"--board", "quad-band"}, "no shipped board \"quad-band\"");
    expectRefusal({"--board", "quad-band"}, "tri-band");
}

TEST_F(BoardFailure, NamesAMissingDescription) {
    expectRefusal({"--board", folder_.path() + "/absent.json"}, "absent.json: No such file");
}

TEST_F(BoardFailure, NamesFileAndLineOfAMalformedDescription) {
    expectRefusal({"--board", folder_.write("wrong.json", "{\n  \"name\": \n}\n")}, "/wrong.json:3:");
}

TEST_F(BoardFailure, NamesAMissingPlugin) {
    expectRefusal({"--plugin", folder_.path() + "/absent.so"},
                  "Cannot find the plug-in " + folder_.path() + "/absent.so");
}

TEST_F(BoardFailure, NamesAProgramFolderWithoutPrograms) {
    expectRefusal({"--programs", folder_.path()}, "The program folder \"" + folder_.path() + "\" has no bin/ and lib/");
}

TEST_F(BoardFailure, NamesAMissingConfiguration) {
    expectRefusal({"--configuration", folder_.path() + "/absent.ini"}, "absent.ini: No such file");
    expectRefusal({"--configuration", folder_.path()}, "Is a directory");
}

TEST_F(BoardFailure, NamesAStateFolderThatIsNone) {
    expectRefusal({"--state", folder_.write("file", "")}, "/file is a file; name a folder");
    expectRefusal({"--state", folder_.path() + "/file/below"}, "Cannot create");
}

TEST_F(BoardFailure, LeavesNoLockBehind) {
    expectRefusal({"--plugin", folder_.path() + "/absent.so"}, "Cannot find");
    EXPECT_FALSE(std::filesystem::exists(state_));
}

}  // namespace
