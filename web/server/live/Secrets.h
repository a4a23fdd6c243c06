#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace quorvel::web {

/// Shown in place of a secret.
inline constexpr const char* kMask = "****";

/// Returns `json` with the values of members whose names speak of secrets replaced by kMask, at every depth: what
/// services report may have any form. A member "value" beside a member "param", "path" or "name" that speaks of a
/// secret is replaced, too.
[[nodiscard]] nlohmann::ordered_json withoutSecretMembers(const nlohmann::ordered_json& json);

/// Returns the text of an entry of the WLAN manager's log without PINs and without values of secret variables.
[[nodiscard]] std::string withoutSecrets(std::string_view text);

}  // namespace quorvel::web
