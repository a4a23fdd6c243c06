#pragma once

#include <CLI/CLI.hpp>
#include <array>
#include <cstdio>
#include <functional>
#include <string>

#include "console/session/Session.h"
#include "fleet/Fleet.h"
#include "gateway/launch/UspAgent.h"

namespace quorvel::console {

struct VerbContext;

/// The agents that a fleet's gateways get.
struct FleetAgents {
    Json settings = nullptr;  ///< for the fleet's plan; null: no agents
    fleet::StartAgent start;  ///< empty: no agents
};

/// Checks the options for a fleet's agents and prints warnings about them. Topics that are not given get the gateway's
/// Endpoint ID at their end, so that every gateway has its own. Throws CLI::ValidationError or GatewayError.
[[nodiscard]] FleetAgents resolveAgents(const Session& session, launch::UspOptions usp);

/// Returns a number with so many digits behind its point.
[[nodiscard]] inline std::string decimal(double value, int digits) {
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%.*f", digits, value);
    return text.data();
}

/// Plays a scenario on the fleet that is up and prints the outcome. Returns the exit status.
[[nodiscard]] int playOnFleet(Session& session, const std::string& file);

/// Adds the verbs `run` and `churn`. Returns what does the one that was parsed and gives its exit status.
[[nodiscard]] std::function<int()> addFleetWork(VerbContext& context, CLI::App* fleet);

}  // namespace quorvel::console
