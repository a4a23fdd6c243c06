#include "wifi/bridge/Binding.h"

#include <cstring>

namespace quorvel {
namespace {

using model::Conversion;

// A name in a foreign table must be the whole name.
Conversion conversionOfForeign(const char* name) {
    if (strcmp(name, "UINT32") == 0) return Conversion::kUint32;
    if (strcmp(name, "INT32") == 0) return Conversion::kInt32;
    if (strcmp(name, "BOOLEAN") == 0) return Conversion::kBoolean;
    if (strcmp(name, "RBOOLEAN") == 0) return Conversion::kReversedBoolean;
    if (strcmp(name, "CHAR") == 0) return Conversion::kText;
    if (strcmp(name, "NO_CONVERT") == 0) return Conversion::kUnconverted;
    return Conversion::kUnknown;
}

}  // namespace

Binding bindingOf(const MappingRow* rows, uint32_t node) {
    const MappingRow& row = rows[node];
    const auto object = static_cast<uint32_t>(rows[0].node);
    return {row.variable,
            row.conversion,
            conversionOfForeign(row.conversion),
            model::specialOf(object, node),
            kValueSize,
            static_cast<uint32_t>(row.field),
            object,
            node};
}

}  // namespace quorvel
