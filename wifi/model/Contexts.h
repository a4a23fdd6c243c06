// Object contexts: plain records of the host's header and one field per node, in node order.
#pragma once

#include <quorvel.h>

#include <cstddef>
#include <cstdint>
#include <iterator>

#include "wifi/model/Rows.h"

namespace quorvel {

/// Bytes at the start of every context that belong to the host.
inline constexpr size_t kContextHeaderSize = 132;

template <size_t capacity>
using Text = char[capacity];

template <size_t count>
using Counters = uint32_t[count];

}  // namespace quorvel

#define FIELD_boolean uint8_t
#define FIELD_unsignedInt uint32_t
#define FIELD_int int32_t
#define FIELD_stationInt int32_t
#define FIELD_string(capacity) ::quorvel::Text<capacity>
#define FIELD_counters(count) ::quorvel::Counters<count>

#define OBJECT_ROW(prefix, ...) \
    struct prefix##Context {    \
        uint32_t header[::quorvel::kContextHeaderSize / 4];
#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, ...) FIELD_##type name;
#define FIELD_ROW(prefix, depth, apply, type, name) FIELD_##type name;
#define END_ROW(...) \
    }                \
    ;
#include "wifi/model/DataModel.def"

namespace quorvel {

/// Bytes of each object's contexts, by its index. The system object's have no fields.
inline constexpr uint16_t kContextSizes[kObjectCount] = {
    kContextHeaderSize,
#define OBJECT_ROW(prefix, ...) sizeof(prefix##Context),
#include "wifi/model/DataModel.def"
};

#define OBJECT_ROW(prefix, ...) static_assert(alignof(prefix##Context) == 4);
#include "wifi/model/DataModel.def"

/// Where a parameter's value is in its object's contexts.
struct Field {
    uint16_t offset;
    uint16_t size;
};

/// By row of the definitions.
inline constexpr Field kFields[] = {
#define PARAMETER_ROW(prefix, depth, apply, node, name, ...) \
    {offsetof(prefix##Context, name), sizeof(prefix##Context::name)},
#include "wifi/model/DataModel.def"
};

}  // namespace quorvel
