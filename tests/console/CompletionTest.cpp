// The completions that shells are offered, and the files that bind them.
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/console/OnBoard.h"

namespace quorvel::console_test {
namespace {

using Candidates = std::vector<std::string>;

class Completion : public OnBoard {
  protected:
    [[nodiscard]] Candidates of(std::vector<std::string> words) const {
        words.insert(words.begin(), {"--state", console_.state()});
        words.insert(words.begin(), "__complete");
        Outcome outcome;
        outcome.out = output(words);
        Candidates found;
        std::istringstream in(outcome.out);
        for (std::string line; std::getline(in, line);)
            found.push_back(line);
        return found;
    }

  private:
    // Completion scripts hand over nothing but what was typed.
    static std::string output(const std::vector<std::string>& words) {
        std::string command = "'" QUORVEL_CONSOLE "'";
        for (const std::string& word : words)
            command += " '" + word + "'";
        return textOf(command);
    }

  public:
    static std::string textOf(const std::string& command) {
        std::string text;
        FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
        if (pipe == nullptr) return "no shell";
        std::array<char, 4096> buffer{};
        for (std::size_t count = fread(buffer.data(), 1, buffer.size(), pipe); count > 0;
             count = fread(buffer.data(), 1, buffer.size(), pipe)) {
            text.append(buffer.data(), count);
        }
        (void)pclose(pipe);
        return text;
    }
};

TEST_F(Completion, IsOfVerbsAndOptionsWithoutABoard) {
    EXPECT_EQ(of({"sta"}), (Candidates{"stats", "stations", "station", "status"}));
    EXPECT_EQ(of({"station", ""}), (Candidates{"join", "leave", "list"}));
    EXPECT_EQ(of({"get", "--m"}), Candidates{"--max-depth"});
    EXPECT_EQ(of({"wps", "1", "p"}), (Candidates{"push", "pin"}));
    EXPECT_EQ(of({"--board", ""}).front(), "dual-band");
    EXPECT_EQ(of({"--board=t"}), Candidates{"--board=tri-band"});
    EXPECT_EQ(of({"log", "--level", ""}), (Candidates{"0", "1", "2", "3"}));
    EXPECT_EQ(of({"help", "stati"}), (Candidates{"stations", "station"}));
    EXPECT_EQ(of({"help", "station", "j"}), Candidates{"join"});
    EXPECT_EQ(of({"play", "fir"}), Candidates{"first-boot"});
    EXPECT_EQ(of({"get", "Device.WiFi.SSID.1.SS"}), Candidates{"Device.WiFi.SSID.1.SSID"});
    EXPECT_EQ(of({"set", "Device.WiFi.SSID.1.Enable="}),
              (Candidates{"Device.WiFi.SSID.1.Enable=true", "Device.WiFi.SSID.1.Enable=false"}));
    EXPECT_EQ(of({"scan", "1", ""}), Candidates{});
}

TEST_F(Completion, IsOfFiles) {
    std::ofstream(console_.state() + "/before.json") << "{}";
    std::filesystem::create_directory(console_.state() + "/below");
    const std::string begun = console_.state() + "/be";
    const Candidates both{console_.state() + "/before.json", console_.state() + "/below/"};
    for (const Candidates& words : std::vector<Candidates>{{"diff", begun},
                                                           {"diff", "a.json", begun},
                                                           {"batch", begun},
                                                           {"play", begun},
                                                           {"play", "x", "--junit", begun},
                                                           {"--board", begun}}) {
        Candidates found = of(words);
        std::sort(found.begin(), found.end());
        EXPECT_EQ(found, both) << words.front();
    }
    EXPECT_EQ(of({"--state", begun}), Candidates{console_.state() + "/below/"});
}

TEST_F(Completion, IsOfWhatIsOnTheBoardThatIsUp) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    EXPECT_EQ(of({"scan", ""}), (Candidates{"1", "2", "3"}));
    EXPECT_EQ(of({"get", "Device.WiFi.Radio."}), (Candidates{"Device.WiFi.Radio.1.", "Device.WiFi.Radio.2.",
                                                             "Device.WiFi.Radio.3.", "Device.WiFi.Radio.*."}));
    EXPECT_EQ(of({"channel", "1", "4"}), (Candidates{"40", "44", "48"}));
    EXPECT_EQ(of({"station", "leave", "02:5a:00:00:01:0"}).size(), 10U);
    EXPECT_EQ(of({"set", "Device.WiFi.AccessPoint.1.Security.ModeEnabled=W"}).size(), 3U);
}

TEST_F(Completion, WorksInBash) {
    const std::string script = console_.state() + "/try.sh";
    std::ofstream(script) << "source '" QUORVEL_SOURCES
                             "/console/completions/quorvel-wifi'\n"
                             "compopt() { nospace=yes; }\n"
                             "try() {\n"
                             "    nospace=no COMP_LINE=$1 COMP_POINT=${#1}\n"
                             "    _quorvel_wifi\n"
                             "    echo \"$nospace ${COMPREPLY[*]}\"\n"
                             "}\n"
                             "try 'quorvel-wifi statu'\n"
                             "try 'quorvel-wifi get Device.WiFi.SSID.1.SS'\n"
                             "try 'quorvel-wifi get Device.WiFi.SSID.1.St'\n"
                             "try 'quorvel-wifi get Device.WiFi.SSID.1.Stats'\n"
                             "try 'quorvel-wifi set Device.WiFi.SSID.1.Enable=t'\n"
                             "try 'quorvel-wifi --board='\n"
                             "try 'quorvel-wifi wps 1 c'\n";
    const std::string programs = std::filesystem::path(QUORVEL_CONSOLE).parent_path();
    EXPECT_EQ(textOf("PATH='" + programs + "':$PATH XDG_STATE_HOME='" + console_.state() + "' bash '" + script + "'"),
              "no status\n"
              "no Device.WiFi.SSID.1.SSID\n"
              "no Device.WiFi.SSID.1.Status Device.WiFi.SSID.1.Stats.\n"
              "yes Device.WiFi.SSID.1.Stats.\n"
              // Bash replaces what stands behind the sign.
              "no true\n"
              "no dual-band tri-band unsupported\n"
              "no cancel\n");
}

TEST_F(Completion, WorksInZsh) {
    if (textOf("zsh -fc 'echo there'") != "there\n") GTEST_SKIP() << "zsh is not installed";
    const std::string script = console_.state() + "/try.zsh";
    // Stand-ins for what completion offers its functions.
    std::ofstream(script) << "compdef() { }\n"
                             "_files() { print files }\n"
                             "_describe() { print -r -- ${(P)@[-1]} }\n"
                             "compadd() { print -r -- ${@[1,-2]} ${(P)@[-1]} }\n"
                             "try() {\n"
                             "    words=(\"$@\") CURRENT=$#\n"
                             "    source '" QUORVEL_SOURCES
                             "/console/completions/_quorvel-wifi'\n"
                             "}\n"
                             "try quorvel-wifi statu | grep -o 'status:[A-Za-z]*'\n"
                             "try quorvel-wifi --js | grep -o -- '--json:[A-Za-z]*'\n"
                             "try quorvel-wifi get Device.WiFi.SSID.1.St\n"
                             "try quorvel-wifi set Device.WiFi.SSID.1.Enable=t\n"
                             "try quorvel-wifi --board=d\n"
                             "try quorvel-wifi scan 1 ''\n";
    const std::string programs = std::filesystem::path(QUORVEL_CONSOLE).parent_path();
    EXPECT_EQ(textOf("PATH='" + programs + "':$PATH XDG_STATE_HOME='" + console_.state() + "' zsh -f '" + script + "'"),
              "status:Tell\n"
              "--json:Print\n"
              "-S -a Device.WiFi.SSID.1.Stats.\n-a Device.WiFi.SSID.1.Status\n"
              "-S -a\n-a Device.WiFi.SSID.1.Enable=true\n"
              "-S -a\n-a --board=dual-band\n"
              "files\n");
}

}  // namespace
}  // namespace quorvel::console_test
