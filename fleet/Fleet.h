#pragma once

// Bringing a fleet up, looking at it and ending it.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "fleet/Plan.h"

namespace quorvel::fleet {

/// Starts the agent of a board that is up. Returns its Endpoint ID. Throws GatewayError.
using StartAgent = std::function<std::string(const launch::Options& options)>;

struct UpOrder {
    Plan plan;             ///< as it is wanted
    double perSecond = 0;  ///< the most gateways that are started in a second; 0: no limit
    StartAgent startAgent;

    /// Called for each gateway with the outcome of its start; `of` is how many are started in all.
    std::function<void(unsigned number, const Start& start, unsigned of)> started;
    std::function<bool()> stop;
};

/// How many of a fleet's gateways came up, and which did not.
struct UpResult {
    unsigned asked = 0;
    unsigned up = 0;
    std::map<unsigned, std::string> failed;  ///< the reason by gateway
};

/// Brings the gateways of the plan up: all, or those which are not up yet when the fleet is there. One that fails does
/// not stop the others. Throws FleetError when a fleet with other settings is there, or its folder cannot be used.
[[nodiscard]] UpResult bringUp(const launch::Options& options, const UpOrder& order);

struct DownOrder {
    std::function<void(unsigned done, unsigned of)> progress;
};

/// Counts of a fleet that was ended.
struct DownResult {
    unsigned ended = 0;   ///< gateways that were up
    unsigned killed = 0;  ///< processes that did not end by themselves
};

/// Ends all gateways and their agents and removes the fleet's folder, whatever the command that started them has left.
/// Throws FleetError when there is no fleet, or a process cannot be ended.
[[nodiscard]] DownResult takeDown(const launch::Options& options, const DownOrder& order);

/// A fleet at one moment.
struct Status {
    Plan plan;
    std::string folder;
    unsigned up = 0;
    unsigned agents = 0;              ///< that run
    unsigned connected = 0;           ///< agents with a transport that is up
    std::uint64_t subscriptions = 0;  ///< of all controllers
    double messagesPerSecond = 0;     ///< sent and received by all agents
    double slowestStart = 0;          ///< seconds
    unsigned slowestGateway = 0;
    std::size_t processes = 0;
    double processor = 0;                    ///< share of one processor
    double processorSeconds = 0;             ///< since the gateways started
    std::uint64_t memory = 0;                ///< KiB, shared pages divided
    std::uint64_t available = 0;             ///< KiB that the machine has left
    std::map<unsigned, std::string> failed;  ///< gateways that are not up, or without their agent, and why
};

/// Looks at every gateway twice, at least `seconds` apart, to count messages and processor time. Throws FleetError when
/// there is no fleet.
[[nodiscard]] Status lookAt(const launch::Options& options, double seconds, const std::function<bool()>& stop);

}  // namespace quorvel::fleet
