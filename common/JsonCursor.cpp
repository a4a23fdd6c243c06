#include "common/JsonCursor.h"

#include <algorithm>
#include <cmath>

#include "common/JsonDepth.h"
#include "common/JsonPosition.h"

namespace quorvel::common {

using Json = nlohmann::ordered_json;

namespace {

constexpr double kLatest = 1e7;  // seconds

std::string shown(const Json& value) {
    constexpr std::size_t kShown = 60;
    std::string text = value.dump(-1, ' ', true, Json::error_handler_t::replace);
    if (text.size() > kShown) text = text.substr(0, kShown) + "...";
    return text;
}

std::string listed(std::initializer_list<std::string_view> words, std::string_view quote) {
    std::string list;
    for (const std::string_view word : words)
        list += (list.empty() ? "" : ", ") + std::string(quote) + std::string(word) + std::string(quote);
    return list;
}

// Spells a key as a JSON pointer does.
std::string token(std::string_view key) {
    std::string text;
    for (const char c : key)
        text += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    return text;
}

std::string range(std::int64_t low, std::int64_t high) {
    return "a whole number from " + std::to_string(low) + " to " + std::to_string(high);
}

}  // namespace

void JsonCursor::fail(const std::string& expected) const {
    throw SchemaError(pointer_, "expected " + expected + ", found " + shown(value_));
}

void JsonCursor::allow(std::initializer_list<std::string_view> keys) const {
    if (!value_.is_object()) fail("an object");
    for (const auto& item : value_.items()) {
        if (std::find(keys.begin(), keys.end(), item.key()) == keys.end())
            throw SchemaError(pointer_ + "/" + token(item.key()), "unknown key; expected one of " + listed(keys, ""));
    }
}

bool JsonCursor::has(std::string_view key) const {
    return value_.is_object() && value_.contains(key);
}

JsonCursor JsonCursor::at(std::string_view key) const {
    if (!value_.is_object()) fail("an object");
    if (!has(key)) throw SchemaError(pointer_, "expected a key \"" + std::string(key) + "\", found none");
    return {value_.at(std::string(key)), pointer_ + "/" + token(key)};
}

void JsonCursor::each(const std::function<void(const JsonCursor&)>& visit, std::size_t limit) const {
    if (!value_.is_array()) fail("an array");
    if (value_.size() > limit) {
        throw SchemaError(
            pointer_, "expected at most " + std::to_string(limit) + " entries, found " + std::to_string(value_.size()));
    }
    for (std::size_t i = 0; i < value_.size(); ++i)
        visit({value_[i], pointer_ + "/" + std::to_string(i)});
}

void JsonCursor::eachKey(const std::function<void(const std::string&, const JsonCursor&)>& visit) const {
    if (!value_.is_object()) fail("an object");
    for (const auto& item : value_.items())
        visit(item.key(), {item.value(), pointer_ + "/" + token(item.key())});
}

std::string JsonCursor::text() const {
    if (!value_.is_string() || value_.get_ref<const std::string&>().empty()) fail("a text");
    return value_.get<std::string>();
}

std::string JsonCursor::boundedText(std::size_t limit) const {
    if (!value_.is_string()) fail("a text");
    auto result = value_.get<std::string>();
    const bool printable =
        std::none_of(result.begin(), result.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
    if (result.size() > limit || !printable)
        fail("a text of at most " + std::to_string(limit) + " bytes without control characters");
    return result;
}

std::string JsonCursor::oneOf(std::initializer_list<std::string_view> values) const {
    for (const std::string_view value : values) {
        if (value_.is_string() && value_.get_ref<const std::string&>() == value) return std::string(value);
    }
    fail("one of " + listed(values, "\""));
}

bool JsonCursor::boolean() const {
    if (!value_.is_boolean()) fail("true or false");
    return value_.get<bool>();
}

std::int64_t JsonCursor::number(std::int64_t low, std::int64_t high) const {
    constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
    if (!value_.is_number_integer()) fail(range(low, high));
    if (value_.is_number_unsigned() && value_.get<std::uint64_t>() > kMost) fail(range(low, high));
    const auto result = value_.get<std::int64_t>();
    if (result < low || result > high) fail(range(low, high));
    return result;
}

int JsonCursor::integer(int low, int high) const {
    return static_cast<int>(number(low, high));
}

unsigned JsonCursor::count(unsigned low, unsigned high) const {
    return static_cast<unsigned>(number(low, high));
}

double JsonCursor::seconds() const {
    const double value = value_.is_number() ? value_.get<double>() : -1;
    if (!(value >= 0 && value <= kLatest)) fail("seconds from 0 to 10000000");
    return value;
}

std::int64_t JsonCursor::milliseconds() const {
    return std::llround(seconds() * 1000);
}

MacAddress JsonCursor::mac() const {
    const auto address = value_.is_string() ? parseMac(value_.get_ref<const std::string&>()) : std::nullopt;
    if (!address || isGroupAddress(*address)) fail("a MAC address such as \"02:00:00:12:34:56\" (not a group address)");
    return *address;
}

std::string DocumentProblem::message(const std::string& name) const {
    return name + ":" + position + ": " + (pointer.empty() ? "/" : pointer) + ": " + text;
}

std::optional<DocumentProblem> readDocument(std::string_view text, const std::function<void(const JsonCursor&)>& read) {
    if (const auto deep = findTooDeep(text)) return DocumentProblem{placeOfByte(text, *deep), "", tooDeepText()};
    try {
        const Json document = Json::parse(text);
        read({document, ""});
        return std::nullopt;
    } catch (const SchemaError& error) {
        return DocumentProblem{placeOfPointer(text, error.pointer), error.pointer, error.what()};
    } catch (const Json::parse_error& error) {
        std::string what = error.what();
        if (const std::size_t start = what.find(" - "); start != std::string::npos) what = what.substr(start + 3);
        return DocumentProblem{placeOfByte(text, error.byte == 0 ? 0 : error.byte - 1), "", "expected JSON: " + what};
    }
}

}  // namespace quorvel::common
