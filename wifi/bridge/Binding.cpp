#include "wifi/bridge/Binding.h"

#include <cstring>

#include "wifi/bridge/ManagerText.h"

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

bool isOwn(const MappingRow* row) {
    return row >= kMappingRows.data() && row < kMappingRows.data() + kMappingRows.size();
}

}  // namespace

Binding bindingOf(const MappingRow* rows, uint32_t node) {
    const MappingRow* row = rows + node;
    const auto object = static_cast<uint32_t>(rows[0].node);
    if (isOwn(row)) return {row, kRowFacts[static_cast<size_t>(row - kMappingRows.data())], object, node};
    return {row, {conversionOfForeign(row->conversion), model::specialOf(object, node), kValueSize}, object, node};
}

}  // namespace quorvel
