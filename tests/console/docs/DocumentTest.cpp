// Runs what the documents show: every block of ```console on a board of its own, with its output compared.
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

#include "tests/console/OnBoard.h"

namespace quorvel::console_test {
namespace {

struct Step {
    std::string command;
    std::vector<std::string> output;
    int line = 0;
};

using Block = std::vector<Step>;

std::vector<Block> blocksOf(const std::string& document) {
    std::ifstream in(std::string(QUORVEL_DOCUMENTS) + "/" + document);
    std::vector<Block> blocks;
    bool inside = false;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (line == "```console") {
            blocks.emplace_back();
            inside = true;
        } else if (line.starts_with("```")) {
            inside = false;
        } else if (inside && line.starts_with("$ ")) {
            blocks.back().push_back({line.substr(2), {}, number});
        } else if (inside && !blocks.back().empty()) {
            blocks.back().back().output.push_back(line);
        }
    }
    return blocks;
}

// "..." stands for anything within a line.
bool fits(const std::string& expected, const std::string& line) {
    const std::size_t gap = expected.find("...");
    if (gap == std::string::npos) return expected == line;
    const std::string tail = expected.substr(gap + 3);
    if (line.compare(0, gap, expected, 0, gap) != 0) return false;
    for (std::size_t i = gap; i <= line.size(); ++i) {
        if (fits(tail, line.substr(i))) return true;
    }
    return false;
}

// A line of "..." alone stands for any number of lines.
bool fits(const std::vector<std::string>& expected, std::size_t i, const std::vector<std::string>& lines,
          std::size_t j) {
    if (i == expected.size()) return j == lines.size();
    if (expected[i] == "...") {
        for (std::size_t next = j; next <= lines.size(); ++next) {
            if (fits(expected, i + 1, lines, next)) return true;
        }
        return false;
    }
    return j < lines.size() && fits(expected[i], lines[j]) && fits(expected, i + 1, lines, j + 1);
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// A user's empty home, with the console on the path.
class Home {
  public:
    Home() {
        std::string name = (std::filesystem::temp_directory_path() / "quorvel-home-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
        folder_ = name;
    }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;
    ~Home() {
        (void)run("quorvel-wifi down");
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    // Returns both outputs of a command.
    std::string run(const std::string& command) {
        const std::string programs = std::filesystem::path(QUORVEL_CONSOLE).parent_path().string();
        const std::string whole = "cd '" + folder_ + "' && export HOME='" + folder_ + "' XDG_STATE_HOME='" + folder_ +
                                  "/state' PATH='" + programs + "':$PATH LC_ALL=C; exec 2>&1 </dev/null; " + command;
        std::string text;
        FILE* const pipe = popen(whole.c_str(), "r");
        if (pipe == nullptr) throw std::runtime_error("no shell");
        std::array<char, 4096> buffer{};
        for (std::size_t count = fread(buffer.data(), 1, buffer.size(), pipe); count > 0;
             count = fread(buffer.data(), 1, buffer.size(), pipe)) {
            text.append(buffer.data(), count);
        }
        const int ended = pclose(pipe);
        if (command != "echo $?") status_ = WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
        return text;
    }

    [[nodiscard]] int status() const {
        return status_;
    }

  private:
    std::string folder_;
    int status_ = 0;
};

class Documented : public testing::TestWithParam<std::string> {
  protected:
    void SetUp() override {
        if (!whyNoBoard().empty()) GTEST_SKIP() << "no board can run here: " << whyNoBoard();
    }
};

TEST_P(Documented, CommandsPrintWhatTheDocumentShows) {
    const std::vector<Block> blocks = blocksOf(GetParam());
    ASSERT_FALSE(blocks.empty());
    for (const Block& block : blocks) {
        Home home;
        for (const Step& step : block) {
            const std::string text =
                step.command == "echo $?" ? std::to_string(home.status()) + "\n" : home.run(step.command);
            EXPECT_TRUE(fits(step.output, 0, linesOf(text), 0))
                << GetParam() << ":" << step.line << ": " << step.command << "\nprints\n"
                << text;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Console, Documented, testing::Values("console.md", "fleet.md", "recording.md"),
                         [](const auto& each) {
                             const std::string word = each.param.substr(0, each.param.find('.'));
                             return static_cast<char>(std::toupper(word.front())) + word.substr(1) + "Document";
                         });

std::vector<std::string> verbs() {
    const Console console;
    std::vector<std::string> names;
    const nlohmann::json program = console.run({"help", "--json"}).json();
    for (const nlohmann::json& verb : program.at("verbs"))
        names.push_back(verb.at("name"));
    EXPECT_GT(names.size(), 20U);
    return names;
}

// Verbs that run other commands print only the output of those.
bool runsOthers(const std::string& verb) {
    return verb == "shell" || verb == "batch" || verb == "web";
}

std::string contents(const std::string& document) {
    std::ifstream in(QUORVEL_DOCUMENTS + document);
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST(TheConsoleDocument, HasAnExampleOfEveryVerb) {
    std::set<std::string> shown;
    for (const Block& block : blocksOf("console.md")) {
        for (const Step& step : block) {
            std::istringstream words(step.command);
            for (std::string word, before; words >> word; before = word) {
                if (before == "quorvel-wifi" || before == "wifi>") shown.insert(word);
            }
        }
    }
    for (const std::string& verb : verbs()) {
        EXPECT_TRUE(shown.contains(verb)) << "docs/console.md has no example of " << verb;
    }
}

TEST(TheFleetDocument, HasAnExampleOfEveryCommand) {
    std::set<std::string> shown;
    for (const Block& block : blocksOf("fleet.md")) {
        for (const Step& step : block) {
            std::istringstream words(step.command);
            for (std::string word, before; words >> word; before = word) {
                if (before == "fleet") shown.insert(word);
            }
        }
    }
    const Console console;
    const nlohmann::json program = console.run({"help", "--json"}).json();
    std::size_t count = 0;
    for (const nlohmann::json& verb : program.at("verbs")) {
        if (verb.at("name") != "fleet") continue;
        for (const nlohmann::json& command : verb.at("verbs")) {
            EXPECT_TRUE(shown.contains(command.at("name")))
                << "docs/fleet.md has no example of fleet " << command.at("name");
            ++count;
        }
    }
    EXPECT_EQ(count, 5U);
}

TEST(TheConsoleDocument, ListsThePlainColumnsOfEveryVerb) {
    const std::string document = contents("/console.md");
    const std::size_t table = document.find("The columns of plain records:");
    ASSERT_NE(table, std::string::npos);
    for (const std::string& verb : verbs()) {
        if (runsOthers(verb)) continue;
        EXPECT_NE(document.find("`" + verb, table), std::string::npos) << "docs/console.md has no columns of " << verb;
    }
}

TEST(Schemas, AreThereForEveryVerb) {
    for (const std::string& verb : verbs()) {
        if (runsOthers(verb)) continue;
        EXPECT_TRUE(std::filesystem::exists(std::string(QUORVEL_DOCUMENTS) + "/schemas/" + verb + ".json")) << verb;
    }
}

TEST(TheManPage, NamesEveryVerbAndOption) {
    std::string page = contents("/../console/man/quorvel-wifi.1");
    for (const char* mark : {"\\fR", "\\fB", "\\fI", "\\"}) {
        for (std::size_t at = page.find(mark); at != std::string::npos; at = page.find(mark))
            page.erase(at, std::string_view(mark).size());
    }
    const Console console;
    const nlohmann::json program = console.run({"help", "--json"}).json();
    const auto named = [&page](const std::string& name) {
        return std::regex_search(page, std::regex("[ \"\n\\[]" + name + "[ \",|\n\\]]"));
    };
    for (const nlohmann::json& option : program.at("options")) {
        EXPECT_TRUE(named(option.at("name"))) << option;
    }
    for (const nlohmann::json& verb : program.at("verbs")) {
        EXPECT_TRUE(named(verb.at("name"))) << verb.at("name");
        for (const nlohmann::json& option : verb.at("options")) {
            EXPECT_TRUE(named(option.at("name"))) << verb.at("name") << " " << option;
        }
    }
}

}  // namespace
}  // namespace quorvel::console_test
