#pragma once

#include <cstdint>
#include <string_view>

namespace quorvel::manager {

/// Returns the number that the text's leading digits make, 0 without any, and the largest of 32 bits when it does not
/// fit.
[[nodiscard]] inline std::uint32_t leadingNumber(std::string_view text) {
    std::uint64_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') break;
        number = number * 10 + static_cast<std::uint64_t>(c - '0');
        if (number > UINT32_MAX) return UINT32_MAX;
    }
    return static_cast<std::uint32_t>(number);
}

}  // namespace quorvel::manager
