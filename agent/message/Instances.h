#pragma once

#include <map>
#include <string>
#include <vector>

#include "agent/Context.h"
#include "agent/proto/usp.pb.h"

namespace quorvel::agent {

/// Answers GetInstances: the rows of tables, with their unique keys.
Task<void> answerGetInstances(Context& context, const usp::GetInstances& request, usp::GetInstancesResp& answer);

using Keys = std::map<std::string, std::string>;

/// Reads the unique keys of rows; empty ones are left out.
Task<std::vector<Keys>> keysOf(Context& context, std::vector<Place> rows);

/// Returns the unique keys of one of the agent's own rows.
[[nodiscard]] Keys ownKeys(const Context& context, const Place& row);

}  // namespace quorvel::agent
