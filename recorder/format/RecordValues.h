// The values of a record, one after the other.
#pragma once

#include <cstdint>
#include <cstring>

#include "recorder/format/Format.h"

namespace quorvel::recorder {

/// Calls `visit(role, type, bytes, size)` for each of `count` values in `left` bytes. Returns false when the values do
/// not fit the bytes or have a type that the format does not know; those before were visited.
template <typename Visit>
bool forEachValue(const uint8_t* at, uint32_t left, uint32_t count, Visit visit) {
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t head;
        if (left < sizeof head) return false;
        memcpy(&head, at, sizeof head);
        at += sizeof head;
        left -= static_cast<uint32_t>(sizeof head);
        const uint32_t size = padded(sizeOf(head));
        if (size > left || typeOf(head) > ValueType::kConstant || roleOf(head) > ValueRole::kAfter) return false;
        visit(roleOf(head), typeOf(head), at, sizeOf(head));
        at += size;
        left -= size;
    }
    // Records are padded to a multiple of 8.
    return left < 8;
}

/// The same for a whole record of a file.
template <typename Visit>
bool forEachValue(const RecordHead& record, Visit visit) {
    return forEachValue(reinterpret_cast<const uint8_t*>(&record) + sizeof record,
                        record.length - static_cast<uint32_t>(sizeof record), record.values, visit);
}

}  // namespace quorvel::recorder
