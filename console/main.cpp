// quorvel-wifi: what a person types and sees.
#include <clocale>
#include <csignal>
#include <string>
#include <vector>

#include "Completion.h"
#include "Dispatcher.h"

int main(int argc, char** argv) {
    (void)std::setlocale(LC_CTYPE, "");
    (void)std::signal(SIGPIPE, SIG_IGN);
    quorvel::console::Session session{quorvel::console::Options{}};
    std::vector<std::string> words(argv + 1, argv + argc);
    // Asked by the completion scripts of shells.
    if (!words.empty() && words.front() == "__complete") {
        words.erase(words.begin());
        return quorvel::console::printCompletions(session, words);
    }
    return quorvel::console::dispatch(std::move(words), session);
}
