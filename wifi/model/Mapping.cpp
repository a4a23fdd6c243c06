#include "wifi/model/Mapping.h"

#include "wifi/bridge/ManagerText.h"

namespace quorvel {
namespace {

constexpr model::PackedTexts<kMappingRowCount, model::packedSize(kVariableTexts)> kTexts(kVariableTexts);

// The numbers that each part of a row can hold.
constexpr uint32_t kVariableMask = (uint32_t{1} << OwnMappingRow::kVariableBits) - 1;
constexpr uint32_t kFieldMask = (uint32_t{1} << OwnMappingRow::kFieldBits) - 1;
constexpr uint32_t kFormMask = (uint32_t{1} << OwnMappingRow::kFormBits) - 1;

constexpr auto kOwnRows = [] {
    std::array<OwnMappingRow, kMappingRowCount> own{};
    MappingForms forms = kAllMappingForms;
    size_t n = 0;
    for (const model::Object& object : model::kObjects) {
        if (!model::isMapped(object.index)) continue;
        own[n++].field = object.index;
        for (const model::Parameter& parameter : model::parametersOf(object.index)) {
            own[n].variable = kTexts.places[n] & kVariableMask;
            own[n].field = kFields[model::rowOf(object.index, parameter.node)].offset & kFieldMask;
            own[n].form = forms.add(parameter) & kFormMask;
            ++n;
        }
    }
    return own;
}();

constexpr auto kForms = [] {
    std::array<MappingForm, kAllMappingForms.count> forms{};
    for (size_t n = 0; n < forms.size(); ++n)
        forms[n] = kAllMappingForms.forms[n];
    return forms;
}();

constexpr bool bothFormsSayTheSame() {
    for (size_t n = 0; n < kMappingRowCount; ++n) {
        const OwnMappingRow& own = kOwnRows[n];
        const MappingRow& row = kMappingRows[n];
        const MappingForm& form = kForms[own.form];
        const bool header = form.conversion == model::Conversion::kNone;
        if (own.field != (header ? row.node : row.field)) return false;
        if (!header && form.conversion != model::conversionNamed(row.conversion)) return false;
        if (std::string_view(&kTexts.characters[own.variable]) != row.variable) return false;
    }
    return true;
}
static_assert(bothFormsSayTheSame(), "too few bits are left for the forms");

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

constinit const std::array<OwnMappingRow, kMappingRowCount> kOwnMappingRows = kOwnRows;
constinit const std::array<MappingForm, kAllMappingForms.count> kMappingForms = kForms;
constinit const std::array<char, model::packedSize(kVariableTexts)> kVariables = kTexts.characters;

}  // namespace quorvel
