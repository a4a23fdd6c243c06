#pragma once

#include <cstddef>
#include <string_view>

namespace quorvel::hostd {

/// Returns where the character stands first from `begin` on, in a path as people write it: what stands in brackets, and
/// in quotes within them, is passed over. npos when it is not there.
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

}  // namespace quorvel::hostd
