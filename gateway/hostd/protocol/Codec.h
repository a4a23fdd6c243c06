#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

#include "gateway/hostd/protocol/Member.h"

/// The JSON form of records. Everything follows from the members that a record lists.
namespace quorvel::hostd::protocol {

using Json = nlohmann::ordered_json;

/// Says what a decoder does with members that the record does not list.
enum class Unknown : std::uint8_t {
    kIgnore,  ///< answers: a newer host process may say more
    kRefuse,  ///< requests: a misspelt member must not go unnoticed
};

/// Appends a text as a JSON string. Bytes that are no UTF-8 become U+FFFD.
void appendText(std::string& out, std::string_view text);
/// Appends any JSON value.
void appendJson(std::string& out, const Json& value);

/// Returns the words for a refusal: `member` must be `expected`, and what it is instead.
[[nodiscard]] std::string refusal(const std::string& member, const std::string& expected, const Json& value);

template <typename Type>
inline constexpr bool kIsVector = false;
template <typename Item>
inline constexpr bool kIsVector<std::vector<Item>> = true;
template <typename Type>
inline constexpr bool kIsOptional = false;
template <typename Item>
inline constexpr bool kIsOptional<std::optional<Item>> = true;

/// Calls `visit` with each member that a record lists.
template <Record Type, typename Visit>
constexpr void forEachMember(const Visit& visit) {
    std::apply([&visit](const auto&... member) { (visit(member), ...); }, Type::members());
}

/// Appends the JSON form of a value.
template <typename Type>
void append(std::string& out, const Type& value) {
    if constexpr (std::same_as<Type, Json>) {
        appendJson(out, value);
    } else if constexpr (std::same_as<Type, std::string>) {
        appendText(out, value);
    } else if constexpr (std::same_as<Type, bool>) {
        out += value ? "true" : "false";
    } else if constexpr (kIsOptional<Type>) {
        if (value) return append(out, *value);
        out += "null";
    } else if constexpr (kIsVector<Type>) {
        out += '[';
        bool first = true;
        for (const auto& item : value) {
            if (!first) out += ',';
            first = false;
            append(out, item);
        }
        out += ']';
    } else if constexpr (Record<Type>) {
        out += '{';
        appendMembers(out, value);
        out += '}';
    } else if constexpr (Named<Type>) {
        appendText(out, nameOf(value));
    } else if constexpr (std::is_enum_v<Type>) {
        out += std::to_string(static_cast<std::underlying_type_t<Type>>(value));
    } else if constexpr (std::is_floating_point_v<Type>) {
        appendJson(out, value);
    } else {
        out += std::to_string(value);
    }
}

/// Tells whether an optional member may be left out: it has its default value.
template <typename Type>
[[nodiscard]] bool isDefault([[maybe_unused]] const Type& value, [[maybe_unused]] const Type& usual) {
    if constexpr (Record<Type>) {
        return false;  // a record that may be missing is a std::optional
    } else if constexpr (kIsVector<Type>) {
        return value.empty();
    } else if constexpr (kIsOptional<Type>) {
        return !value;
    } else {
        return value == usual;
    }
}

/// Appends the members of a record, separated by commas. Returns whether there were any; `first` says that they
/// are the object's first.
template <Record Type>
bool appendMembers(std::string& out, const Type& record, bool first = true) {
    [[maybe_unused]] static const Type usual{};
    forEachMember<Type>([&](const auto& member) {
        const auto& value = record.*member.place;
        if (member.presence == Presence::kOptional && isDefault(value, usual.*member.place)) return;
        if (!first) out += ',';
        first = false;
        out += '"';
        out += member.name;
        out += "\":";
        append(out, value);
    });
    return !first;
}

/// Returns the words for what a member of this type must be, for people: "a text", "an array of texts".
template <typename Type>
[[nodiscard]] std::string expectedOf(bool several = false) {
    const auto either = [several](const char* one, const char* many) { return std::string(several ? many : one); };
    if constexpr (std::same_as<Type, Json>) {
        return either("a value", "values");
    } else if constexpr (std::same_as<Type, std::string>) {
        return either("a text", "texts");
    } else if constexpr (std::same_as<Type, bool>) {
        return either("true or false", "booleans");
    } else if constexpr (kIsOptional<Type>) {
        return expectedOf<typename Type::value_type>(several);
    } else if constexpr (kIsVector<Type>) {
        return either("an array of ", "arrays of ") + expectedOf<typename Type::value_type>(true);
    } else if constexpr (Record<Type>) {
        return either("an object", "objects");
    } else if constexpr (Named<Type>) {
        std::string known;
        for (const auto& [value, name] : names(Type{}))
            known += (known.empty() ? "" : ", ") + std::string(name);
        return either("one of ", "texts of ") + known;
    } else if constexpr (std::is_enum_v<Type>) {
        return expectedOf<std::underlying_type_t<Type>>(several);
    } else if constexpr (std::is_floating_point_v<Type>) {
        return either("a number", "numbers");
    } else {
        return either("a whole number from ", "whole numbers from ") +
               std::to_string(std::numeric_limits<Type>::min()) + " to " +
               std::to_string(std::numeric_limits<Type>::max());
    }
}

template <Record Type>
[[nodiscard]] std::string decodeMembers(const Json& json, Type& record, Unknown unknown, const std::string& where);

/// Reads a value of the wire into `value`. Returns what is wrong with it, or the empty text. `where` names the member.
template <typename Type>
[[nodiscard]] std::string decodeValue(const Json& json, Type& value, Unknown unknown, const std::string& where) {
    const auto refuse = [&] { return refusal(where, expectedOf<Type>(), json); };
    if constexpr (std::same_as<Type, Json>) {
        value = json;
    } else if constexpr (std::same_as<Type, std::string>) {
        if (!json.is_string()) return refuse();
        value = json.template get_ref<const std::string&>();
    } else if constexpr (std::same_as<Type, bool>) {
        if (!json.is_boolean()) return refuse();
        value = json.template get<bool>();
    } else if constexpr (kIsOptional<Type>) {
        value.reset();
        if (json.is_null()) return "";
        return decodeValue(json, value.emplace(), unknown, where);
    } else if constexpr (kIsVector<Type>) {
        if (!json.is_array()) return refuse();
        value.clear();
        value.reserve(json.size());
        for (const Json& item : json) {
            typename Type::value_type decoded{};
            std::string wrong = decodeValue(item, decoded, unknown, where);
            if (!wrong.empty()) return wrong;
            value.push_back(std::move(decoded));
        }
    } else if constexpr (Record<Type>) {
        if (!json.is_object()) return refuse();
        return decodeMembers(json, value, unknown, where);
    } else if constexpr (Named<Type>) {
        if (!json.is_string()) return refuse();
        for (const auto& [each, name] : names(Type{})) {
            if (json.template get_ref<const std::string&>() != name) continue;
            value = each;
            return "";
        }
        return refuse();
    } else if constexpr (std::is_enum_v<Type>) {
        std::underlying_type_t<Type> number{};
        std::string wrong = decodeValue(json, number, unknown, where);
        value = static_cast<Type>(number);
        return wrong;
    } else if constexpr (std::is_floating_point_v<Type>) {
        if (!json.is_number()) return refuse();
        value = json.template get<Type>();
    } else if constexpr (std::is_unsigned_v<Type>) {
        if (!json.is_number_unsigned()) return refuse();
        const auto number = json.template get<std::uint64_t>();
        if (number > std::numeric_limits<Type>::max()) return refuse();
        value = static_cast<Type>(number);
    } else {
        // A number beyond the signed range is an unsigned one.
        if (!json.is_number_integer()) return refuse();
        if (json.is_number_unsigned() &&
            json.template get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<Type>::max())) {
            return refuse();
        }
        const auto number = json.template get<std::int64_t>();
        if (number < std::numeric_limits<Type>::min() || number > std::numeric_limits<Type>::max()) return refuse();
        value = static_cast<Type>(number);
    }
    return "";
}

