// quorvel-wifi: what a person types and sees.
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

// What is opened later must not be taken for an input or output that somebody has closed; writing to it fails.
void fillClosedPlaces() {
    for (int place = open("/dev/null", O_RDONLY); place >= 0; place = open("/dev/null", O_RDONLY)) {
        if (place <= STDERR_FILENO) continue;
        (void)close(place);
        return;
    }
}

// What did not arrive is not done. Who closes a pipe has seen enough and needs no words.
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
    // Asked by the completion scripts of shells.
    if (!words.empty() && words.front() == "__complete") {
        words.erase(words.begin());
        return quorvel::console::printCompletions(words, session);
    }
    return withOutputChecked(quorvel::console::dispatch(std::move(words), session));
}
