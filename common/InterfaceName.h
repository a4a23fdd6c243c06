#pragma once

#include <string>

namespace quorvel::common {

/// Returns the name of a BSS's interface: "wl0" for the first one of radio 0, "wl0.1" for the next. With `prefix` "air"
/// returns the name of the interface's other end, which plays the part of the radio waves.
[[nodiscard]] std::string interfaceName(unsigned radio, unsigned bss, const char* prefix = "wl");

}  // namespace quorvel::common
