// Snapshots: every readable parameter of one instance, read through its own getter into the object's context. A null
// context is not refused: the getters are called and nothing is stored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "FrontEnd.h"
#include "QuorvelWiFiTable.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Kinds of fields; a text's is its capacity.
enum FieldKind : uint16_t { kIntField = 0xFFFD, kUnsignedField = 0xFFFE, kBooleanField = 0xFFFF };

/// One parameter of a snapshot: its getter and where its value goes.
struct SnapshotStep {
    TableWord getter;
    uint16_t offset;  ///< of the field in the context
    uint16_t kind;
};

/// An object's snapshot function.
struct Snapshot {
    Site site;
    uint8_t depth;  ///< instance numbers of a getter
    uint8_t steps;
};

/// Reads all steps into the initialised context. Returns the code of the first getter that fails, which ends it.
uint32_t takeSnapshot(void* ctx, uint32_t i, uint32_t j, const SnapshotStep* steps, const Snapshot& snapshot);

/// Logs the entry and initialises the context.
void beginSnapshot(void* ctx, const Site& site);

/// Copies a text, at most `capacity` bytes and without its terminator, or bytes, to the field at `offset`.
void storeText(void* ctx, size_t offset, const char* text, size_t capacity);
void storeBytes(void* ctx, size_t offset, const void* bytes, size_t size);

}  // namespace quorvel

#pragma GCC visibility pop
