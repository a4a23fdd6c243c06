#include "gateway/manager/Clock.h"

#include <chrono>
#include <utility>

namespace quorvel::manager {

BoardClock::BoardClock(std::function<Milliseconds()> real) : real_(std::move(real)), offset_(-real_()) {}

Milliseconds BoardClock::now() const {
    return virtual_ ? offset_ : real_() + offset_;
}

void BoardClock::advance(Milliseconds by) {
    offset_ += by;
}

void BoardClock::makeVirtual() {
    offset_ = now();
    virtual_ = true;
}

void BoardClock::startVirtual() {
    offset_ = 0;
    virtual_ = true;
}

Milliseconds realMilliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace quorvel::manager
