#pragma once

#include <functional>
#include <string>
#include <vector>

#include "gateway/hostd/protocol/Records.h"

namespace quorvel::hostd {

/// The exit status with which a host process asks the process outside the board to start the board again.
inline constexpr int kPowerCycleStatus = 86;

/// Carries the cause of a power cycle from the host process on the board to the process outside, which starts the same
/// program again.
class PowerCycle {
  public:
    /// `arguments` are this program's own, `emulator` the words in front of programs for another processor.
    PowerCycle(std::vector<std::string> arguments, std::vector<std::string> emulator);
    PowerCycle(const PowerCycle&) = delete;
    PowerCycle& operator=(const PowerCycle&) = delete;
    ~PowerCycle();

    /// The descriptor that the process outside must keep.
    [[nodiscard]] int descriptor() const {
        return ends_[0];
    }

    /// Leaves the next life's facts for the process outside. Called on the board.
    void leave(const protocol::Boot& boot) const;

    /// Starts the program again if `status` asks for it; returns otherwise, or when it cannot be started. Called
    /// outside, when the board is off.
    void startAgain(int status) const;

  private:
    std::vector<std::string> arguments_;
    std::vector<std::string> emulator_;
    int ends_[2] = {-1, -1};
};

/// Returns the file with the saved configuration, which a factory reset removes, or the empty text.
[[nodiscard]] std::string savedConfiguration();

}  // namespace quorvel::hostd
