// Constant texts without addresses, for the loader to relocate nothing.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

namespace quorvel::model {

template <size_t count>
using Texts = std::array<std::string_view, count>;

/// Returns which text is the first one that equals text `n`: itself when there is none before it.
template <size_t count>
[[nodiscard]] constexpr size_t firstLike(const Texts<count>& texts, size_t n) {
    size_t first = 0;
    while (texts[first] != texts[n])
        ++first;
    return first;
}

/// Returns the bytes of the texts, each once and terminated.
template <size_t count>
[[nodiscard]] constexpr size_t packedSize(const Texts<count>& texts) {
    size_t size = 0;
    for (size_t n = 0; n < count; ++n)
        size += firstLike(texts, n) == n ? texts[n].size() + 1 : 0;
    return size;
}

/// Texts one after the other, each found by its distance from the first one.
template <size_t count, size_t size>
struct PackedTexts {
    std::array<char, size> characters{};
    std::array<uint16_t, count> places{};
    static_assert(size <= std::numeric_limits<uint16_t>::max());

    constexpr explicit PackedTexts(const Texts<count>& texts) {
        size_t end = 0;
        for (size_t n = 0; n < count; ++n) {
            const size_t first = firstLike(texts, n);
            if (first != n) {
                places[n] = places[first];
                continue;
            }
            places[n] = static_cast<uint16_t>(end);
            texts[n].copy(&characters[end], texts[n].size());
            end += texts[n].size() + 1;
        }
    }

    constexpr const char* operator[](size_t n) const {
        return &characters[places[n]];
    }
};

}  // namespace quorvel::model
