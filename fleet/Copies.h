#pragma once

// One scenario for many gateways.

#include <string>

#include "fleet/Identity.h"
#include "scenario/Scenario.h"

namespace quorvel::fleet {

/// Which part of a scenario a gateway plays.
struct Share {
    unsigned index = 0;  ///< of the gateway, from 0
    unsigned of = 1;     ///< how many gateways divide it among themselves; 1: each plays the whole
};

/// Returns the text of a scenario for one gateway: all addresses are the gateway's own, and the board is `board`, the
/// gateway's description; null leaves the scenario's own.
///
/// A share has the stations of a divided scenario that fall to the gateway: the n-th station of the scenario, and
/// everything that names it, goes to gateway n modulo `of`; the stations that one step counts are cut into equal runs.
/// A step that names no station happens on every gateway. Expectations without a station see the gateway's own stations
/// only. A share without any expectation has one that every gateway meets which answers. Throws FleetError when the
/// text is not JSON or has an address of too many blocks.
[[nodiscard]] std::string copyFor(const std::string& scenario, const Json& board, Identity& identity, Share share);

}  // namespace quorvel::fleet
