#include "gateway/hostd/BoardTime.h"

#include <cerrno>
#include <ctime>
#include <string>

#include "gateway/hostd/BoardFacts.h"
#include "gateway/hostd/Simulation.h"

namespace quorvel::hostd {
namespace {

BoardTime& boardTime() {
    static BoardTime time;
    return time;
}

unsigned wait(unsigned seconds) {
    constexpr unsigned kGlances = 10;  // a second
    constexpr long kBetween = 1'000'000'000 / kGlances;
    if (boardTime().waiting) boardTime().waiting(seconds);
    for (unsigned left = seconds * kGlances; left > 0; --left) {
        // The plug-in waits for the manager's work.
        if (!managerAbsence().empty()) return (left + kGlances - 1) / kGlances;
        timespec rest{0, kBetween};
        while (nanosleep(&rest, &rest) != 0 && errno == EINTR) {
        }
    }
    return 0;
}

unsigned runAhead(unsigned seconds) {
    const protocol::Json answer = advanceSimulation(seconds);
    // Without a manager there is no clock to advance.
    if (!answer.is_object()) return wait(seconds);
    if (boardTime().advanced) boardTime().advanced(answer);
    return 0;
}

}  // namespace

void setBoardTime(BoardTime time) {
    boardTime() = std::move(time);
}

unsigned sleepOnBoard(unsigned seconds) {
    return boardTime().realTime ? wait(seconds) : runAhead(seconds);
}

}  // namespace quorvel::hostd
