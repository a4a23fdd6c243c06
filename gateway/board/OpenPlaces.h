#pragma once

#include "gateway/board/Plan.h"

namespace quorvel::board {

/// Lays the board's places out in the state folder, for a board without a sandbox. Throws BoardError.
[[nodiscard]] Places makeOpenPlaces(const Plan& plan);

}  // namespace quorvel::board
