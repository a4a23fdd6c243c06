#include "console/terminal/LineEditor.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>

#include "console/terminal/Interrupt.h"

#ifdef QUORVEL_HAVE_LIBEDIT
#include <editline/readline.h>
#endif

namespace quorvel::console {

#ifdef QUORVEL_HAVE_LIBEDIT

namespace {

constexpr int kHistoryLines = 1000;

LineEditor::Complete theCompleter;
std::vector<std::string> theMatches;

char* nextMatch(const char*, int state) {
    const auto index = static_cast<std::size_t>(state);
    return index < theMatches.size() ? strdup(theMatches[index].c_str()) : nullptr;
}

char** complete(const char* word, int, int end) {
    rl_attempted_completion_over = 1;  // no file names
    // The library breaks words at more than blanks; the text in front of its word is kept.
    const std::string line(rl_line_buffer, static_cast<std::size_t>(end));
    const std::size_t begin = line.find_last_of(" \t") + 1;
    const std::size_t kept = line.size() - begin - std::min(std::strlen(word), line.size() - begin);
    theMatches = theCompleter(line.substr(0, begin), line.substr(begin));
    for (std::string& match : theMatches)
        match.erase(0, kept);
    // No blank follows a word that can go on.
    const bool goesOn = theMatches.size() == 1 && !theMatches.front().empty() &&
                        std::string_view(".=/").find(theMatches.front().back()) != std::string_view::npos;
    rl_completion_append_character = goesOn ? 0 : ' ';
    return theMatches.empty() ? nullptr : rl_completion_matches(word, nextMatch);
}

}  // namespace

LineEditor::LineEditor(std::string historyFile, Complete completer, Keep keep)
    : historyFile_(std::move(historyFile)), keep_(std::move(keep)) {
    theCompleter = std::move(completer);
    rl_initialize();
    rl_attempted_completion_function = complete;
    static char breaks[] = " \t";
    rl_completer_word_break_characters = breaks;
    using_history();
    stifle_history(kHistoryLines);
    (void)read_history(historyFile_.c_str());  // the first shell has none
}

bool LineEditor::read(const std::string& prompt, std::string& line) {
    if (isatty(STDIN_FILENO) == 0) return static_cast<bool>(std::getline(std::cin, line));
    const Interrupt interrupt;
    const std::unique_ptr<char, decltype(&std::free)> text(readline(prompt.c_str()), &std::free);
    if (text == nullptr) {
        std::cout << '\n';
        line.clear();
        // An interrupt gives up the line, not the shell.
        return Interrupt::happened();
    }
    line = text.get();
    if (line.find_first_not_of(" \t") == std::string::npos || line == last_ || !keep_(line)) return true;
    last_ = line;
    (void)add_history(line.c_str());            // a full history forgets the oldest
    (void)write_history(historyFile_.c_str());  // a read-only state folder keeps none
    return true;
}

#else

LineEditor::LineEditor(std::string historyFile, Complete, Keep keep)
    : historyFile_(std::move(historyFile)), keep_(std::move(keep)) {}

bool LineEditor::read(const std::string& prompt, std::string& line) {
    if (isatty(STDIN_FILENO) != 0) std::cout << prompt << std::flush;
    return static_cast<bool>(std::getline(std::cin, line));
}

#endif

}  // namespace quorvel::console
