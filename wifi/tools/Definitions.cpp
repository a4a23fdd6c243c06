#include "wifi/tools/Definitions.h"

#include <iterator>

#include "wifi/Preprocessor.h"

namespace quorvel::definitions {
namespace {

constexpr Type boolean{Kind::boolean, 0};
constexpr Type unsignedInt{Kind::unsignedInt, 0};
constexpr Type integer{Kind::integer, 0};
constexpr Type string(uint32_t capacity) {
    return {Kind::string, capacity};
}
#define TYPE_boolean boolean
#define TYPE_unsignedInt unsignedInt
#define TYPE_int integer
#define TYPE_string(capacity) string(capacity)

namespace accepted_values {
constexpr Accepted none{Accepted::Rule::none, 0, 0};
constexpr Accepted any{Accepted::Rule::any, 0, 0};
constexpr Accepted range(uint32_t low, uint32_t high) {
    return {Accepted::Rule::range, low, high};
}
constexpr Accepted lengths(uint32_t one, uint32_t other) {
    return {Accepted::Rule::lengths, one, other};
}
}  // namespace accepted_values

constexpr Object kObjects[] = {
#define OBJECT(index, path, parameters, contextSize, nodeLimit) \
    {index, path, QUORVEL_TEXT(THIS_OBJECT), parameters, contextSize},
#include "wifi/QuorvelWiFiDataModel.def"
};

enum ObjectNumber : uint32_t {
#define OBJECT(index, ...) QUORVEL_CAT3(k, THIS_OBJECT, Object) = index,
#include "wifi/QuorvelWiFiDataModel.def"
};

constexpr Parameter kParameters[] = {
#define PARAMETER(node, name, access, type, accepted, read, source, variable, unit, remark) \
    {QUORVEL_CAT3(k, THIS_OBJECT, Object),                                                  \
     node,                                                                                  \
     #name,                                                                                 \
     Access::access,                                                                        \
     TYPE_##type,                                                                           \
     accepted_values::accepted,                                                             \
     Read::read,                                                                            \
     #source,                                                                               \
     variable,                                                                              \
     unit,                                                                                  \
     remark,                                                                                \
     QUORVEL_TEXT(FUNCTION(name, Get)),                                                     \
     QUORVEL_TEXT(FUNCTION(name, Set))},
#include "wifi/QuorvelWiFiDataModel.def"
};

constexpr bool everyObjectHasItsRows() {
    size_t n = 0;
    for (const Object& object : kObjects) {
        for (uint32_t node = 1; node <= object.parameters; ++node, ++n) {
            if (n >= std::size(kParameters)) return false;
            if (kParameters[n].object != object.number || kParameters[n].node != node) return false;
        }
    }
    return n == std::size(kParameters);
}
static_assert(everyObjectHasItsRows());

}  // namespace

std::span<const Object> objects() {
    return kObjects;
}

std::span<const Parameter> parameters() {
    return kParameters;
}

std::span<const Parameter> parametersOf(const Object& object) {
    size_t first = 0;
    for (const Object& before : kObjects) {
        if (before.number == object.number) break;
        first += before.parameters;
    }
    return parameters().subspan(first, object.parameters);
}

}  // namespace quorvel::definitions
