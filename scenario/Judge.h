#pragma once

#include <map>

#include "scenario/Stage.h"

namespace quorvel::scenario {

/// Faults of the steps that have been done, by the steps' ids.
using StepFaults = std::map<std::string, std::vector<Fault>>;

/// The result of a look at the board for an expectation.
struct Verdict {
    bool holds = false;
    bool final = false;  ///< no later look can change it
    std::string seen;    ///< what was seen, for people
};

/// Looks whether the expectation holds now.
[[nodiscard]] Verdict look(const Expectation& expectation, Stage& stage, const StepFaults& faults);

/// Tells whether a value is what the condition asks for. Numbers are compared as such, everything else as text.
[[nodiscard]] bool holds(const Condition& condition, const Json& value);

}  // namespace quorvel::scenario
