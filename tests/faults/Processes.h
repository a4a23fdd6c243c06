#pragma once

#include <sys/types.h>

#include <string>

// Finds processes of a board through /proc, from outside the board.
namespace quorvel::faults_test {

// Returns the WLAN manager of the board whose state folder is `state`, or 0 when it runs none.
[[nodiscard]] pid_t managerOf(const std::string& state);

// Returns the letter by which the kernel tells what a process is doing (`T`: it is stopped), or a blank when there is
// none.
[[nodiscard]] char stateOf(pid_t process);

}  // namespace quorvel::faults_test
