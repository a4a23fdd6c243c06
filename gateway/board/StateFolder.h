#pragma once

#include <string>

#include "common/Descriptor.h"

namespace quorvel::board {

/// Creates the state folder, private to the user, and takes it for this board: as long as the returned lock is open in
/// any process, no other board gets it. Throws BoardError.
[[nodiscard]] common::Descriptor takeStateFolder(const std::string& folder);

/// Throws BoardError when the folder is there and another user's.
void refuseForeignFolder(const std::string& folder);

}  // namespace quorvel::board
