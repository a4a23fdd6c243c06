#pragma once

#include <csignal>

namespace quorvel::console {

/// While one lives, an interrupt from the keyboard (or a request to end) is remembered instead of ending the program.
class Interrupt {
  public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    [[nodiscard]] static bool happened();

  private:
    struct sigaction oldInterrupt_ {};
    struct sigaction oldTerminate_ {};
};

}  // namespace quorvel::console
