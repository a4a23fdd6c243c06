// The mapping tables: which variable of the manager each node is, and how the two become each other.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

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

/// Returns how many rows an object's table has, the header included; 0 for an object without one.
consteval size_t mappingRowsOf(ObjectIndex object) {
    return model::isMapped(object) ? model::parametersOf(object).size() + 1 : 0;
}

/// Returns where the object's table begins among the library's own. They stand one after the other in the order of the
/// objects.
consteval size_t mappingBeginOf(ObjectIndex object) {
    size_t begin = 0;
    for (const model::Object& before : model::kObjects) {
        if (before.index < object) begin += mappingRowsOf(before.index);
    }
    return begin;
}

inline constexpr size_t kMappingRowCount = mappingBeginOf(kObjectCount);

/// The tables, one after the other, in the form that the exported functions of the bridge take.
inline constexpr auto kMappingRows = [] {
    std::array<MappingRow, kMappingRowCount> rows{};
    size_t n = 0;
    for (const model::Object& object : model::kObjects) {
        if (!model::isMapped(object.index)) continue;
        rows[n++] = {object.index, 0, "", ""};
        for (const model::Parameter& parameter : model::parametersOf(object.index)) {
            const Field& field = kFields[model::rowOf(object.index, parameter.node)];
            rows[n++] = {parameter.node, field.offset, parameter.source.data(), parameter.variable.data()};
        }
    }
    return rows;
}();

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

/// A row in the form that the library itself uses: without addresses, for the loader to relocate nothing and the file
/// to hold a quarter.
struct OwnMappingRow {
    uint16_t variable;  ///< place of its text in kVariables
    uint16_t field;     ///< as in a MappingRow; the object's index in the header
    uint16_t fieldSize;
    model::Conversion conversion;  ///< none in the header, and in no other row
    model::SpecialValue special;
};
static_assert(sizeof(OwnMappingRow) == 8);
extern const std::array<OwnMappingRow, kMappingRowCount> kOwnMappingRows;

/// The texts of the variables, each terminated; the empty text is the first character's.
inline constexpr size_t kVariablesSize = [] {
    size_t size = 1;
    for (const MappingRow& row : kMappingRows)
        size += row.variable[0] == '\0' ? 0 : std::string_view(row.variable).size() + 1;
    return size;
}();
extern const std::array<char, kVariablesSize> kVariables;

/// One row of the library's own.
struct OwnRow {
    uint8_t number;  ///< in kOwnMappingRows
    model::Scope scope;
};
static_assert(kMappingRowCount <= 256, "OwnRow::number needs a wider type");

consteval OwnRow ownRow(ObjectIndex object, uint32_t node) {
    return {static_cast<uint8_t>(mappingBeginOf(object) + node), model::scopeOf(model::objectOf(object))};
}

}  // namespace quorvel

#pragma GCC visibility pop
