#pragma once

#include "scenario/Stage.h"

namespace quorvel::scenario {

/// Does what the step says. Returns the faults that it gave.
[[nodiscard]] std::vector<Fault> perform(const Step& step, Stage& stage);

}  // namespace quorvel::scenario
