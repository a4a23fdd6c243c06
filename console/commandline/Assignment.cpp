#include "console/commandline/Assignment.h"

#include <termios.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <iterator>

#include "common/OutsideBrackets.h"
#include "console/session/Secrets.h"
#include "console/terminal/Interrupt.h"

namespace quorvel::console {
namespace {

std::string withoutLastNewline(std::string text) {
    if (text.ends_with('\n')) text.pop_back();
    if (text.ends_with('\r')) text.pop_back();
    return text;
}

// While one lives, the terminal does not show what is typed.
class Unseen {
  public:
    Unseen() : there_(tcgetattr(STDIN_FILENO, &before_) == 0) {
        if (!there_) return;
        termios without = before_;
        without.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        (void)tcsetattr(STDIN_FILENO, TCSAFLUSH, &without);
    }
    Unseen(const Unseen&) = delete;
    Unseen& operator=(const Unseen&) = delete;
    ~Unseen() {
        if (there_) (void)tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
    }

  private:
    termios before_{};
    bool there_;
};

std::string lineFromTerminal() {
    const Interrupt interrupt;
    std::string line;
    char c = 0;
    while (read(STDIN_FILENO, &c, 1) == 1 && c != '\n')
        line += c;
    interrupt.giveUpIfMine();
    return line;
}

std::string askedFor(const std::string& path) {
    const auto prompt = [&path] { std::cerr << path << ": " << std::flush; };
    if (!isSecret(path)) {
        prompt();
        return lineFromTerminal();
    }
    const Unseen unseen;
    prompt();
    const struct NewLine {
        ~NewLine() {
            std::cerr << '\n';
        }
    } end;
    return lineFromTerminal();
}

}  // namespace

std::size_t signIn(const std::string& assignment) {
    return common::findOutsideBrackets(assignment, '=');
}

std::string valueMeantBy(const Session& session, const std::string& path, const std::string& given) {
    if (given == "-") {
        if (session.inputIsCommands) {
            throw CLI::ValidationError("standard input holds the commands; take the value from a file (@FILE)");
        }
        if (isatty(STDIN_FILENO) != 0) return askedFor(path);
        return withoutLastNewline({std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>()});
    }
    if (given.starts_with("@@")) return given.substr(1);
    if (!given.starts_with('@')) return given;
    std::ifstream file(given.substr(1), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file || file.bad()) throw CLI::ValidationError("cannot read the value from the file " + given.substr(1));
    return withoutLastNewline(text);
}

}  // namespace quorvel::console
