#include "gateway/hostd/Clock.h"

#include <algorithm>
#include <cmath>

namespace quorvel::hostd {
namespace {

// An answer is a little older than the moment at which it is taken in.
constexpr double kUsualDelay = 0.1;

}  // namespace

double Clock::timeNow() const {
    if (virtual_) return base_;
    return base_ + std::chrono::duration<double>(Steady::now() - since_).count();
}

void Clock::learn(double managerTime, bool isVirtual) {
    bool jumped = false;
    {
        const std::lock_guard lock(mutex_);
        const double expected = timeNow();
        // Board time never goes back.
        base_ = std::max(offset_ + managerTime, expected);
        since_ = Steady::now();
        jumped = base_ - expected > (isVirtual ? 0 : kUsualDelay) || virtual_ != isVirtual;
        virtual_ = isVirtual;
    }
    if (jumped) jumped_();
}

void Clock::managerStarted() {
    const std::lock_guard lock(mutex_);
    base_ = timeNow();
    since_ = Steady::now();
    offset_ = base_;
}

protocol::BoardClock Clock::now() const {
    const std::lock_guard lock(mutex_);
    return {timeNow(), virtual_};
}

std::chrono::milliseconds Clock::until(double at) const {
    const std::lock_guard lock(mutex_);
    const double left = at - timeNow();
    if (left <= 0) return std::chrono::milliseconds::zero();
    if (virtual_) return std::chrono::milliseconds::max();
    constexpr double kLongest = 86400;
    return std::chrono::milliseconds(static_cast<std::int64_t>(std::ceil(std::min(left, kLongest) * 1000)));
}

}  // namespace quorvel::hostd
