// Snapshots: every readable parameter of one instance, read through its own getter into the object's context. A null
// context is not refused: the getters are called and nothing is stored.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wifi/frontend/FrontEnd.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// An object's snapshot function.
struct SnapshotSite : Site {
    uint16_t contextSize;
    uint8_t depth;     ///< instance numbers of a getter
    uint8_t firstRow;  ///< the object's first row in the definitions
    uint8_t rows;
};

using TextGetter = uint32_t (*)(uint32_t i, uint32_t j, char* buf, uint32_t len);

/// Initialises the context and reads the object's rows into it, without log lines. `withoutEntry` is the getter of a
/// text of which the exported table has the setter alone. Returns the code of the first getter that fails, which ends
/// it.
[[nodiscard]] uint32_t readInstance(void* ctx, uint32_t i, uint32_t j, const SnapshotSite& site,
                                    TextGetter withoutEntry);

/// InstanceGet: readInstance between its log lines.
[[nodiscard]] uint32_t takeSnapshot(void* ctx, uint32_t i, uint32_t j, const SnapshotSite& site,
                                    TextGetter withoutEntry);

/// Copies a text, at most `capacity` bytes and without its terminator, or bytes, to the field at `offset`.
void storeText(void* ctx, size_t offset, const char* text, size_t capacity);
void storeBytes(void* ctx, size_t offset, const void* bytes, size_t size);

}  // namespace quorvel

#pragma GCC visibility pop
