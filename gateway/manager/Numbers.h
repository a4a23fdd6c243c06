#pragma once

#include <cstdint>
#include <string_view>

namespace quorvel::manager {

// The number that the text's leading digits make, 0 without any; what does not fit 32 bits gives the largest that does.
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
