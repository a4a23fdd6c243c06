// Setters that stage a value in the object's context.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wifi/frontend/FrontEnd.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// A staging setter: the node that it marks and where the field is.
struct StagingSite : Site {
    uint16_t offset;
    uint8_t node;
};

/// One that takes numbers of a range.
struct RangeStagingSite : StagingSite {
    uint8_t low;
    uint8_t high;
};

/// One of a text in a field of `capacity` bytes.
struct TextStagingSite : StagingSite {
    uint16_t capacity;
};

/// One of a text that has one of two lengths.
struct LengthStagingSite : TextStagingSite {
    uint8_t one;
    uint8_t other;
};

/// Stage a number in a field of one byte, of which 0 and 1 are accepted, or of four. `i` is any instance number: the
/// context is of one. Return 0, 2, 5 or 8.
[[nodiscard]] uint32_t stageBoolean(void* ctx, uint32_t i, uint32_t value, const StagingSite& site);
[[nodiscard]] uint32_t stageWord(void* ctx, uint32_t i, uint32_t value, const StagingSite& site);
[[nodiscard]] uint32_t stageWordInRange(void* ctx, uint32_t i, uint32_t value, const RangeStagingSite& site);

/// Stage a text of at most `len` bytes. The rest of the field is cleared; a text that fills the field has
/// no terminator. Return 0, 2, 5, 6 or 8.
[[nodiscard]] uint32_t stageText(void* ctx, const char* src, uint32_t len, const TextStagingSite& site);
[[nodiscard]] uint32_t stageTextOfLength(void* ctx, const char* src, uint32_t len, const LengthStagingSite& site);

/// Copies a text of at most `len` bytes to the start of a field and clears the rest of it.
void fillField(char* field, size_t capacity, const char* src, size_t len);

}  // namespace quorvel

#pragma GCC visibility pop
