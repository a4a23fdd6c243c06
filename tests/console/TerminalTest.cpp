// The console at a terminal: colours, progress, the shell.
#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/console/OnBoard.h"
#include "tests/console/Terminal.h"

namespace quorvel::console_test {
namespace {

using Environment = std::map<std::string, std::string>;

const std::string kName = "Device.WiFi.Radio.1.Name";
const std::string kCyan = "\033[36m";
const std::string kCtrlC = "\003";

class OnTerminal : public OnBoard {
  protected:
    [[nodiscard]] std::vector<std::string> command(std::vector<std::string> words) const {
        words.insert(words.begin(), {"--state", console_.state()});
        return words;
    }
    [[nodiscard]] std::string history() const {
        std::ifstream file(console_.state() + "/history");
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

class Colours : public OnTerminal {};
class Progress : public OnTerminal {};
class Shell : public OnTerminal {};
class Secret : public OnTerminal {};
class Lines : public OnTerminal {};

std::string get(std::vector<std::string> words, const Environment& environment = {}) {
    Terminal terminal(std::move(words), environment);
    return terminal.rest();
}

TEST_F(Colours, AreThereOnATerminalAndNowhereElse) {
    EXPECT_NE(get(command({"get", kName})).find(kCyan + kName), std::string::npos);
    EXPECT_EQ(console_.run({"get", kName}).out, kName + " => wl0\n");
}

TEST_F(Colours, AreSwitchedOff) {
    for (const auto& [words, environment] :
         std::vector<std::pair<std::vector<std::string>, Environment>>{{{"get", kName}, {{"NO_COLOR", "1"}}},
                                                                       {{"get", kName}, {{"TERM", "dumb"}}},
                                                                       {{"get", kName, "--no-color"}, {}},
                                                                       {{"selftest"}, {{"NO_COLOR", "1"}}},
                                                                       {{"selftest"}, {{"TERM", "dumb"}}},
                                                                       {{"help"}, {{"TERM", "dumb"}}}}) {
        const std::string shown = get(command(words), environment);
        EXPECT_GT(shown.size(), 10U);
        EXPECT_EQ(shown.find("\033[3"), std::string::npos) << shown;
        EXPECT_EQ(shown.find("\033[1m"), std::string::npos) << shown;
    }
}

TEST_F(Progress, IsDrawnWhileAScanTakesItsTimeAndGoneAfterwards) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    Terminal terminal(command({"scan", "3"}));
    EXPECT_NE(terminal.until(" of 5 s").find("░"), std::string::npos);
    const std::string rest = terminal.rest();
    EXPECT_NE(rest.find("\r\033[KRadio 3 hears"), std::string::npos) << rest;
    EXPECT_EQ(terminal.status(), 0);
}

TEST_F(Progress, IsNotAnimatedOnADumbTerminal) {
    const std::string shown = get(command({"get", kName}), {{"TERM", "dumb"}});
    EXPECT_EQ(shown, kName + " => wl0\r\n");
}

TEST_F(Progress, SaysThatAnAnswerIsAwaited) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    ASSERT_EQ(console_.run({"simulate", R"({"op":"fault","fault":"hang","seconds":5})"}).status, 0);
    Terminal terminal(command({"get", kName}));
    EXPECT_NE(terminal.until("waiting for the board").find("waiting"), std::string::npos);
    EXPECT_NE(terminal.rest().find("fault 7003"), std::string::npos);
    EXPECT_EQ(terminal.status(), 1);
}

TEST_F(Progress, EndsWithAnInterruptAsPeopleExpect) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    Terminal terminal(command({"scan", "1"}));
    (void)terminal.until(" of 5 s");
    terminal.type(kCtrlC);
    (void)terminal.rest();
    EXPECT_EQ(terminal.status(), -SIGINT);
}

TEST_F(Progress, OfWpsEndsWhenTheStationHasCome) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    Terminal terminal(command({"wps", "1", "push"}));
    (void)terminal.until(" of 120 s");
    EXPECT_NE(terminal.rest().find("WPS on access point 1: a station was let in"), std::string::npos);
    EXPECT_EQ(terminal.status(), 0);
}

TEST_F(Lines, FitIntoTheTerminal) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"help"}, {"overview"}, {"stations"}, {"scan", "3"}, {"play"}, {"stats", "1"}, {"demo"}, {"status"}}) {
        Terminal terminal(command(words), {{"NO_COLOR", "1"}}, 80);
        std::istringstream lines(terminal.rest());
        for (std::string line; std::getline(lines, line);) {
            line.erase(0, line.find("\033[K") == std::string::npos ? 0 : line.rfind("\033[K") + 3);
            if (line.ends_with('\r')) line.pop_back();
            const auto cells = std::count_if(line.begin(), line.end(),
                                             [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80; });
            // Paths of state folders and the like have no blanks to break at.
            const bool breakable = line.find("/tmp/") == std::string::npos;
            EXPECT_LE(breakable ? cells : 0, 80) << words.front() << ": " << line;
        }
    }
}

