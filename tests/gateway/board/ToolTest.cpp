// The board's tools, each by itself.

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/gateway/board/CommandRun.h"

namespace {

class BoardTool : public testing::Test {
  protected:
    [[nodiscard]] Outcome tool(const std::string& name, const std::vector<std::string>& arguments,
                               const std::string& description) const {
        std::vector<std::string> words = builtProgram(name);
        words.insert(words.end(), arguments.begin(), arguments.end());
        return run(words, {"QUORVEL_BOARD=" + folder_.write("board.json", description)});
    }
    [[nodiscard]] static std::string boardWith(const std::string& more, const std::string& chips = R"("43c5","4360")") {
        return R"({"name":"test","identifier":"0x0070","chips":[)" + chips + R"(],"radios":[])" + more + "}";
    }

    ScratchFolder folder_;
    const std::vector<std::string> readIdentifier_{"-f", "-y", "0x00", "0x24", "0x00", "w"};
};

const char* const kKnownChips[] = {"43c5", "43c4", "4365", "4359", "43a9", "4331", "4332", "43a0",
                                   "43a2", "4360", "43a1", "43b1", "43c3", "a8d1", "a8db"};

std::vector<std::string> linesWithAChip(const std::string& listing) {
    std::istringstream stream(listing);
    std::vector<std::string> found;
    for (std::string line; std::getline(stream, line);) {
        const auto isIn = [&line](const char* chip) { return line.find(chip) != std::string::npos; };
        if (std::ranges::any_of(kKnownChips, isIn)) found.push_back(line);
    }
    return found;
}

TEST_F(BoardTool, LspciListsEachChipOnALineOfItsOwn) {
    const Outcome outcome = tool("lspci", {}, boardWith("", R"("43c5","4360","43c5")"));
    EXPECT_EQ(outcome.status, 0);
    const std::vector<std::string> lines = linesWithAChip(outcome.out);
    ASSERT_EQ(lines.size(), 3U) << outcome.out;
    EXPECT_NE(lines[0].find("Network controller: Device 43c5"), std::string::npos);
    EXPECT_NE(lines[1].find("Device 4360"), std::string::npos);
    EXPECT_NE(lines[2].find("Device 43c5"), std::string::npos);
}

TEST_F(BoardTool, LspciListsOtherDevicesThatAreNoChips) {
    const Outcome outcome = tool("lspci", {}, boardWith("", ""));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("Host bridge"), std::string::npos);
    EXPECT_TRUE(linesWithAChip(outcome.out).empty()) << outcome.out;
}

TEST_F(BoardTool, I2cgetReadsTheBoardsIdentifier) {
    const Outcome outcome = tool("i2cget", readIdentifier_, boardWith(""));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "0x0070\n");
}

TEST_F(BoardTool, I2cgetAnswersForOneRegisterOnly) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"1", "0x24", "0", "w"}, {"0", "0x25", "0", "w"}, {"0", "0x24", "1", "w"}, {"0", "0x24", "0", "b"}}) {
        const Outcome outcome = tool("i2cget", words, boardWith(""));
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
    EXPECT_EQ(tool("i2cget", {"0"}, boardWith("")).status, 2);
}

TEST_F(BoardTool, InsmodNeedsAModule) {
    EXPECT_EQ(tool("insmod", {}, boardWith("")).status, 2);
}

TEST_F(BoardTool, FailsWhenTheDescriptionSaysSo) {
    const std::string faults = R"(,"faults":{"lspci":"fails","i2cget":"empty","insmod":"fails"})";
    const Outcome lspci = tool("lspci", {}, boardWith(faults));
    EXPECT_EQ(lspci.status, 1) << lspci.err;
    EXPECT_EQ(lspci.out, "");
    const Outcome i2cget = tool("i2cget", readIdentifier_, boardWith(faults));
    EXPECT_EQ(i2cget.status, 0) << i2cget.err;
    EXPECT_EQ(i2cget.out, "");
    EXPECT_EQ(tool("insmod", {"wl.ko"}, boardWith(faults)).status, 1);
}

TEST_F(BoardTool, SaysWhatIsWrongWithTheDescription) {
    const Outcome outcome = tool("lspci", {}, "{");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("lspci: " + folder_.path() + "/board.json:1:"), std::string::npos) << outcome.err;
}

}  // namespace
