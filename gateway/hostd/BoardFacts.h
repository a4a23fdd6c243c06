#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace quorvel::hostd {

/// Returns what can be seen of the board from the host process: name and identifier, chips found at start-up, driver
/// tasks, the WLAN manager's process, interfaces.
[[nodiscard]] nlohmann::ordered_json boardFacts(const std::string& boardFile);

/// Returns a sentence on what the WLAN manager's process is doing, for a request that got no answer.
[[nodiscard]] std::string managerHealth();

/// Says in the same words that the WLAN manager is stopped or gone, or nothing. Asks nobody.
[[nodiscard]] std::string managerAbsence();

/// Returns the same when the manager is gone, stopped or silent; else the empty text. Asks it.
[[nodiscard]] std::string managerTrouble();

}  // namespace quorvel::hostd
