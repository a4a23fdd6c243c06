#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvel::hostd {

/// The platform's word: 32 bits on the product, a pointer's size everywhere.
using Word = std::uintptr_t;

/// Type codes of the exported parameter table.
enum class Type : std::uint8_t { kText = 0, kBoolean = 2, kUnsignedInt = 3, kInt = 4 };

/// One entry of the plug-in's parameter table. The accessors find a function's word, which depends on the type and
/// on the number of instances (depth) in the object's path.
struct TableEntry {
    static constexpr std::size_t kWords = 72;
    Word words[kWords];

    [[nodiscard]] const char* objectPath() const {
        return reinterpret_cast<const char*>(words[0]);
    }
    [[nodiscard]] const char* parameterName() const {
        return reinterpret_cast<const char*>(words[1]);
    }
    [[nodiscard]] Word typeCode() const {
        return words[2];
    }
    [[nodiscard]] bool writable() const {
        return words[3] == 256;
    }
    [[nodiscard]] std::uint32_t contextSize() const {
        return static_cast<std::uint32_t>(words[5]);
    }

    /// Returns the getter, or 0 for an entry that can only be written.
    [[nodiscard]] Word getter(Type type, unsigned depth) const;
    /// Returns the setter, or 0 for an entry that can only be read.
    [[nodiscard]] Word setter(Type type, unsigned depth) const;
    /// Returns the context's initialiser, or 0: entries of depth 2 have none.
    [[nodiscard]] Word initContext(unsigned depth) const;
    [[nodiscard]] Word applyContext(unsigned depth) const;
    /// Tells whether the setter writes to the running configuration at once instead of staging into its context: the
    /// numeric setters of depth 2 in word 65.
    [[nodiscard]] bool writesAtOnce(Type type, unsigned depth) const;
};
static_assert(sizeof(TableEntry) == TableEntry::kWords * sizeof(Word));

}  // namespace quorvel::hostd
