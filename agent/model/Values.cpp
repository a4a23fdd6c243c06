#include "agent/model/Values.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <limits>

namespace quorvel::agent {
namespace {

using common::compare;
using Operator = Condition::Operator;

template <typename Number>
bool isExactly(std::string_view text, Number& number) {
    if (text.starts_with('+')) text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(begin);
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

bool isBoolean(std::string_view text) {
    return text == "true" || text == "false" || text == "1" || text == "0";
}

Problem wrongType(const std::string& value, const char* type) {
    return {kInvalidType, "\"" + value + "\" is not " + type};
}

Problem normalizeNumber(const Parameter& parameter, std::string& value) {
    const bool isSigned = parameter.type == ValueType::kInt;
    std::int64_t number = 0;
    if (!isExactly(std::string_view(value), number)) return wrongType(value, isSigned ? "an int" : "an unsignedInt");
    const std::int64_t least = isSigned ? std::numeric_limits<std::int32_t>::min() : std::int64_t{parameter.least};
    const std::int64_t most = isSigned             ? std::int64_t{std::numeric_limits<std::int32_t>::max()}
                              : parameter.most > 0 ? std::int64_t{parameter.most}
                                                   : std::int64_t{std::numeric_limits<std::uint32_t>::max()};
    if (number < least || number > most) {
        return {kInvalidValue,
                "\"" + value + "\" is not from " + std::to_string(least) + " to " + std::to_string(most)};
    }
    value = std::to_string(number);
    return {};
}

Problem normalizeText(const Parameter& parameter, std::string& value) {
    if (parameter.is(kList)) {
        std::string joined;
        for (const std::string& item : listItems(value))
            joined.append(joined.empty() ? "" : ",").append(item);
        value = joined;
    }
    if (parameter.most > 0 && value.size() > parameter.most) {
        return {kInvalidValue, "the value has " + std::to_string(value.size()) + " characters; at most " +
                                   std::to_string(parameter.most) + " fit"};
    }
    if (value.size() < parameter.least) return {kInvalidValue, "the value must not be empty"};
    const auto& choices = parameter.choices;
    if (!choices.empty() && std::find(choices.begin(), choices.end(), value) == choices.end()) {
        std::string known;
        for (const std::string& choice : choices)
            known.append(known.empty() ? "" : ", ").append(choice);
        return {kInvalidValue, "\"" + value + "\" is none of " + known};
    }
    return {};
}

bool isEquality(Operator comparison) {
    return comparison == Operator::kEqual || comparison == Operator::kUnequal;
}

std::string checkTime(const Condition& condition) {
    if (!condition.quoted && !condition.operand.starts_with('"') && condition.operand.empty())
        return "a time is missing";
    if (condition.operand == kUnknownTime) {
        return isEquality(condition.comparison) ? "" : "the unknown time is compared by == and != only";
    }
    if (condition.comparison == Operator::kContains) return condition.path + " is a time, not a list";
    return parseDateTime(condition.operand) ? "" : "\"" + condition.operand + "\" is not a dateTime";
}

}  // namespace

std::vector<std::string> listItems(std::string_view list) {
    std::vector<std::string> items;
    std::size_t begin = 0;
    unsigned depth = 0;
    bool quoted = false;
    for (std::size_t i = 0; i <= list.size(); ++i) {
        const char c = i < list.size() ? list[i] : ',';
        if (i < list.size()) {
            if (c == '"' && depth > 0) quoted = !quoted;
            if (!quoted && c == '[') ++depth;
            if (!quoted && c == ']' && depth > 0) --depth;
            if (c != ',' || depth > 0) continue;
        }
        const std::string_view item = trimmed(list.substr(begin, i - begin));
        if (!item.empty()) items.emplace_back(item);
        begin = i + 1;
    }
    return items;
}

Problem normalize(const Parameter& parameter, std::string& value) {
    switch (parameter.type) {
        case ValueType::kString:
            return normalizeText(parameter, value);
        case ValueType::kBoolean:
            if (!isBoolean(value)) return wrongType(value, "a boolean (true or false)");
            value = isTrue(value) ? "true" : "false";
            return {};
        case ValueType::kUnsignedInt:
        case ValueType::kInt:
        case ValueType::kUnsignedLong:
            return normalizeNumber(parameter, value);
        case ValueType::kDateTime:
            if (value != kUnknownTime && !parseDateTime(value)) {
                return wrongType(value, "a dateTime such as 2026-01-31T12:00:00Z");
            }
            return {};
    }
    return {};
}

bool isTrue(std::string_view value) {
    return value == "true" || value == "1";
}

std::uint32_t numberOr(std::string_view value, std::uint32_t fallback) {
    std::uint32_t number = 0;
    return isExactly(value, number) ? number : fallback;
}

std::string checkCondition(const Condition& condition, const Parameter& parameter) {
    std::int64_t number = 0;
    switch (parameter.type) {
        case ValueType::kString:
            if (!condition.quoted) return "\"" + condition.path + "\" is a string; put the constant in quotes";
            if (isEquality(condition.comparison)) return "";
            if (condition.comparison == Operator::kContains) return "";
            return "\"" + condition.path + "\" is a string, which == and != compare";
        case ValueType::kBoolean:
            if (condition.quoted) return "\"" + condition.path + "\" is a boolean; leave the quotes out";
            if (!isEquality(condition.comparison))
                return "\"" + condition.path + "\" is a boolean, which == and != compare";
            return isBoolean(condition.operand) ? "" : "\"" + condition.operand + "\" is not a boolean";
        case ValueType::kUnsignedInt:
        case ValueType::kInt:
        case ValueType::kUnsignedLong:
            if (condition.quoted) return "\"" + condition.path + "\" is a number; leave the quotes out";
            if (condition.comparison == Operator::kContains)
                return "\"" + condition.path + "\" is a number, not a list";
            return isExactly(std::string_view(condition.operand), number)
                       ? ""
                       : "\"" + condition.operand + "\" is not a number";
        case ValueType::kDateTime:
            return checkTime(condition);
    }
    return "";
}

bool meets(const Condition& condition, const Parameter& parameter, std::string_view value) {
    const Operator comparison = condition.comparison;
    std::int64_t left = 0;
    std::int64_t right = 0;
    switch (parameter.type) {
        case ValueType::kString: {
            if (comparison != Operator::kContains)
                return compare(comparison, value, std::string_view(condition.operand));
            const auto items = listItems(value);
            return std::find(items.begin(), items.end(), condition.operand) != items.end();
        }
        case ValueType::kBoolean:
            return compare(comparison, isTrue(value), isTrue(condition.operand));
        case ValueType::kUnsignedInt:
        case ValueType::kInt:
        case ValueType::kUnsignedLong:
            return isExactly(value, left) && isExactly(std::string_view(condition.operand), right) &&
                   compare(comparison, left, right);
        case ValueType::kDateTime: {
            const auto mine = parseDateTime(value);
            const auto other = parseDateTime(condition.operand);
            if (isEquality(comparison)) return compare(comparison, mine, other);
            return mine && other && compare(comparison, *mine, *other);
        }
    }
    return false;
}

std::string dateTimeText(BoardInstant instant) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(instant);
    const auto day = std::chrono::floor<std::chrono::days>(seconds);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(seconds - day);
    char text[48];
    (void)std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                        static_cast<int>(time.seconds().count()));
    return text;
}

