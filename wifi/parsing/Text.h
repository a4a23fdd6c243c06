// Bounded copies and comparisons of texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Tells whether a text begins with another.
inline bool startsWith(const char* text, const char* prefix) {
    return strncmp(text, prefix, strlen(prefix)) == 0;
}

/// Copies a text into a buffer of `size` bytes, cut to fit, always terminated.
void copyText(char* to, size_t size, const char* from);

/// Copies the text of a field of `capacity` bytes to a buffer of `len`, terminated where there is room.
void copyFieldText(char* buf, uint32_t len, const char* field, size_t capacity);

/// The text of a field that it may fill, with a terminator behind it.
template <size_t capacity>
struct TerminatedText {
    char text[capacity + 1] = {};
    explicit TerminatedText(const char (&field)[capacity]) {
        memcpy(text, field, capacity);
    }
};

}  // namespace quorvel

#pragma GCC visibility pop
