#pragma once

#include <string>

#include "gateway/manager/BoardFile.h"

namespace quorvel::board {

// Returns the name of a BSS's interface ("wl0", "wl0.1") or, with `prefix` "air", of its other end.
[[nodiscard]] std::string interfaceName(const std::string& prefix, unsigned radio, unsigned bss);

// Creates an interface and its other end, both up; what one sends, the other receives. Returns 0 or the system's error.
[[nodiscard]] int createLink(const std::string& name, const manager::MacAddress& mac, const std::string& otherEnd);

}  // namespace quorvel::board
