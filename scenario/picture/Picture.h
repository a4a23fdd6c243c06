#pragma once

#include <string>

#include "scenario/Result.h"

namespace quorvel::scenario {

/// Returns a page that shows the course of a play: steps, expectations with the spans in which they were looked for,
/// the parameters and stations of the recording, and the log, all over board time. The page needs no other file and no
/// network.
[[nodiscard]] std::string picture(const Scenario& scenario, const Result& result, std::uint64_t seed);

}  // namespace quorvel::scenario
