#pragma once

#include <cstdint>
#include <functional>

namespace quorvel::manager {

using Milliseconds = std::int64_t;

/// The board's time since power-on. It follows real time plus whatever it has been advanced, or, once it is virtual,
/// does not move between advances.
class BoardClock {
  public:
    /// `real` gives monotonic milliseconds; board time starts at 0 now.
    explicit BoardClock(std::function<Milliseconds()> real);

    [[nodiscard]] Milliseconds now() const;
    void advance(Milliseconds by);
    void makeVirtual();
    /// Makes the clock virtual from power-on: board time is 0 until the first advance.
    void startVirtual();
    [[nodiscard]] bool isVirtual() const {
        return virtual_;
    }

  private:
    std::function<Milliseconds()> real_;
    Milliseconds offset_;
    bool virtual_ = false;
};

/// Returns monotonic real time in milliseconds.
[[nodiscard]] Milliseconds realMilliseconds();

}  // namespace quorvel::manager
