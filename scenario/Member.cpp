#include "scenario/Member.h"

#include <algorithm>
#include <cmath>
#include <regex>

#include "gateway/manager/BoardFile.h"

namespace quorvel::scenario {

using Json = nlohmann::ordered_json;

namespace {

constexpr double kLatest = 1e7;

// The library reads and matches patterns with a call for every bracket.
constexpr std::size_t kMaxPattern = 500;

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

// A key as a JSON pointer spells it.
std::string token(std::string_view key) {
    std::string text;
    for (const char c : key)
        text += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    return text;
}

}  // namespace

void Member::fail(const std::string& expected) const {
    throw Mistake(pointer_, "expected " + expected + ", found " + shown(value_));
}

void Member::allow(std::initializer_list<std::string_view> keys) const {
    if (!value_.is_object()) fail("an object");
    for (const auto& item : value_.items()) {
        if (std::find(keys.begin(), keys.end(), item.key()) == keys.end())
            throw Mistake(pointer_ + "/" + token(item.key()), "unknown key; expected one of " + listed(keys, ""));
    }
}

bool Member::has(std::string_view key) const {
    return value_.is_object() && value_.contains(key);
}

Member Member::at(std::string_view key) const {
    if (!value_.is_object()) fail("an object");
    if (!has(key)) throw Mistake(pointer_, "expected a key \"" + std::string(key) + "\", found none");
    return {value_.at(std::string(key)), pointer_ + "/" + token(key)};
}

void Member::each(const std::function<void(const Member&)>& visit) const {
    if (!value_.is_array()) fail("an array");
    for (std::size_t i = 0; i < value_.size(); ++i)
        visit({value_[i], pointer_ + "/" + std::to_string(i)});
}

void Member::eachKey(const std::function<void(const std::string&, const Member&)>& visit) const {
    if (!value_.is_object()) fail("an object");
    for (const auto& item : value_.items())
        visit(item.key(), {item.value(), pointer_ + "/" + token(item.key())});
}

std::string Member::text() const {
    if (!value_.is_string() || value_.get_ref<const std::string&>().empty()) fail("a text");
    return value_.get<std::string>();
}

std::string Member::oneOf(std::initializer_list<std::string_view> values) const {
    for (const std::string_view value : values) {
        if (value_.is_string() && value_.get_ref<const std::string&>() == value) return std::string(value);
    }
    fail("one of " + listed(values, "\""));
}

bool Member::boolean() const {
    if (!value_.is_boolean()) fail("true or false");
    return value_.get<bool>();
}

std::uint64_t Member::number(std::uint64_t low, std::uint64_t high) const {
    const bool good =
        value_.is_number_unsigned() && value_.get<std::uint64_t>() >= low && value_.get<std::uint64_t>() <= high;
    if (!good) fail("a whole number from " + std::to_string(low) + " to " + std::to_string(high));
    return value_.get<std::uint64_t>();
}

int Member::signedNumber(int low, int high) const {
    const bool good =
        value_.is_number_integer() && value_.get<std::int64_t>() >= low && value_.get<std::int64_t>() <= high;
    if (!good) fail("a whole number from " + std::to_string(low) + " to " + std::to_string(high));
    return value_.get<int>();
}

std::int64_t Member::milliseconds() const {
    const double value = value_.is_number() ? value_.get<double>() : -1;
    if (!(value >= 0 && value <= kLatest)) fail("seconds from 0 to 10000000");
    return std::llround(value * 1000);
}

std::string Member::mac() const {
    const auto address = value_.is_string() ? manager::parseMac(value_.get<std::string>()) : std::nullopt;
    if (!address || (address->bytes[0] & 1U) != 0)
        fail("a MAC address such as \"02:00:00:12:34:56\" (not a group address)");
    return manager::formatMac(*address);
}

std::string Member::expression() const {
    std::string pattern = text();
    if (pattern.size() > kMaxPattern)
        fail("a regular expression of at most " + std::to_string(kMaxPattern) + " characters");
    try {
        const std::regex compiled(pattern);
        return pattern;
    } catch (const std::regex_error&) {
        fail("a regular expression");
    }
}

}  // namespace quorvel::scenario
