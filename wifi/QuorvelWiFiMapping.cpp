// The mapping tables and the two mappers of the bridge.
#include <cstring>
#include <iterator>

#include "wifi/QuorvelWiFiInternal.h"

namespace quorvel {

namespace conversion {
constexpr char UINT32[] = "UINT32";
constexpr char INT32[] = "INT32";
constexpr char BOOLEAN[] = "BOOLEAN";
constexpr char RBOOLEAN[] = "RBOOLEAN";
constexpr char CHAR[] = "CHAR";
}  // namespace conversion

#define OBJECT(index, ...) constexpr MappingRow QUORVEL_CAT3(k, THIS_OBJECT, Mapping)[] = {{index, 0, "", ""},
#define PARAMETER(node, name, access, type, accepted, read, source, variable, ...) \
    {node, offsetof(OBJECT_CONTEXT, name), conversion::source, variable},
#define OBJECT_END \
    }              \
    ;
#include "wifi/MappedObjects.h"

namespace {

// Row 0 is the header's.
#define OBJECT(...) constexpr uint16_t QUORVEL_CAT3(k, THIS_OBJECT, Sizes)[] = {0,
#define PARAMETER(node, name, ...) sizeof(OBJECT_CONTEXT::name),
#define OBJECT_END \
    }              \
    ;
#include "wifi/MappedObjects.h"

template <size_t rows>
constexpr bool rowsStandAtTheirNodes(const MappingRow (&table)[rows]) {
    for (size_t n = 1; n < rows; ++n) {
        if (table[n].node != n) return false;
    }
    return true;
}

// A text is written from a buffer of kValueSize.
template <size_t rows>
constexpr bool textsFitTheirBuffer(const MappingRow (&table)[rows], const uint16_t (&sizes)[rows]) {
    for (size_t n = 1; n < rows; ++n) {
        if (table[n].conversion == conversion::CHAR && table[n].variable[0] != '\0' && sizes[n] > kValueSize)
            return false;
    }
    return true;
}

#define OBJECT(...)                                                              \
    static_assert(rowsStandAtTheirNodes(QUORVEL_CAT3(k, THIS_OBJECT, Mapping))); \
    static_assert(textsFitTheirBuffer(QUORVEL_CAT3(k, THIS_OBJECT, Mapping), QUORVEL_CAT3(k, THIS_OBJECT, Sizes)));
#include "wifi/MappedObjects.h"

constexpr Mapping mappingOf(uint32_t object) {
    switch (object) {
#define OBJECT(index, ...)                                                                  \
    case index:                                                                             \
        return {QUORVEL_CAT3(k, THIS_OBJECT, Mapping), QUORVEL_CAT3(k, THIS_OBJECT, Sizes), \
                std::size(QUORVEL_CAT3(k, THIS_OBJECT, Mapping))};
#include "wifi/MappedObjects.h"
        default:
            return {};
    }
}

}  // namespace

constexpr Mapping kMappings[kMayHaveMapping] = {
    mappingOf(0), mappingOf(1), mappingOf(2), mappingOf(3), mappingOf(4),  mappingOf(5),
    mappingOf(6), mappingOf(7), mappingOf(8), mappingOf(9), mappingOf(10), mappingOf(11),
};
#define OBJECT(index, ...) static_assert((index) < kMayHaveMapping);
#include "wifi/MappedObjects.h"

size_t textCapacity(const MappingRow* table, uint32_t node, uint32_t count) {
    // The header's number may be a foreign table's choice.
    const Word object = table[0].node;
    if (object < kMayHaveMapping && kMappings[object].rows == table) return kMappings[object].fieldSizes[node];
    size_t capacity = kValueSize;
    for (uint32_t n = 1; n < count; ++n) {
        if (table[n].field <= table[node].field) continue;
        const size_t distance = table[n].field - table[node].field;
        if (distance < capacity) capacity = distance;
    }
    return capacity;
}

}  // namespace quorvel

constinit const AuthModePair authModeMapper[8] = {
    {"None", "open"},
    {"None", "*DEL*"},
    {"WPA-Personal", "psk"},
    {"WPA2-Personal", "psk2"},
    {"WPA-WPA2-Personal", "psk psk2"},
    {"WPA-Enterprise", "wpa"},
    {"WPA2-Enterprise", "wpa2"},
    {"WPA-WPA2-Enterprise", "wpa wpa2"},
};

constinit const WpaEncryptionPair wpaEncryptionMapper[3] = {
    {0, "tkip"},
    {1, "aes"},
    {2, "tkip+aes"},
};
