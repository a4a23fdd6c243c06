// The manager's texts and the values of the data model, converted into each other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "wifi/model/Columns.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Returns the 32-bit number in a context's field.
[[nodiscard]] inline uint32_t wordAt(const char* field) {
    uint32_t value = 0;
    memcpy(&value, field, sizeof value);
    return value;
}

/// Converts a text into `out`: a byte, a word, or a text cut to `bound` bytes. Returns whether the conversion is known;
/// `out` is unchanged when it is not.
[[nodiscard]] bool convertText(model::Conversion conversion, const char* text, void* out, uint32_t bound);

/// Converts a field of a context into text, in a cleared buffer of more than `size` bytes and at least 12; a text field
/// has `size` bytes. Returns whether the conversion is known.
[[nodiscard]] bool convertField(model::Conversion conversion, const char* field, size_t size, char* text);

}  // namespace quorvel

#pragma GCC visibility pop
