#pragma once

#include <string>

#include "agent/Config.h"
#include "agent/model/Store.h"

namespace quorvel::agent {

/// Lays the configuration over the rows: what it names is as it says, everything else stays. Leaves the transaction
/// open.
void applyConfiguration(const Config& config, const std::string& endpointId, Store& store);

/// Returns the Endpoint ID of a configuration: its own, or os::<OUI>-<serial>.
[[nodiscard]] std::string endpointIdOf(const Config& config);

}  // namespace quorvel::agent
