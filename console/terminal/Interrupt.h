#pragma once

#include <csignal>

namespace quorvel::console {

/// Thrown where a command is given up because of an Interrupt.
struct Interrupted {};

/// While one lives, an interrupt from the keyboard (or a request to end) is remembered instead of ending the program.
/// They nest: what the outer one has remembered stays remembered.
class Interrupt {
  public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    [[nodiscard]] static bool happened();

    /// Throws Interrupted after an interrupt that is not for anybody further out to deal with.
    void giveUpIfMine() const {
        if (outermost_ && happened()) throw Interrupted{};
    }

    /// Ends the program as the interrupt would have done.
    [[noreturn]] static void endProgram();

  private:
    bool outermost_;
    struct sigaction oldInterrupt_ {};
    struct sigaction oldTerminate_ {};
};

}  // namespace quorvel::console
