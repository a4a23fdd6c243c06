#pragma once

#include <string_view>

namespace quorvel::common {

/// Returns what it costs to turn one text into the other, in half letters: a letter that is changed, added, dropped or
/// swapped with its neighbour costs two, one in the wrong case one.
[[nodiscard]] unsigned editDistance(std::string_view left, std::string_view right);

}  // namespace quorvel::common
