// Snapshots: every readable parameter of one instance, read through its own getter into the object's context. A null
// context is not refused: the getters are called and nothing is stored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "wifi/FrontEnd.h"
#include "wifi/QuorvelWiFiTable.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Kinds of fields; a text's is its capacity.
enum FieldKind : uint16_t {
    kSkippedField = 0,  ///< no getter, or one that is not read
    kIntField = 0xFFFD,
    kUnsignedField = 0xFFFE,
    kBooleanField = 0xFFFF,
};

/// One parameter of a snapshot, in node order: where its value goes. Its getter is the one of its entry in the exported
/// table.
struct SnapshotStep {
    uint16_t offset;  ///< of the field in the context
    uint16_t kind;
};

/// An object's snapshot function.
struct Snapshot {
    Site site;
    uint8_t depth;     ///< instance numbers of a getter
    uint8_t firstRow;  ///< the object's first row in the definitions
    uint8_t steps;
};

using TextGetter = uint32_t (*)(uint32_t i, uint32_t j, char* buf, uint32_t len);

/// Reads all steps into the initialised context. `withoutEntry` is the getter of a text of which the table has the
/// setter alone. Returns the code of the first getter that fails, which ends it.
uint32_t takeSnapshot(void* ctx, uint32_t i, uint32_t j, const SnapshotStep* steps, const Snapshot& snapshot,
                      TextGetter withoutEntry);

/// The first row of an object in the definitions.
consteval uint8_t firstRowOf(ObjectIndex object) {
    constexpr uint8_t kRows[] = {
#define OBJECT(index, path, parameters, ...) parameters,
#include "wifi/QuorvelWiFiDataModel.def"
    };
    uint8_t row = 0;
    for (int index = kWiFiObject; index < object; ++index)
        row = static_cast<uint8_t>(row + kRows[index - kWiFiObject]);
    return row;
}

/// Logs the entry and initialises the context.
void beginSnapshot(void* ctx, const Site& site);

/// Copies a text, at most `capacity` bytes and without its terminator, or bytes, to the field at `offset`.
void storeText(void* ctx, size_t offset, const char* text, size_t capacity);
void storeBytes(void* ctx, size_t offset, const void* bytes, size_t size);

}  // namespace quorvel

#pragma GCC visibility pop
