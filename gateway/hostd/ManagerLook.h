#pragma once

#include <sys/types.h>

#include <chrono>

#include "common/Descriptor.h"

namespace quorvel::hostd {

/// Decides when to look whether the WLAN manager is there: at once when its process has ended, soon after something has
/// happened on the board, and otherwise seldom, since no call tells that a process has been stopped.
class ManagerLook {
  public:
    using Steady = std::chrono::steady_clock;

    /// Begins or ends looking. Looking begins with a look.
    void setWanted(bool wanted);

    /// Takes in that something has happened that may have been the manager's end.
    void happened();

    /// Returns the descriptor to poll, which becomes readable when the manager ends; negative when there is none.
    [[nodiscard]] int descriptor() const {
        return wanted_ ? process_.get() : -1;
    }
    /// Takes in that the descriptor is readable.
    void ended();

    [[nodiscard]] bool isDue() const {
        return wanted_ && Steady::now() >= next_;
    }

    /// Takes in that a look has found the manager's process, or 0 for none that does its work.
    void looked(pid_t manager);

    /// Returns the time until the next look, in milliseconds; -1 when none is wanted.
    [[nodiscard]] int patience() const;

  private:
    bool wanted_ = false;
    Steady::time_point last_{};
    Steady::time_point next_{};
    pid_t manager_ = 0;
    common::Descriptor process_;
};

}  // namespace quorvel::hostd
