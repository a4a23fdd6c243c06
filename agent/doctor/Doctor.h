#pragma once

// Finds out why an agent and its controller do not hear each other.

#include <chrono>
#include <string>
#include <vector>

#include "agent/Config.h"
#include "agent/doctor/Findings.h"

namespace quorvel::agent {

/// Connects to each broker of the configuration with a client ID of its own, listens for `patience`, and asks the host
/// process of the board how the agent is. Returns every finding, good and bad.
[[nodiscard]] std::vector<Finding> examine(const Config& config, std::chrono::seconds patience);

}  // namespace quorvel::agent
