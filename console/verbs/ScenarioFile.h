#pragma once

#include <string>

#include "console/session/Session.h"

namespace quorvel::console {

/// The kind of what is shipped: the name of its folder.
inline constexpr const char* kScenarios = "scenarios";

/// Returns the file of a scenario: `name` itself, or the shipped one of that name. Throws ScenarioError when there is
/// neither.
[[nodiscard]] std::string findScenario(const Session& session, const std::string& name);

/// Throws GatewayError when a report cannot be written, before the scenario takes its time. An empty path is none.
void checkWritable(const std::string& path);

/// Writes a report. An empty path is none. Throws GatewayError.
void writeReport(const std::string& path, const std::string& text);

}  // namespace quorvel::console
