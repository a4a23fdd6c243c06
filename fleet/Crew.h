#pragma once

// Much alike work, done by several processes: starting a board waits for other processes most of the time.

#include <functional>
#include <string>
#include <vector>

#include "fleet/Identity.h"

namespace quorvel::fleet {

struct CrewOrder {
    std::vector<unsigned> numbers;  ///< one piece of work each
    unsigned hands = 1;             ///< the most that are done at once
    double perSecond = 0;           ///< the most that are begun in a second; 0: no limit

    /// Does a piece of work, in a process of the crew. What it returns, or {"error": what it throws}, comes to `done`.
    std::function<Json(unsigned number)> work;
    /// Called in the caller's process for each piece that has been done.
    std::function<void(unsigned number, const Json& result)> done;
    /// Asked some ten times a second: true begins no further work. What has begun is completed.
    std::function<bool()> stop;
};

/// Returns how many pieces of work this machine does well at once.
[[nodiscard]] unsigned usualHands();

/// Has the work done. Returns when all of it is, or when what had begun is after `stop`. A process of the crew that
/// dies costs the piece that it had: its result is an error.
void runCrew(const CrewOrder& order);

}  // namespace quorvel::fleet
