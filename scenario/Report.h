#pragma once

#include <string>

#include "scenario/Result.h"

namespace quorvel::scenario {

/// Returns the JUnit form that CI systems read: a test case per expectation, and one per step that failed. Times are
/// board time.
[[nodiscard]] std::string junit(const Scenario& scenario, const Result& result);

/// Returns everything that is known of the play.
[[nodiscard]] Json toJson(const Scenario& scenario, const Result& result, std::uint64_t seed);

/// Returns the event log: a line per entry, "TIME KIND TEXT".
[[nodiscard]] std::string eventLog(const Result& result);

}  // namespace quorvel::scenario
