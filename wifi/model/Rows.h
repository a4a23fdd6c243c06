// The data model as constexpr lists: everything that follows from the rows of the definitions is computed from these.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string_view>

#include "wifi/model/Columns.h"

// NOLINTBEGIN(readability-identifier-naming): nodes are called as their parameters are.
// Node numbers: WiFiRadioNode::Channel is 13.
#define OBJECT_ROW(prefix, ...) \
    namespace prefix##Node {    \
        enum Node : uint32_t {
#define PARAMETER_ROW(prefix, depth, apply, node, name, ...) name = node,
#define NODE_ROW(prefix, depth, apply, node, name) name = node,
#define END_ROW(...) \
    }                \
    ;                \
    }
#include "wifi/model/DataModel.def"
// NOLINTEND(readability-identifier-naming)

namespace quorvel {

/// Numbers of the objects, in the order of the exported table. The system object is not in it.
enum ObjectIndex : uint8_t {
    kWiFiSystemObject = 0,
#define OBJECT_ROW(prefix, ...) k##prefix##Object,
#include "wifi/model/DataModel.def"
    kObjectCount
};

namespace model {

struct Object {
    ObjectIndex index;
    std::string_view path;    ///< as the table gives it, e.g. WiFi.Radio.{i}
    std::string_view prefix;  ///< of its functions, e.g. WiFiRadio
    uint32_t depth;           ///< instance numbers of a read
};

struct Parameter {
    ObjectIndex object;
    uint32_t node;
    std::string_view name;
    std::string_view getter;  ///< exported functions, whether or not the access has them
    std::string_view setter;
    Access access;
    Type type;
    Accepted accepted;
    Read read;
    std::string_view source;    ///< conversion of the variable, or what the object reads
    std::string_view variable;  ///< the manager's variable, the keyword of a counter, or empty
    std::string_view unit;
    std::string_view remark;
};

inline constexpr Object kObjects[] = {
#define OBJECT_ROW(prefix, depth, apply, path) {k##prefix##Object, path, #prefix, depth},
#include "wifi/model/DataModel.def"
};

namespace words {

inline constexpr Parameter kParameters[] = {
#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, accepted, read, source, variable, unit, \
                      remark)                                                                                       \
    {k##prefix##Object,                                                                                             \
     node,                                                                                                          \
     #name,                                                                                                         \
     #prefix #stem "Get",                                                                                           \
     #prefix #stem "Set",                                                                                           \
     access,                                                                                                        \
     typeOf<type>(),                                                                                                \
     accepted,                                                                                                      \
     read,                                                                                                          \
     #source,                                                                                                       \
     variable,                                                                                                      \
     unit,                                                                                                          \
     remark},
#include "wifi/model/DataModel.def"
};

}  // namespace words

using words::kParameters;

/// A node without a parameter.
struct ExtraNode {
    ObjectIndex object;
    uint32_t node;
};
inline constexpr ExtraNode kExtraNodes[] = {
#define NODE_ROW(prefix, depth, apply, node, name) {k##prefix##Object, node},
#include "wifi/model/DataModel.def"
};

/// Stands before another row of its object in the exported table.
struct Precedence {
    ObjectIndex object;
    std::string_view name;
    std::string_view next;
};
inline constexpr Precedence kPrecedences[] = {
#define ORDER_ROW(prefix, depth, apply, name, next) {k##prefix##Object, #name, #next},
#include "wifi/model/DataModel.def"
};

/// A word of the exported table's entries that follows no rule.
struct SetterWord {
    ObjectIndex object;
    Kind kind;
    uint32_t word;
};
namespace words {
inline constexpr SetterWord kSetterWords[] = {
#define WORD_ROW(prefix, depth, apply, type, word) {k##prefix##Object, typeOf<type>().kind, word},
#include "wifi/model/DataModel.def"
};
}  // namespace words
using words::kSetterWords;

struct Special {
    ObjectIndex object;
    uint32_t node;
    SpecialValue value;
};
inline constexpr Special kSpecials[] = {
#define SPECIAL_ROW(prefix, depth, apply, name, value) {k##prefix##Object, prefix##Node::name, SpecialValue::value},
#include "wifi/model/DataModel.def"
};

[[nodiscard]] constexpr const Object& objectOf(ObjectIndex index) {
    return kObjects[index - 1];
}

/// Returns where the object's first row is in kParameters.
[[nodiscard]] constexpr size_t firstRowOf(ObjectIndex object) {
    size_t row = 0;
    while (row < std::size(kParameters) && kParameters[row].object != object)
        ++row;
    return row;
}

/// Returns an object's rows, by node.
[[nodiscard]] constexpr std::span<const Parameter> parametersOf(ObjectIndex object) {
    const size_t first = firstRowOf(object);
    size_t end = first;
    while (end < std::size(kParameters) && kParameters[end].object == object)
        ++end;
    return std::span(kParameters).subspan(first, end - first);
}

/// Returns where the row of a node is in kParameters.
[[nodiscard]] constexpr size_t rowOf(ObjectIndex object, uint32_t node) {
    return firstRowOf(object) + node - 1;
}

/// Returns the highest node that an object's contexts have.
[[nodiscard]] constexpr uint32_t nodeLimitOf(ObjectIndex object) {
    uint32_t limit = static_cast<uint32_t>(parametersOf(object).size());
    for (const ExtraNode& extra : kExtraNodes) {
        if (extra.object == object && extra.node > limit) limit = extra.node;
    }
    return limit;
}

/// Returns the instance numbers that a path has.
[[nodiscard]] constexpr uint32_t instancesIn(std::string_view path) {
    uint32_t count = 0;
    for (const char each : path)
        count += each == '{' ? 1 : 0;
    return count;
}

[[nodiscard]] constexpr Scope scopeOf(const Object& object) {
    if (object.depth == 0) return Scope::kBoard;
    return object.path.starts_with("WiFi.Radio.") ? Scope::kRadio : Scope::kAccessPoint;
}

[[nodiscard]] constexpr bool readable(const Parameter& parameter) {
    return parameter.access != Access::kStagedOnly;
}

[[nodiscard]] constexpr bool writable(const Parameter& parameter) {
    return parameter.access != Access::kReadOnly;
}

[[nodiscard]] constexpr Conversion conversionOf(const Parameter& parameter) {
    return conversionNamed(parameter.source);
}

[[nodiscard]] constexpr SpecialValue specialOf(uint32_t object, uint32_t node) {
    for (const Special& special : kSpecials) {
        if (special.object == object && special.node == node) return special.value;
    }
    return SpecialValue::kNone;
}

/// Whether an object's parameters are variables of the manager: it then has a mapping table.
[[nodiscard]] constexpr bool isMapped(ObjectIndex object) {
    for (const Parameter& parameter : parametersOf(object)) {
        if (conversionOf(parameter) != Conversion::kNone) return true;
    }
    return false;
}

/// A row that the exported table has before an earlier one.
struct Move {
    size_t row;
    size_t before;
};

[[nodiscard]] constexpr Move moveOf(const Precedence& precedence) {
    Move move{};
    for (size_t row = 0; row < std::size(kParameters); ++row) {
        if (kParameters[row].object != precedence.object) continue;
        if (kParameters[row].name == precedence.name) move.row = row;
        if (kParameters[row].name == precedence.next) move.before = row;
    }
    return move;
}

inline constexpr auto kMoves = [] {
    std::array<Move, std::size(kPrecedences)> moves{};
    for (size_t n = 0; n < moves.size(); ++n)
        moves[n] = moveOf(kPrecedences[n]);
    return moves;
}();

/// Returns the row at a place in the exported table: rows are in their order but for the precedences.
[[nodiscard]] constexpr size_t rowOfEntry(size_t entry) {
    for (const Move& move : kMoves) {
        if (entry == move.before) return move.row;
        if (entry > move.before && entry <= move.row) return entry - 1;
    }
    return entry;
}

/// Returns the place of a row in the exported table.
[[nodiscard]] constexpr size_t entryOfRow(size_t row) {
    for (const Move& move : kMoves) {
        if (row == move.row) return move.before;
        if (row >= move.before && row < move.row) return row + 1;
    }
    return row;
}

[[nodiscard]] constexpr bool definitionsAreSound() {
    for (const Object& object : kObjects) {
        if (instancesIn(object.path) != object.depth) return false;
        uint32_t node = 0;
        for (const Parameter& parameter : parametersOf(object.index)) {
            if (parameter.node != ++node) return false;
            if (writable(parameter) == (parameter.accepted.rule == Accepted::Rule::kNone)) return false;
            if (readable(parameter) == (parameter.read == Read::kNone)) return false;
        }
    }
    return true;
}
static_assert(
    [] {
        for (size_t row = 0; row < std::size(kParameters); ++row) {
            if (rowOfEntry(entryOfRow(row)) != row) return false;
        }
        return true;
    }(),
    "each row has one place in the exported table");
static_assert(definitionsAreSound(), "rows are numbered from 1, and what they accept and read follows their access");

}  // namespace model
}  // namespace quorvel
