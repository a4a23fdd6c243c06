#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quorvel::console {

/// Returns the one of `known` that is nearest to `word`, or the empty text when none is near.
[[nodiscard]] std::string nearestWord(std::string_view word, const std::vector<std::string>& known);

/// Returns "; did you mean "X"?" for the nearest of `known`, or the empty text.
[[nodiscard]] std::string didYouMean(std::string_view word, const std::vector<std::string>& known);

/// Returns the words as one text: "a, b, c".
[[nodiscard]] std::string listed(const std::vector<std::string>& words);

}  // namespace quorvel::console
