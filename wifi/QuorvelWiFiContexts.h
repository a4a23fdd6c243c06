// Object contexts: plain records of the host's header and one field per node, in node order.
#pragma once

#include <quorvel.h>

#include <cstddef>
#include <cstdint>

#include "wifi/Preprocessor.h"

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
#define FIELD_string(capacity) ::quorvel::Text<capacity>
#define FIELD_counters(count) ::quorvel::Counters<count>

#define OBJECT(index, path, parameters, contextSize, nodeLimit) \
    struct OBJECT_CONTEXT {                                     \
        uint32_t header[::quorvel::kContextHeaderSize / 4];
#define PARAMETER(node, name, access, type, ...) FIELD_##type name;
#define EXTRA_FIELD(type, name) FIELD_##type name;
#define OBJECT_END \
    }              \
    ;
#include "wifi/QuorvelWiFiDataModel.def"

// Sizes and depths, and what their definitions say of them.
namespace quorvel {

enum ObjectIndex : uint8_t {
    kWiFiSystemObject = 0,
#define OBJECT(index, path, parameters, contextSize, nodeLimit) QUORVEL_CAT3(k, THIS_OBJECT, Object) = index,
#include "wifi/QuorvelWiFiDataModel.def"
    kObjectCount
};

#define OBJECT(index, path, parameters, contextSize, nodeLimit) \
    static_assert(sizeof(OBJECT_CONTEXT) == (contextSize));     \
    static_assert(alignof(OBJECT_CONTEXT) == 4);                \
    inline constexpr uint8_t QUORVEL_CAT3(k, THIS_OBJECT, NodeLimit) = nodeLimit;
#include "wifi/QuorvelWiFiDataModel.def"

}  // namespace quorvel

// Node numbers: WiFiRadioNode::Channel is 13.
#define OBJECT(...)                            \
    namespace QUORVEL_CAT(THIS_OBJECT, Node) { \
        enum Node : uint32_t {
#define PARAMETER(node, name, ...) name = node,
#define OBJECT_END \
    }              \
    ;              \
    }
#include "wifi/QuorvelWiFiDataModel.def"
