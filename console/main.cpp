// quorvel-wifi: the command line of the simulated gateway.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "console/Dispatcher.h"

namespace {

// Fills the places of closed inputs and outputs, so that no file opened later takes one; writing to them fails.
void fillClosedPlaces() {
    for (int place = open("/dev/null", O_RDONLY); place >= 0; place = open("/dev/null", O_RDONLY)) {
        if (place <= STDERR_FILENO) continue;
        (void)close(place);
        return;
    }
}

// Fails when output was lost. EPIPE: the reader quit; stay silent.
int withOutputChecked(int status) {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
    if (errno != EPIPE) std::cerr << "quorvel-wifi: cannot write to standard output: " << std::strerror(errno) << '\n';
    return status == quorvel::console::kDone ? quorvel::console::kFailed : status;
}

}  // namespace

int main(int argc, char** argv) {
    fillClosedPlaces();
    (void)std::setlocale(LC_CTYPE, "");
    (void)std::signal(SIGPIPE, SIG_IGN);
    quorvel::console::Session session{quorvel::console::Options{}};
    std::vector<std::string> words(argv + 1, argv + argc);
    // The completion scripts of shells call this.
    if (!words.empty() && words.front() == "__complete") {
        words.erase(words.begin());
        return quorvel::console::printCompletions(words, session);
    }
    return withOutputChecked(quorvel::console::dispatch(std::move(words), session));
}
