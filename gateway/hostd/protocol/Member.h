#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

namespace quorvel::hostd::protocol {

/// Says whether a member is written and whether it must be there.
enum class Presence : std::uint8_t {
    kRequired,  ///< always written; a text without it is refused
    kOptional,  ///< left out when it has its default value
};

/// One member of a record: its name in JSON, its place in the struct, and its meaning for docs/protocol.md.
///
/// A record lists its members in a static function members(), in the order in which they are written.
template <typename Owner, typename Type>
struct Member {
    const char* name;
    Type Owner::*place;
    Presence presence;
    const char* meaning;
};

template <typename Owner, typename Type>
[[nodiscard]] constexpr Member<Owner, Type> required(const char* name, Type Owner::*place, const char* meaning) {
    return {name, place, Presence::kRequired, meaning};
}

template <typename Owner, typename Type>
[[nodiscard]] constexpr Member<Owner, Type> optional(const char* name, Type Owner::*place, const char* meaning) {
    return {name, place, Presence::kOptional, meaning};
}

/// A record is a struct that lists its members.
template <typename Type>
concept Record = requires {
    Type::members();
};

/// An enumeration whose texts are given by a function names(Enum), found by its argument: an array of pairs.
template <typename Type>
concept Named = requires(Type value) {
    names(value);
};

/// Returns the text of an enumerator of a Named enumeration.
template <Named Type>
[[nodiscard]] constexpr std::string_view nameOf(Type value) {
    for (const auto& [each, name] : names(value)) {
        if (each == value) return name;
    }
    return "";
}

}  // namespace quorvel::hostd::protocol
