#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string_view>

#include "console/session/Options.h"

namespace quorvel::console {

/// Tells by the name at the end of a path whether its value is a secret: passphrases, keys, PINs, RADIUS secrets.
[[nodiscard]] bool isSecret(std::string_view path);

inline constexpr std::string_view kMask = "********";

/// Returns what of a value may be shown: an empty text shows that nothing is set; JSON has null for what is hidden.
[[nodiscard]] nlohmann::ordered_json shownValue(const Options& options, std::string_view path,
                                                const nlohmann::ordered_json& value);

}  // namespace quorvel::console
