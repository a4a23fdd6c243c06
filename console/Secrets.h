#pragma once

#include <string_view>

namespace quorvel::console {

/// Tells by the name at the end of a path whether its value is a secret: passphrases, keys, PINs, RADIUS secrets.
[[nodiscard]] bool isSecret(std::string_view path);

inline constexpr std::string_view kMask = "********";

}  // namespace quorvel::console
