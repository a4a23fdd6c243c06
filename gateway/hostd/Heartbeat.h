#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>

namespace quorvel::hostd {

/// Distinguishes a request that takes its time from one that never ends: a worker beats, announces how long it is about
/// to wait, and a watcher asks whether the worker is overdue.
class Heartbeat {
  public:
    /// How long a worker may be silent beyond what it has announced.
    static constexpr std::chrono::milliseconds kPatience{2000};

    /// Called by the worker before and after each step.
    void beat() {
        expect(std::chrono::milliseconds::zero());
    }

    /// Called by the worker before it is silent for about `time`.
    void expect(std::chrono::milliseconds time) {
        deadline_.store(now() + (time + kPatience).count());
    }

    /// Called by the worker when it rests.
    void rest() {
        deadline_.store(kNever);
    }

    [[nodiscard]] bool overdue() const {
        return now() > deadline_.load();
    }

  private:
    static constexpr std::int64_t kNever = INT64_MAX;

    static std::int64_t now() {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
                   std::chrono::steady_clock::now().time_since_epoch())
            .count();
    }

    std::atomic<std::int64_t> deadline_{kNever};
};

}  // namespace quorvel::hostd
