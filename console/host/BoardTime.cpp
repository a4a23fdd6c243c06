#include "BoardTime.h"

#include <cerrno>
#include <ctime>
#include <string>

#include "Simulation.h"

namespace quorvel::host {
namespace {

BoardTime& boardTime() {
    static BoardTime time;
    return time;
}

unsigned wait(unsigned seconds) {
    if (boardTime().waiting) boardTime().waiting(seconds);
    timespec left{static_cast<time_t>(seconds), 0};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
    return 0;
}

unsigned runAhead(unsigned seconds) {
    const std::string answer = controlSimulation("{\"op\":\"time\",\"advance\":" + std::to_string(seconds) + "}");
    // Without a manager there is no clock to advance.
    return answer.empty() ? wait(seconds) : 0;
}

}  // namespace

void setBoardTime(BoardTime time) {
    boardTime() = std::move(time);
}

unsigned sleepOnBoard(unsigned seconds) {
    return boardTime().realTime ? wait(seconds) : runAhead(seconds);
}

}  // namespace quorvel::host
