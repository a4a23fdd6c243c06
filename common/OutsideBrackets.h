#pragma once

#include <cstddef>
#include <string_view>

namespace quorvel::common {

/// Returns the position of the first `wanted` character of a data-model path from `begin` on, without looking into
/// search expressions in brackets and the quotes within them. Returns npos when there is none.
[[nodiscard]] inline std::size_t findOutsideBrackets(std::string_view path, char wanted, std::size_t begin = 0) {
    bool bracket = false;
    bool quote = false;
    for (std::size_t i = begin; i < path.size(); ++i) {
        const char c = path[i];
        if (quote) {
            if (c == '\\') {
                ++i;
            } else if (c == '"') {
                quote = false;
            }
        } else if (bracket && c == '"') {
            quote = true;
        } else if (c == '[' || c == ']') {
            bracket = c == '[';
        } else if (c == wanted && !bracket) {
            return i;
        }
    }
    return std::string_view::npos;
}

}  // namespace quorvel::common
