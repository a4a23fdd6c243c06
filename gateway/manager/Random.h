#pragma once

#include <cstdint>

namespace quorvel::manager {

/// A small seeded generator (splitmix64) that gives the same sequence on every platform.
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    [[nodiscard]] std::uint64_t next() {
        state_ += 0x9e3779b97f4a7c15ULL;
        std::uint64_t z = state_;
        z = (z ^ (z >> 30U)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27U)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31U);
    }

    /// A number from low to high, both included; low must not be above high.
    [[nodiscard]] int between(int low, int high) {
        const auto width = static_cast<std::uint64_t>(static_cast<std::int64_t>(high) - low) + 1;
        return static_cast<int>(low + static_cast<std::int64_t>(next() % width));
    }

  private:
    std::uint64_t state_;
};

}  // namespace quorvel::manager
