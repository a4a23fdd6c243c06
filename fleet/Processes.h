#pragma once

// The processes of a fleet, found in the process table: also those of a command that was killed.

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace quorvel::fleet {

struct Process {
    pid_t id = 0;
    unsigned gateway = 0;
    bool begins = false;      ///< it was started for the gateway's folder; the others descend from it
    std::uint64_t ticks = 0;  ///< processor time so far, in clock ticks
};

/// Returns the processes of the gateways whose state folders lie in `folder`: those that were started with such a state
/// folder, and all below them or in their sessions.
[[nodiscard]] std::vector<Process> findProcesses(const std::string& folder);

/// Returns the memory that the processes take, shared pages divided among those that share them, in KiB. Processes
/// that may not be looked into count as nothing.
[[nodiscard]] std::uint64_t proportionalMemory(const std::vector<Process>& processes);

/// Returns the memory that the machine can still give to programs, in KiB.
[[nodiscard]] std::uint64_t availableMemory();

/// Kills the processes and waits for at most `milliseconds` until none of the folder's is left. Returns whether none
/// is.
[[nodiscard]] bool endProcesses(const std::string& folder, int milliseconds);

}  // namespace quorvel::fleet
