#pragma once

// Stations that come and go, and gateways that reboot, all over a fleet.

#include <cstdint>
#include <functional>

#include "fleet/Plan.h"

namespace quorvel::fleet {

/// The rates are events a second over the whole fleet, evenly spaced.
struct ChurnOrder {
    double joins = 0;
    double leaves = 0;
    double reboots = 0;
    double seconds = 10;
    std::uint64_t seed = 1;  ///< of the choice of gateways and stations

    std::function<void(double passed)> progress;
    std::function<bool()> stop;
};

struct ChurnResult {
    std::uint64_t joins = 0;
    std::uint64_t leaves = 0;
    std::uint64_t reboots = 0;
    std::uint64_t skipped = 0;   ///< leaves for which no station was there
    std::uint64_t refused = 0;   ///< events that a gateway answered with a fault
    std::uint64_t lost = 0;      ///< events for gateways that were not up or did not answer
    double seconds = 0;          ///< that it took
    std::uint64_t stations = 0;  ///< that joined and are still there
};

/// Lets the fleet churn. Stations that join are new each time and come to the access points that are up, in turn.
/// Throws FleetError when there is no fleet.
[[nodiscard]] ChurnResult churn(const launch::Options& options, const ChurnOrder& order);

}  // namespace quorvel::fleet
