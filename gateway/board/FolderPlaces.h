#pragma once

#include "gateway/board/Plan.h"

namespace quorvel::board {

/// Lays the board's places out in the state folder, for the folder sandbox, with nothing left of an earlier board.
/// Throws BoardError, also when the folder's path is too long for what must be below it.
[[nodiscard]] Places makeFolderPlaces(const Plan& plan);

/// Removes the board's places from the state folder, which stays.
void removeFolderPlaces(const Plan& plan);

}  // namespace quorvel::board
