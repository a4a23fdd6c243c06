#pragma once

#include <string>

namespace quorvel::board {

/// Starts a task of the driver's, called `name`, which lives as long as the board. Returns 0 or the system's error.
[[nodiscard]] int startDriverTask(const std::string& name);

/// Tells whether a task of that name runs.
[[nodiscard]] bool driverTaskRuns(const std::string& name);

}  // namespace quorvel::board
