#include "selftest/Watch.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>

namespace quorvel::selftest {
namespace {

// Read by the signal handler, hence no std::string.
char current[160] = "loading the plug-in";

void say(const char* text) {
    (void)!write(STDERR_FILENO, text, std::strlen(text));  // nowhere else to say it
}

void onSignal(int signal) {
    say(signal == SIGALRM ? "quorvel-wifi-selftest: the plug-in did not return from "
                          : "quorvel-wifi-selftest: the plug-in crashed in ");
    say(current);
    switch (signal) {
        case SIGSEGV:
            say(" (invalid memory access)\n");
            break;
        case SIGBUS:
            say(" (bus error)\n");
            break;
        case SIGFPE:
            say(" (arithmetic error)\n");
            break;
        case SIGILL:
            say(" (illegal instruction)\n");
            break;
        case SIGABRT:
            say(" (aborted)\n");
            break;
        default:
            say("\n");
    }
    _exit(1);
}

}  // namespace

void watch(unsigned seconds) {
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGALRM})
        (void)std::signal(signal, onSignal);
    (void)alarm(seconds);
}

void nowCalling(const std::string& function) {
    const std::size_t length = std::min(function.size(), sizeof current - 1);
    std::memcpy(current, function.data(), length);
    current[length] = '\0';
}

}  // namespace quorvel::selftest
