#pragma once

#include <chrono>
#include <functional>
#include <mutex>

#include "gateway/hostd/protocol/Records.h"

namespace quorvel::hostd {

/// The board's time as the host process knows it without asking: the WLAN manager's answers about time pass through it.
/// A manager that is launched anew begins at 0; board time goes on. Callable from any thread.
class Clock {
  public:
    using Steady = std::chrono::steady_clock;

    /// `isVirtual` holds until the manager says otherwise.
    explicit Clock(bool isVirtual) : virtual_(isVirtual) {}

    /// Has `jumped` called, from any thread, after each jump. Call it before there are threads that use the clock.
    void onJump(std::function<void()> jumped) {
        jumped_ = std::move(jumped);
    }

    /// Takes in the manager's time, in seconds, and whether its clock is virtual.
    void learn(double managerTime, bool isVirtual);

    /// Takes in that a new manager begins now, at 0.
    void managerStarted();

    [[nodiscard]] protocol::BoardClock now() const;

    /// Returns how long it is, in real time, until board time is `at`; the largest duration for a virtual clock that
    /// has not come so far.
    [[nodiscard]] std::chrono::milliseconds until(double at) const;

  private:
    [[nodiscard]] double timeNow() const;

    mutable std::mutex mutex_;
    double base_ = 0;  // board time at since_
    Steady::time_point since_ = Steady::now();
    double offset_ = 0;  // board time when the present manager began
    bool virtual_;
    std::function<void()> jumped_ = [] {};
};

}  // namespace quorvel::hostd
