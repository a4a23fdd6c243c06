#include "scenario/ConditionReader.h"

#include <algorithm>
#include <iterator>
#include <regex>
#include <span>
#include <utility>

namespace quorvel::scenario {
namespace {

using common::JsonCursor;

// The library reads and matches patterns with a call for every bracket.
constexpr std::size_t kMaxPattern = 500;

using Named = std::pair<const char*, Condition::Kind>;

// Those for texts come first; the others are bounds of numbers.
constexpr Named kKinds[] = {
    {"equals", Condition::Kind::kEquals},   {"differs", Condition::Kind::kDiffers},
    {"oneOf", Condition::Kind::kOneOf},     {"matches", Condition::Kind::kMatches},
    {"atLeast", Condition::Kind::kAtLeast}, {"atMost", Condition::Kind::kAtMost},
};
constexpr std::size_t kTextKinds = 4;

Condition readOne(const JsonCursor& member, std::span<const Named> kinds, const char* expected) {
    Condition condition;
    unsigned found = 0;
    for (const auto& [key, kind] : kinds) {
        if (!member.has(key)) continue;
        ++found;
        const JsonCursor value = member.at(key);
        if (kind == Condition::Kind::kMatches) (void)readExpression(value);
        if (kind == Condition::Kind::kOneOf && (!value.value().is_array() || value.value().empty()))
            value.fail("an array of values");
        const bool bound = kind == Condition::Kind::kAtLeast || kind == Condition::Kind::kAtMost;
        if (bound && !value.value().is_number()) value.fail("a number");
        if (!bound && kind != Condition::Kind::kOneOf && value.value().is_structured())
            value.fail("true, false, a number or a text");
        condition = {kind, value.value()};
    }
    if (found != 1) member.fail(expected);
    return condition;
}

}  // namespace

std::string readExpression(const JsonCursor& cursor) {
    std::string pattern = cursor.text();
    if (pattern.size() > kMaxPattern)
        cursor.fail("a regular expression of at most " + std::to_string(kMaxPattern) + " characters");
    try {
        const std::regex compiled(pattern);
        return pattern;
    } catch (const std::regex_error&) {
        cursor.fail("a regular expression");
    }
}

Condition readCondition(const JsonCursor& member) {
    return readOne(member, kKinds,
                   "exactly one of equals, differs, oneOf, matches, atLeast, atMost, fault beside \"parameter\"");
}

bool hasTextCondition(const JsonCursor& member) {
    return std::any_of(std::begin(kKinds), std::begin(kKinds) + kTextKinds,
                       [&member](const Named& one) { return member.has(one.first); });
}

Condition readTextCondition(const JsonCursor& member) {
    return readOne(member, std::span(kKinds).first(kTextKinds), "exactly one of equals, differs, oneOf, matches");
}

}  // namespace quorvel::scenario
