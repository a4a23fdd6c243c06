#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

namespace quorvel::common {

/// The operators of search conditions: == != ~= < > <= >=. `~=` asks for an element of a list.
enum class Comparison : std::uint8_t { kEqual, kUnequal, kContains, kLess, kGreater, kAtMost, kAtLeast };

/// Takes leading blanks and tabs off `text`.
inline void skipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
}

/// Takes an operator off the beginning of `text`. Returns nothing, and leaves the text, when it begins with none.
[[nodiscard]] inline std::optional<Comparison> takeComparison(std::string_view& text) {
    // Longer ones first: "<=" begins with "<".
    constexpr std::array<std::pair<std::string_view, Comparison>, 7> kOperators{{{"==", Comparison::kEqual},
                                                                                 {"!=", Comparison::kUnequal},
                                                                                 {"~=", Comparison::kContains},
                                                                                 {"<=", Comparison::kAtMost},
                                                                                 {">=", Comparison::kAtLeast},
                                                                                 {"<", Comparison::kLess},
                                                                                 {">", Comparison::kGreater}}};
    for (const auto& [written, comparison] : kOperators) {
        if (!text.starts_with(written)) continue;
        text.remove_prefix(written.size());
        return comparison;
    }
    return std::nullopt;
}

/// Returns whether `left` and `right` are in the order that `comparison` names; never for kContains, which compares no
/// order.
template <typename T>
[[nodiscard]] bool compare(Comparison comparison, const T& left, const T& right) {
    switch (comparison) {
        case Comparison::kEqual:
            return left == right;
        case Comparison::kUnequal:
            return left != right;
        case Comparison::kLess:
            return left < right;
        case Comparison::kGreater:
            return left > right;
        case Comparison::kAtMost:
            return left <= right;
        case Comparison::kAtLeast:
            return left >= right;
        case Comparison::kContains:
            return false;
    }
    return false;
}

}  // namespace quorvel::common
