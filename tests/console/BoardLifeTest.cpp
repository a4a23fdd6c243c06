// Boards that stay up, boards that differ, and a WLAN manager that stops answering.
#include <unistd.h>

#include <filesystem>
#include <set>
#include <sstream>

#include "tests/console/OnBoard.h"
#include "tests/console/Terminal.h"

namespace quorvel::console_test {
namespace {

const std::string kFirstChannel = "Device.WiFi.Radio.1.Channel";

class UpAndDown : public OnBoard {};
class OtherBoards : public OnBoard {};
class Trouble : public OnBoard {};

TEST_F(UpAndDown, LaterCommandsTalkToTheSameBoard) {
    EXPECT_EQ(console_.run({"status", "--json"}).json().at("up"), false);
    ASSERT_EQ(console_.run({"up"}).status, 0);
    EXPECT_EQ(console_.run({"status", "--json"}).json().at("up"), true);
    EXPECT_EQ(console_.run({"set", kFirstChannel + "=40"}).status, 0);
    EXPECT_EQ(console_.run({"get", kFirstChannel}).out, kFirstChannel + " => 40\n");
    EXPECT_EQ(console_.run({"up"}).status, 0);
    EXPECT_EQ(console_.run({"get", kFirstChannel}).out, kFirstChannel + " => 40\n");
    EXPECT_EQ(console_.run({"down"}).status, 0);
    EXPECT_EQ(console_.run({"status", "--json"}).json().at("up"), false);
    // It was not saved.
    EXPECT_EQ(console_.run({"get", kFirstChannel}).out, kFirstChannel + " => 36\n");
}

TEST_F(UpAndDown, BoardsOfTwoStateFoldersDoNotMeet) {
    const Console other;
    ASSERT_EQ(console_.run({"up"}).status, 0);
    EXPECT_EQ(other.run({"status", "--json"}).json().at("up"), false);
    ASSERT_EQ(other.run({"up"}).status, 0);
    EXPECT_EQ(console_.run({"set", kFirstChannel + "=40"}).status, 0);
    EXPECT_EQ(other.run({"get", kFirstChannel}).out, kFirstChannel + " => 36\n");
}

TEST_F(UpAndDown, BoardsOfTwoUsersDoNotMeet) {
    constexpr uid_t kSomebody = 12345;
    ASSERT_EQ(console_.run({"up"}).status, 0);
    if (chown(console_.state().c_str(), kSomebody, static_cast<gid_t>(-1)) != 0)
        GTEST_SKIP() << "NOT TESTED: only the administrator can give a folder away";
    for (const char* verb : {"get", "set", "up", "status", "down"}) {
        std::vector<std::string> words{verb};
        if (words[0] == "get") words.push_back(kFirstChannel);
        if (words[0] == "set") words.push_back(kFirstChannel + "=40");
        const Outcome outcome = console_.run(words);
        EXPECT_EQ(outcome.status, 1) << verb;
        EXPECT_EQ(outcome.out, "") << verb;
        EXPECT_EQ(outcome.error, "quorvel-wifi: The board's state folder " + console_.state() +
                                     " belongs to another user; name one of your own.\n")
            << verb;
    }
    ASSERT_EQ(chown(console_.state().c_str(), geteuid(), static_cast<gid_t>(-1)), 0);
    EXPECT_EQ(console_.run({"get", kFirstChannel}).out, kFirstChannel + " => 36\n");
}

TEST_F(UpAndDown, StationsJoinAndLeaveABoardThatStaysUp) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    EXPECT_EQ(console_.run({"station", "join", "02:00:00:00:00:77", "3", "--rssi", "-60", "--json"})
                  .json()
                  .at("station")
                  .at("mac"),
              "02:00:00:00:00:77");
    const std::string list = console_.run({"station", "list", "--plain"}).out;
    EXPECT_NE(list.find("02:00:00:00:00:77\t3\t"), std::string::npos) << list;
    EXPECT_EQ(console_.run({"station", "leave", "02:00:00:00:00:77"}).status, 0);
    EXPECT_EQ(console_.run({"station", "leave", "02:ff:ff:ff:ff:ff"}).status, 1);
}

class FolderBoards : public testing::Test {
  protected:
    // The names below a folder that belong to this system.
    static std::set<std::string> tracesIn(const std::filesystem::path& folder) {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const std::string name = entry.path().filename();
            for (const char* own : {"wl", "lspci", "i2cget", "notify-socket", "quorvel"})
                // Folders with a dash belong to other tests.
                if (name.starts_with(own) && !name.starts_with("quorvel-")) names.insert(name);
        }
        return names;
    }

    Console console_;
};

TEST_F(FolderBoards, LiveSideBySideWithValuesOfTheirOwn) {
    const Console other;
    const auto traces = [] { return std::vector{tracesIn("/tmp"), tracesIn("/var"), tracesIn("/var/run")}; };
    const auto before = traces();
    ASSERT_EQ(console_.run({"up", "--sandbox", "folder"}).status, 0);
    ASSERT_EQ(other.run({"up", "--sandbox", "folder"}).status, 0);
    ASSERT_EQ(console_.run({"set", kFirstChannel + "=40"}).status, 0);
    EXPECT_EQ(other.run({"get", kFirstChannel}).out, kFirstChannel + " => 36\n");
    EXPECT_EQ(console_.run({"get", kFirstChannel}).out, kFirstChannel + " => 40\n");
    // Only one's manager ends.
    ASSERT_EQ(console_.run({"simulate", R"({"op":"daemon.kill"})"}).status, 0);
    EXPECT_EQ(console_.run({"get", kFirstChannel}).status, 1);
    EXPECT_EQ(other.run({"get", kFirstChannel}).out, kFirstChannel + " => 36\n");
    EXPECT_EQ(console_.run({"down"}).status, 0);
    EXPECT_EQ(other.run({"get", kFirstChannel}).out, kFirstChannel + " => 36\n");
    EXPECT_FALSE(std::filesystem::exists(console_.state() + "/board"));
    EXPECT_EQ(other.run({"down"}).status, 0);
    EXPECT_EQ(traces(), before);
}

