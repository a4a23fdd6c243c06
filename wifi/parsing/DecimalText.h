// Decimal numbers in texts, read and written as the C library does, without its detours over locales and formats.
#pragma once

#include <cstddef>
#include <cstdint>

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Tells whether the C library takes the character for a blank.
[[nodiscard]] constexpr bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Returns what strtol(text, nullptr, 10) does: 0 for a text without a number, the nearest long beyond its range.
[[nodiscard]] long decimalNumber(const char* text);

/// Reads the next number as sscanf's "%lu" does and stores its low 32 bits. Returns what follows it, or null when none
/// is there.
[[nodiscard]] const char* nextCounter(const char* text, uint32_t& value);

/// Returns what follows the next number, or null when none is there.
[[nodiscard]] inline const char* skipCounter(const char* text) {
    while (isBlank(*text))
        ++text;
    if (*text == '-' || *text == '+') ++text;
    const char* const digits = text;
    while (*text >= '0' && *text <= '9')
        ++text;
    return text == digits ? nullptr : text;
}

/// Tells whether `text` begins with `count` numbers, each as skipCounter takes it.
[[nodiscard]] bool beginsWithCounters(const char* text, uint32_t count);

/// Write a number as "%u" and "%d" do, or a text, and a NUL: at most 11 bytes and the NUL for a number. Return the
/// place of the NUL.
char* appendDecimal(char* to, uint32_t value);
char* appendDecimal(char* to, int32_t value);
char* append(char* to, const char* text);

}  // namespace quorvel

#pragma GCC visibility pop
