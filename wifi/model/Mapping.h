// The mapping tables: which variable of the manager each node is, and how the two become each other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "wifi/model/Contexts.h"
#include "wifi/model/Rows.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

using Word = std::uintptr_t;

/// Binds a node to its variable. Row 0 of a table is the header: the object's index, 0 and two empty texts.
struct MappingRow {
    Word node;
    Word field;  ///< byte offset of the node's field from the start of the context
    const char* conversion;
    const char* variable;
};
static_assert(sizeof(MappingRow) == 4 * sizeof(Word));

/// A row of the library's own tables in the bridge's terms.
struct RowFacts {
    model::Conversion conversion;
    model::SpecialValue special;
    uint16_t fieldSize;
};

/// Returns how many rows an object's table has, the header included; 0 for an object without one.
constexpr size_t mappingRowsOf(ObjectIndex object) {
    return model::isMapped(object) ? model::parametersOf(object).size() + 1 : 0;
}

/// Returns where the object's table begins among the library's own. They stand one after the other in the order of the
/// objects.
constexpr size_t mappingBeginOf(ObjectIndex object) {
    size_t begin = 0;
    for (const model::Object& before : model::kObjects) {
        if (before.index < object) begin += mappingRowsOf(before.index);
    }
    return begin;
}

inline constexpr size_t kMappingRowCount = mappingBeginOf(kObjectCount);

/// The library's own tables, and what the bridge knows of each of their rows.
extern const std::array<MappingRow, kMappingRowCount> kMappingRows;
extern const std::array<RowFacts, kMappingRowCount> kRowFacts;

/// An object's table.
struct Mapping {
    const MappingRow* rows;
    uint32_t count;  ///< rows, the header included
};

template <ObjectIndex object>
constexpr Mapping mappingOf() {
    static_assert(model::isMapped(object));
    constexpr size_t kBegin = mappingBeginOf(object);
    constexpr size_t kRows = mappingRowsOf(object);
    return {kMappingRows.data() + kBegin, static_cast<uint32_t>(kRows)};
}

/// One row of the library's own tables.
struct OwnRow {
    uint8_t number;  ///< in kMappingRows
    model::Scope scope;
};
static_assert(kMappingRowCount <= 256, "OwnRow::number needs a wider type");

constexpr OwnRow ownRow(ObjectIndex object, uint32_t node) {
    return {static_cast<uint8_t>(mappingBeginOf(object) + node), model::scopeOf(model::objectOf(object))};
}

}  // namespace quorvel

#pragma GCC visibility pop
