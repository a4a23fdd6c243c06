#include "Progress.h"

#include <iostream>

namespace quorvel::console {

Progress::~Progress() {
    clear();
}

void Progress::say(const std::string& text) {
    if (!style_.onTerminal()) return;
    std::cerr << "\r\033[K" << style_.dress(text, Colour::kFaint) << std::flush;
    shown_ = true;
}

void Progress::expect(unsigned seconds) {
    expected_ = seconds;
    since_ = std::chrono::steady_clock::now();
    tick();
}

void Progress::tick() {
    if (expected_ == 0) return;
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - since_;
    say(bar(passed.count() / expected_, 30) + " " + std::to_string(static_cast<unsigned>(passed.count())) + " of " +
        std::to_string(expected_) + " s");
}

void Progress::clear() {
    if (shown_) std::cerr << "\r\033[K" << std::flush;
    shown_ = false;
}

}  // namespace quorvel::console
