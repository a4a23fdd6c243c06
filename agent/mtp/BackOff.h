#pragma once

// When a lost connection is tried again: the standard's exponential back-off with a random part.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <random>

namespace quorvel::agent {

/// Draws the waits between attempts: the n-th lies between m·k^(n-1) and m·k^n seconds, n ends at 10.
class BackOff {
  public:
    /// `minimum` is m in seconds, `multiplier` is k in thousandths, `longest` bounds every wait (0: no bound), `seed`
    /// starts the draws.
    BackOff(std::uint32_t minimum, std::uint32_t multiplier, std::uint32_t longest, std::uint64_t seed)
        : minimum_(minimum), multiplier_(multiplier), longest_(longest), random_(seed) {}

    /// Returns how long to wait before the next attempt, and counts it.
    [[nodiscard]] std::chrono::milliseconds next() {
        attempts_ = std::min(attempts_ + 1, kMostAttempts);
        const double factor = multiplier_ / 1000.0;
        const double low = minimum_ * std::pow(factor, attempts_ - 1);
        const double drawn = std::uniform_real_distribution<double>(low, low * factor)(random_);
        const double seconds = longest_ == 0 ? drawn : std::min(drawn, static_cast<double>(longest_));
        return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
    }

    /// Starts again from the shortest wait, after a success.
    void reset() {
        attempts_ = 0;
    }

    /// Returns how many attempts failed since the last success; 10 counts for all later ones.
    [[nodiscard]] int attempts() const {
        return attempts_;
    }

  private:
    static constexpr int kMostAttempts = 10;
    std::uint32_t minimum_;
    std::uint32_t multiplier_;
    std::uint32_t longest_;
    std::mt19937_64 random_;
    int attempts_ = 0;
};

}  // namespace quorvel::agent
