#pragma once

#include <string>

namespace quorvel::hostd {

/// Hands a JSON command to the WLAN manager's simulation. Returns its answer, or the empty text when there is none.
[[nodiscard]] std::string controlSimulation(const std::string& command);

}  // namespace quorvel::hostd
