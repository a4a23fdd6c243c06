#include "wifi/model/Mapping.h"

#include "wifi/bridge/ManagerText.h"

namespace quorvel {
namespace {

struct OwnTables {
    std::array<OwnMappingRow, kMappingRowCount> rows{};
    std::array<char, kVariablesSize> variables{};
    size_t size = 1;

    constexpr uint16_t add(std::string_view text) {
        if (text.empty()) return 0;
        const size_t begin = size;
        text.copy(&variables[begin], text.size());
        size += text.size() + 1;
        return static_cast<uint16_t>(begin);
    }
};

constexpr OwnTables kOwnTables = [] {
    OwnTables own;
    size_t n = 0;
    for (const model::Object& object : model::kObjects) {
        if (!model::isMapped(object.index)) continue;
        own.rows[n++].field = object.index;
        for (const model::Parameter& parameter : model::parametersOf(object.index)) {
            const Field& field = kFields[model::rowOf(object.index, parameter.node)];
            own.rows[n++] = {own.add(parameter.variable), field.offset, field.size, model::conversionOf(parameter),
                             model::specialOf(object.index, parameter.node)};
        }
    }
    return own;
}();

constexpr bool bothFormsSayTheSame() {
    for (size_t n = 0; n < kMappingRowCount; ++n) {
        const OwnMappingRow& own = kOwnTables.rows[n];
        const MappingRow& row = kMappingRows[n];
        const bool header = own.conversion == model::Conversion::kNone;
        if (own.field != (header ? row.node : row.field)) return false;
        if (!header && own.conversion != model::conversionNamed(row.conversion)) return false;
        if (std::string_view(&kOwnTables.variables[own.variable]) != row.variable) return false;
    }
    return true;
}
static_assert(bothFormsSayTheSame());

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

constinit const std::array<OwnMappingRow, kMappingRowCount> kOwnMappingRows = kOwnTables.rows;
constinit const std::array<char, kVariablesSize> kVariables = kOwnTables.variables;

}  // namespace quorvel