TEST_F(Secret, IsAskedForAndNotShownWhileItIsTyped) {
    const std::string path = "Device.WiFi.AccessPoint.1.Security.KeyPassphrase";
    Terminal terminal(command({"set", path + "=-", "--save"}));
    (void)terminal.until(path + ": ");
    terminal.type("typed unseen\n");
    const std::string shown = terminal.rest();
    EXPECT_EQ(shown.find("typed unseen"), std::string::npos) << shown;
    EXPECT_NE(shown.find("=> ********"), std::string::npos) << shown;
    EXPECT_EQ(console_.run({"get", path, "--reveal"}).out, path + " => typed unseen\n");
}

TEST_F(Shell, CompletesVerbsPathsInstancesAndValues) {
    Terminal terminal(command({"shell"}));
    (void)terminal.until("wifi> ");
    terminal.type("inst\t");
    (void)terminal.until("ances ");  // the rest of the verb
    terminal.type("Device.WiFi.Radio.\t\t");
    EXPECT_NE(terminal.until("Device.WiFi.Radio.3.").find("Device.WiFi.Radio.1."), std::string::npos);
    terminal.type("\025set Device.WiFi.Radio.1.Channel=6\t\t");
    EXPECT_NE(terminal.until("64").find("60"), std::string::npos);
    terminal.type("\025set Device.WiFi.SSID.1.Enable=f\t\n");
    EXPECT_NE(terminal.until("Device.WiFi.SSID.1.Enable\033[0m => false").find("=> false"), std::string::npos);
    terminal.type("exit\n");
    (void)terminal.rest();
    EXPECT_EQ(terminal.status(), 0);
}

TEST_F(Shell, KeepsItsHistoryButNoSecrets) {
    {
        Terminal terminal(command({"shell"}));
        (void)terminal.until("wifi> ");
        terminal.type("get " + kName + "\n");
        (void)terminal.until("=> wl0");
        terminal.type("set Device.WiFi.AccessPoint.1.Security.KeyPassphrase=topsecret\n");
        (void)terminal.until("=> ********");
        // The window is closed: nobody types "exit".
    }
    EXPECT_NE(history().find(kName), std::string::npos);
    EXPECT_EQ(history().find("topsecret"), std::string::npos);
    Terminal again(command({"shell"}));
    (void)again.until("wifi> ");
    again.type("\020\n");  // the line before
    EXPECT_NE(again.until("=> wl0").find("get " + kName), std::string::npos);
}

TEST_F(Shell, OutlivesAnInterrupt) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    Terminal terminal(command({"shell"}));
    (void)terminal.until("wifi> ");
    terminal.type("scan 1\n");
    (void)terminal.until(" of 5 s");
    terminal.type(kCtrlC);
    (void)terminal.until("wifi> ");
    terminal.type("events\n");
    (void)terminal.until("Ctrl-C ends");
    terminal.type(kCtrlC);
    (void)terminal.until("wifi> ");
    terminal.type("get " + kName + "\n");
    EXPECT_NE(terminal.until("=> wl0").find("=> wl0"), std::string::npos);
}

TEST_F(Shell, WatchesInRealTime) {
    Terminal terminal(command({"shell"}));
    (void)terminal.until("wifi> ");
    terminal.type("watch Device.WiFi.Radio.1.UpTime --count 2\n");
    EXPECT_NE(terminal.until("=> 0 -> 1").find("0 -> 1"), std::string::npos);
    EXPECT_NE(terminal.until("=> 1 -> 2").find("1 -> 2"), std::string::npos);
}

TEST_F(Shell, KnowsItsOwnBoard) {
    const Outcome outcome = console_.run(
        {"shell"}, "status\nget " + kName + " --board dual-band\nup\nhelp stations\nget " + kName + "\nexit\n");
    EXPECT_NE(outcome.out.find("the board tri-band is up as long as this session lasts"), std::string::npos);
    EXPECT_NE(outcome.error.find("the board is chosen when a shell or a batch begins"), std::string::npos);
    EXPECT_NE(outcome.error.find("up is not for use in a shell or a batch"), std::string::npos);
    EXPECT_NE(outcome.out.find("List the associated stations"), std::string::npos);
    EXPECT_NE(outcome.out.find(kName + " => wl0"), std::string::npos);
}

}  // namespace
}  // namespace quorvel::console_test
