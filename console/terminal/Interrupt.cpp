#include "console/terminal/Interrupt.h"

#include <unistd.h>

namespace quorvel::console {
namespace {

volatile std::sig_atomic_t interrupted = 0;  // the signal
unsigned living = 0;

void remember(int signal) {
    interrupted = signal;
}

}  // namespace

Interrupt::Interrupt() : outermost_(living++ == 0) {
    if (!outermost_) return;
    interrupted = 0;
    struct sigaction action {};
    action.sa_handler = remember;
    (void)sigaction(SIGINT, &action, &oldInterrupt_);
    (void)sigaction(SIGTERM, &action, &oldTerminate_);
}

Interrupt::~Interrupt() {
    --living;
    if (!outermost_) return;
    (void)sigaction(SIGINT, &oldInterrupt_, nullptr);
    (void)sigaction(SIGTERM, &oldTerminate_, nullptr);
}

bool Interrupt::happened() {
    return interrupted != 0;
}

void Interrupt::endProgram() {
    const int signal = interrupted == 0 ? SIGINT : interrupted;
    (void)std::signal(signal, SIG_DFL);
    (void)std::raise(signal);
    _exit(128 + signal);
}

}  // namespace quorvel::console