std::optional<BoardInstant> parseDateTime(std::string_view text) {
    if (text == kUnknownTime || text.size() > 40) return std::nullopt;
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int used = 0;
    const std::string copy(text);
    if (std::sscanf(copy.c_str(), "%4d-%2u-%2uT%2d:%2d:%2d%n", &year, &month, &day, &hour, &minute, &second, &used) !=
        6) {
        return std::nullopt;
    }
    std::string_view rest = text.substr(static_cast<std::size_t>(used));
    if (rest.starts_with('.')) {
        rest.remove_prefix(1);
        rest.remove_prefix(std::min(rest.find_first_not_of("0123456789"), rest.size()));
    }
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    if (!date.ok() || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59)
        return std::nullopt;
    std::chrono::minutes offset{0};
    if (rest != "Z") {
        int hours = 0;
        int minutes = 0;
        const std::string zone(rest);
        if (zone.size() != 6 || (zone[0] != '+' && zone[0] != '-') ||
            std::sscanf(zone.c_str() + 1, "%2d:%2d", &hours, &minutes) != 2) {
            return std::nullopt;
        }
        offset = std::chrono::minutes(hours * 60 + minutes) * (zone[0] == '-' ? -1 : 1);
    }
    return BoardInstant(std::chrono::sys_days(date) + std::chrono::hours(hour) + std::chrono::minutes(minute) +
                        std::chrono::seconds(second) - offset);
}

}  // namespace quorvel::agent
