#pragma once

#include <nlohmann/json.hpp>

#include "agent/proto/usp.pb.h"

namespace quorvel::agent {

/// Returns a Message as a controller's log has it: "kind" is notification or answer. A notification has "type",
/// "subscription", "path", "value" (of a ValueChange), "values" (keys or arguments by name) and "code" (of a command
/// that failed). An answer has "id", "type", "values" by path, "faults" (path, code, reason) and "code", the first
/// fault's; 0: none. "text" says the same for people.
[[nodiscard]] nlohmann::ordered_json arrivalOf(const usp::Msg& message);

}  // namespace quorvel::agent
