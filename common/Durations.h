#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace quorvel::common {

/// Upper bounds, in seconds, of the classes into which durations are counted. A last class has no bound.
inline constexpr std::array<double, 12> kDurationBounds{0.00001, 0.00003, 0.0001, 0.0003, 0.001, 0.003,
                                                        0.01,    0.03,    0.1,    0.3,    1,     10};

/// Counts durations by classes. Several threads may add and read.
class Durations {
  public:
    using Clock = std::chrono::steady_clock;
    /// How many durations fell into each class, not added up.
    using Classes = std::array<std::uint64_t, kDurationBounds.size() + 1>;

    /// Counts one duration. A class includes its bound.
    void add(Clock::duration duration) {
        const double seconds = std::chrono::duration<double>(duration).count();
        const auto bound = std::lower_bound(kDurationBounds.begin(), kDurationBounds.end(), seconds);
        classes_[static_cast<std::size_t>(bound - kDurationBounds.begin())].fetch_add(1, std::memory_order_relaxed);
        nanoseconds_.fetch_add(
            static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(duration).count()),
            std::memory_order_relaxed);
    }

    [[nodiscard]] Classes classes() const {
        Classes result{};
        for (std::size_t i = 0; i < result.size(); ++i)
            result[i] = classes_[i].load(std::memory_order_relaxed);
        return result;
    }

    /// Returns the sum of all durations, in seconds.
    [[nodiscard]] double seconds() const {
        return static_cast<double>(nanoseconds_.load(std::memory_order_relaxed)) / 1e9;
    }

  private:
    std::array<std::atomic<std::uint64_t>, kDurationBounds.size() + 1> classes_{};
    std::atomic<std::uint64_t> nanoseconds_ = 0;
};

/// Counts the time from its construction to its end.
class Stopwatch {
  public:
    explicit Stopwatch(Durations& durations) : durations_(durations), start_(Durations::Clock::now()) {}
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;
    ~Stopwatch() {
        durations_.add(Durations::Clock::now() - start_);
    }

  private:
    Durations& durations_;
    const Durations::Clock::time_point start_;
};

}  // namespace quorvel::common
