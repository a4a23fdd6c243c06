#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace quorvel::common {

/// The most levels that arrays and objects of a file or a request may nest: copying and printing a value goes down one
/// call a level, and the stack is finite.
inline constexpr std::size_t kMaxJsonLevels = 100;

/// Returns the offset of the first bracket that opens a level beyond kMaxJsonLevels. The text need not be valid JSON.
[[nodiscard]] std::optional<std::size_t> findTooDeep(std::string_view text);

/// Returns the message for such a bracket.
[[nodiscard]] std::string tooDeepText();

/// Reads one JSON value. The result is discarded (is_discarded()) when the text is not JSON or nests too deeply.
[[nodiscard]] nlohmann::ordered_json parseShallow(std::string_view text);

}  // namespace quorvel::common
