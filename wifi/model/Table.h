// The exported parameter table in the model's terms.
#pragma once

#include "wifi/QuorvelWiFiTable.h"
#include "wifi/model/Rows.h"

namespace quorvel {

[[nodiscard]] constexpr TypeCode typeCodeOf(model::Kind kind) {
    switch (kind) {
        case model::Kind::kBoolean:
            return kTypeBoolean;
        case model::Kind::kUnsignedInt:
            return kTypeUnsignedInt;
        case model::Kind::kInt:
            return kTypeInt;
        case model::Kind::kString:
            break;
    }
    return kTypeString;
}

}  // namespace quorvel
