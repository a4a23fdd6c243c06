// The WLAN manager killed, stopped, silent or talking nonsense, in the middle of what a person does on the console.
// Every command ends by itself and names the failure.
#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/console/OnBoard.h"
#include "tests/faults/Processes.h"

namespace quorvel::faults_test {
namespace {

using console_test::Outcome;

const std::string kChannel = "Device.WiFi.Radio.1.Channel";
const std::string kAlias = "Device.WiFi.Radio.1.Alias";

// A board that stays up, so that its manager can be got at between commands and during them.
class ManagerFault : public console_test::OnBoard {
  protected:
    void SetUp() override {
        OnBoard::SetUp();
        if (IsSkipped()) return;
        ASSERT_EQ(console_.run({"up"}).status, 0);
        manager_ = managerOf(console_.state());
        ASSERT_GT(manager_, 0);
    }
    void TearDown() override {
        // A stopped process does not see the termination of its board.
        if (manager_ > 0 && managerOf(console_.state()) == manager_) (void)kill(manager_, SIGCONT);
    }

    void make(const std::string& fault) const {
        ASSERT_EQ(console_.run({"simulate", R"({"op":"fault",)" + fault + "}"}).status, 0);
    }

    pid_t manager_ = 0;
};

void failsAndNamesTheManager(const Outcome& outcome) {
    EXPECT_EQ(outcome.status, 1) << outcome.out << outcome.error;
    EXPECT_NE(outcome.error.find("the WLAN manager (wlmngr2)"), std::string::npos) << outcome.error;
}

struct Work {
    const char* name;
    std::vector<std::string> words;
    const char* at;
};

class ManagerFaultPoint : public ManagerFault, public testing::WithParamInterface<Work> {
  protected:
    // The manager has taken the request, and done half of it, by then.
    void faultAt(const std::string& fault) const {
        make("\"fault\":\"" + fault + "\",\"at\":\"" + GetParam().at + "\"");
    }
};

TEST_P(ManagerFaultPoint, ItsDeathIsReported) {
    faultAt("die");
    failsAndNamesTheManager(console_.run(GetParam().words));
    EXPECT_EQ(managerOf(console_.state()), 0);
}

TEST_P(ManagerFaultPoint, ItsStopIsReported) {
    faultAt("stop");
    failsAndNamesTheManager(console_.run(GetParam().words));
    EXPECT_EQ(stateOf(manager_), 'T');
}

TEST_P(ManagerFaultPoint, ItsSilenceIsReported) {
    make(R"("fault":"hang","seconds":60)");
    failsAndNamesTheManager(console_.run(GetParam().words));
    EXPECT_EQ(managerOf(console_.state()), manager_);
}

INSTANTIATE_TEST_SUITE_P(Commands, ManagerFaultPoint,
                         testing::Values(Work{"Read", {"get", kChannel}, "read"},
                                         Work{"Write", {"set", kAlias + "=attic"}, "write"},
                                         Work{"Scan", {"scan", "1"}, "scan"},
                                         Work{"Save", {"set", kAlias + "=attic", "--save"}, "save"}),
                         [](const auto& work) { return work.param.name; });

TEST_F(ManagerFault, ThatPassesIsForgotten) {
    ASSERT_EQ(kill(manager_, SIGSTOP), 0);
    failsAndNamesTheManager(console_.run({"get", kChannel}));
    ASSERT_EQ(kill(manager_, SIGCONT), 0);
    EXPECT_EQ(console_.run({"get", kChannel}).out, kChannel + " => 36\n");
}

TEST_F(ManagerFault, LeavesABoardThatCanBeSwitchedOff) {
    ASSERT_EQ(kill(manager_, SIGSTOP), 0);
    EXPECT_EQ(console_.run({"status"}).status, 0);
    EXPECT_EQ(console_.run({"down"}).status, 0);
    EXPECT_EQ(managerOf(console_.state()), 0);
}

class WrongAnswer : public ManagerFault, public testing::WithParamInterface<const char*> {};

TEST_P(WrongAnswer, IsNotBelieved) {
    make("\"fault\":\"" + std::string(GetParam()) + "\",\"count\":1000");
    const Outcome outcome = console_.run({"get", kChannel});
    EXPECT_EQ(outcome.status, 1) << outcome.out;
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.error.find(kChannel), std::string::npos) << outcome.error;
    make(R"("fault":"none")");
    EXPECT_EQ(console_.run({"get", kChannel}).out, kChannel + " => 36\n");
}

INSTANTIATE_TEST_SUITE_P(Answers, WrongAnswer, testing::Values("drop", "truncate", "oversize"),
                         [](const auto& fault) { return std::string(fault.param); });

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// All that survives a power cycle, by file.
std::vector<std::string> saved(const std::string& state) {
    std::vector<std::string> contents;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(state)) {
        if (entry.is_regular_file()) contents.push_back(entry.path().string() + "\n" + contentOf(entry.path()));
    }
    std::sort(contents.begin(), contents.end());
    return contents;
}

