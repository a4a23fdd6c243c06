#pragma once

// Playing one scenario on many gateways.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "fleet/Plan.h"
#include "scenario/Scenario.h"

namespace quorvel::fleet {

struct PlayOrder {
    std::string file;                   ///< the scenario
    bool shares = false;                ///< divide it instead of playing the whole on each
    std::optional<unsigned> ownBoards;  ///< play on so many boards of its own instead of on the fleet that is up
    std::uint64_t seed = 1;             ///< of the boards of its own

    /// Called for each gateway that has finished; `of` is how many play.
    std::function<void(unsigned number, const Json& outcome, unsigned of)> finished;
    std::function<bool()> stop;
};

/// How a gateway's play ended.
struct PlayOutcome {
    unsigned gateway = 0;
    bool passed = false;
    unsigned held = 0;
    unsigned failed = 0;                ///< expectations that did not hold, and steps that failed
    std::vector<std::string> mistakes;  ///< the first of them
    std::string error;                  ///< why it could not be played to its end
};

struct PlayResult {
    std::string scenario;
    std::vector<PlayOutcome> outcomes;  ///< in the order of the gateways
    double seconds = 0;

    [[nodiscard]] bool passed() const;
};

/// Plays the scenario: on the gateways of the fleet, in real time and all at once, or on boards of its own with the
/// same identities, whose clocks run ahead, some at once. Throws FleetError when there is no fleet,
/// scenario::ScenarioError for a file that is not a scenario.
[[nodiscard]] PlayResult playOnFleet(const launch::Options& options, const PlayOrder& order);

/// Returns the JUnit form: a test case for each gateway.
[[nodiscard]] std::string junit(const PlayResult& result);

}  // namespace quorvel::fleet
