#pragma once

#include <string>

#include "gateway/hostd/protocol/Records.h"

namespace quorvel::hostd {

/// Hands a JSON command to the WLAN manager's simulation. Returns its answer, or the empty text when there is none.
/// Callable from any thread.
[[nodiscard]] std::string controlSimulation(const std::string& command);

/// Hands the simulation a command that has no members but its operation. Returns its answer, or null.
[[nodiscard]] protocol::Json askSimulation(const char* operation);

/// Has the board's time go on by `seconds`. Returns the answer, or null when there is no manager.
[[nodiscard]] protocol::Json advanceSimulation(unsigned seconds);

}  // namespace quorvel::hostd