TEST_F(FolderBoards, AnswerAllThatBoardsInNamespacesAnswer) {
    const auto answersOf = [&](const char* sandbox) {
        const Outcome outcome = console_.run({"get", "Device.WiFi.", "--plain", "--sandbox", sandbox});
        EXPECT_EQ(outcome.status, 0) << sandbox << outcome.error;
        std::istringstream lines(outcome.out);
        std::vector<std::string> answers;
        for (std::string line; std::getline(lines, line);)
            answers.push_back(line.substr(0, line.find('\t')));
        answers.push_back(outcome.error);
        return answers;
    };
    const std::vector<std::string> answers = answersOf("folder");
    EXPECT_GT(answers.size(), 5000U);
    if (!whyNoBoard().empty()) GTEST_SKIP() << "NOT COMPARED, this machine forbids namespaces";
    EXPECT_EQ(answers, answersOf("namespaces"));
}

TEST_F(FolderBoards, CountTheirStationsTraffic) {
    ASSERT_EQ(console_.run({"up", "--sandbox", "folder"}).status, 0);
    const std::string sent = "Device.WiFi.SSID.1.Stats.PacketsSent";
    const auto count = [&] {
        const std::string text = console_.run({"get", sent, "--plain"}).out;
        return std::stoul("0" + text.substr(text.find('\t') + 1));
    };
    const unsigned long before = count();
    ASSERT_EQ(console_.run({"simulate", R"({"op":"time","advance":5})"}).status, 0);
    EXPECT_GT(count(), before);
    // A manager that has crashed takes no counter along.
    ASSERT_EQ(console_.run({"simulate", R"({"op":"daemon.kill"})"}).status, 0);
    EXPECT_GT(count(), before);
}

TEST_F(OtherBoards, HaveTheirOwnRadios) {
    const Outcome outcome = console_.run({"--board", "dual-band", "get", "Device.WiFi.RadioNumberOfEntries"});
    EXPECT_EQ(outcome.out, "Device.WiFi.RadioNumberOfEntries => 2\n") << outcome.error;
}

TEST_F(Trouble, WithTheManagerIsToldInsteadOfWaitingForEver) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    const std::string hang = R"({"op":"fault","fault":"hang","seconds":20})";
    ASSERT_EQ(console_.run({"simulate", hang}).status, 0);
    for (const char* path : {"Device.WiFi.Radio.1.Channel", "Device.WiFi."}) {
        const Outcome outcome = console_.run({"get", path});
        EXPECT_NE(outcome.error.find("the WLAN manager (wlmngr2) does not answer: it is running"), std::string::npos)
            << path << ": " << outcome.error;
    }
    EXPECT_EQ(console_.run({"get", kFirstChannel}).status, 1);
}

// An empty result is wrong when nobody could be asked.
TEST_F(Trouble, FailsEveryVerbThatNeedsTheManager) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    ASSERT_EQ(console_.run({"simulate", R"({"op":"fault","fault":"hang","seconds":60})"}).status, 0);
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"get", "Device.WiFi.Radio.*.Name"},
                                               {"get", "Device.WiFi.SSID.[Enable==true].SSID"},
                                               {"set", "Device.WiFi.SSID.[Enable==true].SSID=x"},
                                               {"set", "Device.WiFi.SSID.1.SSID=x"},
                                               {"instances"},
                                               {"snapshot", "Device.WiFi.SSID.1."},
                                               {"security", "1"},
                                               {"watch", kFirstChannel},
                                               {"scan", "1"},
                                               {"channel", "1", "36"},
                                               {"stats", "1"},
                                               {"stations"},
                                               {"stations", "1"},
                                               {"station", "list"},
                                               {"wps", "1", "push"},
                                               {"overview"}}) {
        const Outcome outcome = console_.run(words);
        EXPECT_EQ(outcome.status, 1) << words.front() << " prints " << outcome.out;
        EXPECT_NE(outcome.error.find("the WLAN manager (wlmngr2) does not answer"), std::string::npos)
            << words.front() << ": " << outcome.error;
    }
}

TEST_F(Trouble, OfAManagerThatIsGoneIsToldToWhoWaitsForEvents) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    Terminal terminal({"--state", console_.state(), "events"});
    (void)terminal.until("Ctrl-C ends");
    ASSERT_EQ(console_.run({"simulate", R"({"op":"fault","fault":"die","at":"read"})"}).status, 0);
    (void)console_.run({"get", kFirstChannel});
    (void)terminal.until("it is gone; no events can come");
    terminal.type("\003");
    (void)terminal.rest();
    EXPECT_EQ(terminal.status(), 0);
}

}  // namespace
}  // namespace quorvel::console_test