TEST_F(ManagerFault, OfASaveIsToldAndKeepsWhatWasSaved) {
    ASSERT_EQ(console_.run({"set", kAlias + "=first", "--save"}).status, 0);
    make(R"("fault":"save")");
    const std::vector<std::string> before = saved(console_.state());
    const Outcome outcome = console_.run({"set", kAlias + "=second", "--save"});
    EXPECT_EQ(outcome.status, 1) << outcome.out;
    EXPECT_NE(outcome.error.find("sav"), std::string::npos) << outcome.error;
    EXPECT_EQ(saved(console_.state()), before);
    ASSERT_EQ(console_.run({"down"}).status, 0);
    EXPECT_EQ(console_.run({"get", kAlias}).out, kAlias + " => first\n");
}

TEST_F(ManagerFault, ByDeathKeepsWhatWasSaved) {
    ASSERT_EQ(console_.run({"set", kAlias + "=first", "--save"}).status, 0);
    ASSERT_EQ(console_.run({"set", kAlias + "=second"}).status, 0);
    ASSERT_EQ(kill(manager_, SIGKILL), 0);
    ASSERT_EQ(console_.run({"down"}).status, 0);
    EXPECT_EQ(console_.run({"get", kAlias}).out, kAlias + " => first\n");
}

// Files of the store that have not taken their place yet.
std::size_t halfWritten(const std::string& state) {
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(state)) {
        if (entry.path().extension() == ".new") ++files;
    }
    return files;
}

TEST_F(ManagerFault, ByDeathInTheMiddleOfASaveKeepsWhatWasSavedBefore) {
    ASSERT_EQ(console_.run({"set", kAlias + "=first", "--save"}).status, 0);
    const std::vector<std::string> before = saved(console_.state());
    EXPECT_EQ(halfWritten(console_.state()), 0U);
    make(R"("fault":"die","at":"save")");
    EXPECT_EQ(console_.run({"set", kAlias + "=second", "--save"}).status, 1);
    ASSERT_EQ(halfWritten(console_.state()), 1U);
    for (const std::string& file : before) {
        const std::vector<std::string> now = saved(console_.state());
        EXPECT_NE(std::find(now.begin(), now.end(), file), now.end()) << file;
    }
    ASSERT_EQ(console_.run({"down"}).status, 0);
    EXPECT_EQ(console_.run({"get", kAlias}).out, kAlias + " => first\n");
    // The next save does not mind what the last one left.
    EXPECT_EQ(console_.run({"set", kAlias + "=third", "--save"}).status, 0);
    EXPECT_EQ(halfWritten(console_.state()), 0U);
    EXPECT_EQ(console_.run({"get", kAlias}).out, kAlias + " => third\n");
}

TEST_F(ManagerFault, OrNoneKeepsEverythingPrivateToTheUser) {
    ASSERT_EQ(console_.run({"set", kAlias + "=first", "--save"}).status, 0);
    namespace fs = std::filesystem;
    const auto open = fs::perms::group_all | fs::perms::others_all;
    EXPECT_EQ(fs::status(console_.state()).permissions() & open, fs::perms::none);
    for (const auto& entry : fs::recursive_directory_iterator(console_.state())) {
        // A link's own permissions mean nothing.
        if (entry.is_symlink()) continue;
        EXPECT_EQ(entry.symlink_status().permissions() & open, fs::perms::none) << entry.path();
    }
}

}  // namespace
}  // namespace quorvel::faults_test
