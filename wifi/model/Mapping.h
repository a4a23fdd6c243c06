// The mapping tables: which variable of the manager each node is, and how the two become each other.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "wifi/model/Contexts.h"
#include "wifi/model/PackedTexts.h"
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
[[nodiscard]] constexpr size_t mappingRowsOf(ObjectIndex object) {
    return model::isMapped(object) ? model::parametersOf(object).size() + 1 : 0;
}

/// Returns where the object's table begins among the library's own. They stand one after the other in the order of the
/// objects.
[[nodiscard]] constexpr size_t mappingBeginOf(ObjectIndex object) {
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
[[nodiscard]] constexpr Mapping mappingOf() {
    static_assert(model::isMapped(object));
    constexpr size_t kBegin = mappingBeginOf(object);
    constexpr size_t kRows = mappingRowsOf(object);
    return {kMappingRows.data() + kBegin, static_cast<uint32_t>(kRows)};
}

/// How the field of a node and the text of its variable become each other.
struct MappingForm {
    uint16_t fieldSize;
    model::Conversion conversion;  ///< none in a table's header, and in no other row
    model::SpecialValue special;
    constexpr bool operator==(const MappingForm&) const = default;
};

/// The forms of all rows, each once; the headers' is the first one.
struct MappingForms {
    std::array<MappingForm, kMappingRowCount> forms{};
    size_t count = 1;

    constexpr uint32_t add(const model::Parameter& parameter) {
        const size_t row = model::rowOf(parameter.object, parameter.node);
        const MappingForm form{kFields[row].size, model::conversionOf(parameter),
                               model::specialOf(parameter.object, parameter.node)};
        uint32_t place = 0;
        while (place < count && forms[place] != form)
            ++place;
        if (place == count) forms[count++] = form;
        return place;
    }
};
inline constexpr MappingForms kAllMappingForms = [] {
    MappingForms all;
    for (const model::Parameter& parameter : model::kParameters) {
        if (model::isMapped(parameter.object)) (void)all.add(parameter);
    }
    return all;
}();
extern const std::array<MappingForm, kAllMappingForms.count> kMappingForms;

/// The texts of the variables by row, of which the first one, a header's, is empty.
inline constexpr auto kVariableTexts = [] {
    model::Texts<kMappingRowCount> texts;
    for (size_t n = 0; n < texts.size(); ++n)
        texts[n] = kMappingRows[n].variable;
    return texts;
}();
extern const std::array<char, model::packedSize(kVariableTexts)> kVariables;

/// A row in the form that the library itself uses: without addresses, for the loader to relocate nothing and the file
/// to hold an eighth.
struct OwnMappingRow {
    static constexpr int kVariableBits = static_cast<int>(std::bit_width(model::packedSize(kVariableTexts)));
    static constexpr int kFieldBits =
        static_cast<int>(std::bit_width(*std::max_element(std::begin(kContextSizes), std::end(kContextSizes))));
    static constexpr int kFormBits = 32 - kVariableBits - kFieldBits;

    uint32_t variable : kVariableBits;  ///< place of its text in kVariables
    uint32_t field : kFieldBits;        ///< as in a MappingRow; the object's index in the header
    uint32_t form : kFormBits;          ///< in kMappingForms
};
static_assert(sizeof(OwnMappingRow) == 4);
extern const std::array<OwnMappingRow, kMappingRowCount> kOwnMappingRows;

/// One row of the library's own.
struct OwnRow {
    uint8_t number;  ///< in kOwnMappingRows
    model::Scope scope;
};
static_assert(kMappingRowCount <= 256, "OwnRow::number needs a wider type");

[[nodiscard]] constexpr OwnRow ownRow(ObjectIndex object, uint32_t node) {
    return {static_cast<uint8_t>(mappingBeginOf(object) + node), model::scopeOf(model::objectOf(object))};
}

}  // namespace quorvel

#pragma GCC visibility pop
