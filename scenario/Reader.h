#pragma once

#include <stdexcept>
#include <string>

#include "scenario/Scenario.h"

namespace quorvel::scenario {

/// A file is not a scenario: "FILE:LINE:COLUMN: POINTER: expected ..., found ...".
class ScenarioError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Reads and checks the scenario in `path`. Throws ScenarioError for the first thing that is wrong with it.
[[nodiscard]] Scenario readScenario(const std::string& path);

/// Reads a scenario from a text. Messages call it `name`.
[[nodiscard]] Scenario parseScenario(const std::string& text, const std::string& name);

}  // namespace quorvel::scenario
