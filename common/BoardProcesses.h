#pragma once

#include <sys/types.h>

#include <vector>

namespace quorvel::common {

/// Returns the ids of the processes that have `process` as their parent. Reads little more than they are, where the
/// kernel lists them; else all processes.
[[nodiscard]] std::vector<pid_t> childrenOf(pid_t process);

/// Returns the ids of the board's processes: those below its first one, which $QUORVEL_BOARD_FIRST_PROCESS names.
/// Returns all processes in sight when the variable is not set.
[[nodiscard]] std::vector<pid_t> boardProcesses();

}  // namespace quorvel::common
