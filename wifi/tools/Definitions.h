// The data model's definitions as records, for the programs that document them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace quorvel::definitions {

enum class Access : uint8_t { RO, RW, WO, RW_NOW };
enum class Kind : uint8_t { boolean, unsignedInt, integer, string };
enum class Read : uint8_t {
    MAPPED,
    BYPASSED,
    OWN,
    INERT,
    STATION,
    NONE,
    COUNTER,
    RESULT,
    STATION_TEXT,
    STATION_NUMBER,
};

struct Type {
    Kind kind;
    uint32_t capacity;  ///< bytes of a text; 0 for the other kinds
};

/// What a setter takes: values of a number from `low` to `high`, or texts of `low` or `high` characters.
struct Accepted {
    enum class Rule : uint8_t { none, any, range, lengths } rule;
    uint32_t low;
    uint32_t high;
};

struct Parameter {
    uint32_t object;  ///< number of its object, from 1
    uint32_t node;
    std::string_view name;
    Access access;
    Type type;
    Accepted accepted;
    Read read;
    std::string_view source;    ///< conversion of the variable, or what the object reads
    std::string_view variable;  ///< the manager's variable, the keyword of a counter, or empty
    std::string_view unit;
    std::string_view remark;
    std::string_view getter;  ///< exported functions, whether or not the access has them
    std::string_view setter;
};

struct Object {
    uint32_t number;          ///< from 1, in the order of the exported table
    std::string_view path;    ///< as the table gives it, e.g. WiFi.Radio.{i}
    std::string_view prefix;  ///< of its functions, e.g. WiFiRadio
    uint32_t parameters;
    uint32_t contextSize;
};

[[nodiscard]] std::span<const Object> objects();
[[nodiscard]] std::span<const Parameter> parameters();

/// Returns the parameters of one object, by node.
[[nodiscard]] std::span<const Parameter> parametersOf(const Object& object);

[[nodiscard]] inline bool readable(const Parameter& parameter) {
    return parameter.access != Access::WO;
}
[[nodiscard]] inline bool writable(const Parameter& parameter) {
    return parameter.access != Access::RO;
}

}  // namespace quorvel::definitions
