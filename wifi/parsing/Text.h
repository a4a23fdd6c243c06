// Bounded copies and comparisons of texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Tells whether a text begins with another.
[[nodiscard]] inline bool startsWith(const char* text, const char* prefix) {
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

/// The text in a buffer that it may fill, for a log line: the text itself, or a terminated copy of at most `most`
/// bytes.
template <size_t most>
struct LoggedText {
    char copy[most + 1];
    const char* text;
    LoggedText(const char* from, size_t size) : text(from) {
        if (strnlen(from, size) < size) return;
        const size_t length = size < most ? size : most;
        memcpy(copy, from, length);
        copy[length] = '\0';
        text = copy;
    }
};

}  // namespace quorvel

#pragma GCC visibility pop
