#include "Interrupt.h"

namespace quorvel::console {
namespace {

volatile std::sig_atomic_t interrupted = 0;

void remember(int) {
    interrupted = 1;
}

}  // namespace

Interrupt::Interrupt() {
    interrupted = 0;
    struct sigaction action {};
    action.sa_handler = remember;
    (void)sigaction(SIGINT, &action, &oldInterrupt_);
    (void)sigaction(SIGTERM, &action, &oldTerminate_);
}

Interrupt::~Interrupt() {
    (void)sigaction(SIGINT, &oldInterrupt_, nullptr);
    (void)sigaction(SIGTERM, &oldTerminate_, nullptr);
}

bool Interrupt::happened() {
    return interrupted != 0;
}

}  // namespace quorvel::console
