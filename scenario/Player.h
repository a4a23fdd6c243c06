#pragma once

#include <functional>

#include "scenario/Result.h"
#include "scenario/Stage.h"

namespace quorvel::scenario {

/// Plays the scenario on a board of its own, or on the one that is up. Each step and each expectation goes to `onEntry`
/// once it is decided. With `record` the result has a recording. Throws GatewayError when the board cannot be powered
/// up or is lost, or when `stop`, which is asked as time goes on, says so.
[[nodiscard]] Result play(const Scenario& scenario, const launch::Options& options, std::uint64_t seed,
                          const std::function<void(const Entry&)>& onEntry, const std::function<bool(Time now)>& stop,
                          Venue venue = Venue::kNewBoard, bool record = false);

}  // namespace quorvel::scenario