/// Reads the members of a JSON object into a record. Returns what is wrong, or the empty text.
template <Record Type>
[[nodiscard]] std::string decodeMembers(const Json& json, Type& record, Unknown unknown, const std::string& where) {
    const std::string before = where.empty() ? "" : where + ".";
    std::string wrong;
    std::size_t known = 0;
    forEachMember<Type>([&](const auto& member) {
        if (!wrong.empty()) return;
        const auto found = json.find(member.name);
        if (found == json.end()) {
            if (member.presence == Presence::kRequired) wrong = "\"" + before + member.name + "\" is missing";
            return;
        }
        ++known;
        wrong = decodeValue(*found, record.*member.place, unknown, before + member.name);
    });
    if (!wrong.empty() || unknown == Unknown::kIgnore || known == json.size()) return wrong;
    for (const auto& item : json.items()) {
        bool listed = false;
        forEachMember<Type>([&](const auto& member) { listed = listed || item.key() == member.name; });
        if (!listed) return "there is no member \"" + before + item.key() + "\"";
    }
    return "";
}

/// Reads a record of the wire. Returns what is wrong with it, or the empty text.
template <Record Type>
[[nodiscard]] std::string decode(const Json& json, Type& record, Unknown unknown = Unknown::kIgnore) {
    return decodeValue(json, record, unknown, "");
}

/// Returns the JSON text of a record, one line without its end.
template <Record Type>
[[nodiscard]] std::string encode(const Type& record) {
    std::string text;
    append(text, record);
    return text;
}

/// Returns a record as a JSON value, for programs that print it.
template <typename Type>
[[nodiscard]] Json jsonOf(const Type& value) {
    std::string text;
    append(text, value);
    return Json::parse(text, nullptr, false);
}

}  // namespace quorvel::hostd::protocol
