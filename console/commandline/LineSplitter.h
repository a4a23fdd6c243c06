#pragma once

#include <string>
#include <vector>

namespace quorvel::console {

/// Splits a line into words as a shell does: blanks separate, quotes and backslashes keep together, # begins a comment.
/// Returns false when a quote is left open.
[[nodiscard]] bool splitLine(const std::string& line, std::vector<std::string>& words);

}  // namespace quorvel::console
