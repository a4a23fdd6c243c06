#pragma once

#include <string>

#include "common/MacAddress.h"

namespace quorvel::board {

/// Creates an interface and its other end, both up: each receives what the other sends. Returns 0 or the system's
/// error.
[[nodiscard]] int createLink(const std::string& name, const common::MacAddress& mac, const std::string& otherEnd);

}  // namespace quorvel::board
