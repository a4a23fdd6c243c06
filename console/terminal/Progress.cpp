#include "console/terminal/Progress.h"

#include <iostream>

namespace quorvel::console {
namespace {

// Work that ends sooner shows no progress.
constexpr std::chrono::milliseconds kMoment{300};

}  // namespace

Progress::~Progress() {
    clear();
}

void Progress::say(const std::string& text) {
    if (!style_.onTerminal()) return;
    // A line that wraps could not be taken back.
    const std::string fitting = cutTo(text, style_.columns() > 0 ? style_.columns() - 1 : text.size());
    std::cerr << "\r\033[K" << style_.dress(fitting, Colour::kFaint) << std::flush;
    shown_ = true;
}

void Progress::await(std::string text) {
    awaited_ = std::move(text);
    since_ = std::chrono::steady_clock::now();
}

void Progress::expect(unsigned seconds) {
    expected_ = seconds;
    since_ = std::chrono::steady_clock::now();
    tick();
}

void Progress::tick() {
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - since_;
    if (expected_ == 0) {
        if (!awaited_.empty() && !shown_ && passed > kMoment) say(awaited_);
        return;
    }
    say(bar(passed.count() / expected_, 30) + " " + std::to_string(static_cast<unsigned>(passed.count())) + " of " +
        std::to_string(expected_) + " s");
}

void Progress::share(double done, double whole, const std::string& text) {
    if (since_ == std::chrono::steady_clock::time_point()) since_ = std::chrono::steady_clock::now();
    if (std::chrono::steady_clock::now() - since_ > kMoment) say(bar(whole > 0 ? done / whole : 0, 30) + " " + text);
}

void Progress::clear() {
    if (shown_) std::cerr << "\r\033[K" << std::flush;
    shown_ = false;
}

}  // namespace quorvel::console
