#include "wifi/model/Mapping.h"

#include "wifi/bridge/ManagerText.h"

namespace quorvel {
namespace {

constexpr auto makeRows() {
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
}

constexpr auto makeFacts() {
    std::array<RowFacts, kMappingRowCount> facts{};
    size_t n = 0;
    for (const model::Object& object : model::kObjects) {
        if (!model::isMapped(object.index)) continue;
        ++n;
        for (const model::Parameter& parameter : model::parametersOf(object.index)) {
            facts[n++] = {model::conversionOf(parameter), model::specialOf(object.index, parameter.node),
                          kFields[model::rowOf(object.index, parameter.node)].size};
        }
    }
    return facts;
}

// A text is written from a buffer of kValueSize.
constexpr bool textsFitTheirBuffer() {
    for (size_t row = 0; row < std::size(kFields); ++row) {
        const model::Parameter& parameter = model::kParameters[row];
        const bool written = model::conversionOf(parameter) == model::Conversion::kText && !parameter.variable.empty();
        if (written && kFields[row].size > kValueSize) return false;
    }
    return true;
}
static_assert(textsFitTheirBuffer());

constexpr bool everyRowOfATableIsConverted() {
    for (const model::Parameter& parameter : model::kParameters) {
        if (model::isMapped(parameter.object) && model::conversionOf(parameter) == model::Conversion::kNone)
            return false;
    }
    return true;
}
static_assert(everyRowOfATableIsConverted(), "a row of a mapped object names its conversion as its source");

}  // namespace

constinit const std::array<MappingRow, kMappingRowCount> kMappingRows = makeRows();
constinit const std::array<RowFacts, kMappingRowCount> kRowFacts = makeFacts();

}  // namespace quorvel
