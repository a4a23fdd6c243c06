#pragma once

#include <string>
#include <vector>

#include "gateway/board/Board.h"
#include "gateway/hostd/protocol/Requests.h"

namespace quorvel::hostd {

/// Returns facts about the board that no parameter says.
[[nodiscard]] protocol::BoardFacts boardFacts(const board::Places& places);

/// Returns what the wireless interfaces have counted.
[[nodiscard]] std::vector<protocol::InterfaceCounters> interfaceCounters(const board::Places& places);

/// Asks the WLAN manager what is on the air. Lists are empty while it does not answer; the clock is left alone.
[[nodiscard]] protocol::LivePicture lookAround(const board::Places& places);

/// Says what the WLAN manager is doing, for a request that it does not answer.
[[nodiscard]] std::string managerHealth();

/// Says that the WLAN manager is gone or stopped, or returns the empty text. Does not ask the manager.
[[nodiscard]] std::string managerAbsence();

/// Says what is wrong with a WLAN manager that does not answer, or nothing. Asks it, unless it is stopped.
[[nodiscard]] std::string managerTrouble();

}  // namespace quorvel::hostd
