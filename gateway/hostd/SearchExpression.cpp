#include "gateway/hostd/SearchExpression.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace quorvel::hostd {
namespace {

using Operator = SearchExpression::Operator;
using Condition = SearchExpression::Condition;
using common::compare;
using common::skipBlanks;

bool isPathCharacter(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '.' ||
           c == '*' || c == '+' || c == '-';
}

std::string takeQuoted(std::string_view& text, std::string& operand) {
    text.remove_prefix(1);
    for (; !text.empty() && text.front() != '"'; text.remove_prefix(1)) {
        if (text.front() == '\\' && text.size() > 1) text.remove_prefix(1);
        operand += text.front();
    }
    if (text.empty()) return "a quote is left open";
    text.remove_prefix(1);
    return "";
}

// Takes one condition off the text.
std::string takeCondition(std::string_view& text, Condition& condition) {
    skipBlanks(text);
    while (!text.empty() && isPathCharacter(text.front())) {
        condition.path += text.front();
        text.remove_prefix(1);
    }
    if (condition.path.empty()) return "a condition begins with a parameter's name";
    skipBlanks(text);
    const auto comparison = common::takeComparison(text);
    if (!comparison) return condition.path + " is followed by none of == != ~= < > <= >=";
    condition.comparison = *comparison;
    skipBlanks(text);
    if (text.starts_with('"')) {
        condition.quoted = true;
        return takeQuoted(text, condition.operand);
    }
    const std::size_t end = std::min(text.find_first_of(" \t&"), text.size());
    condition.operand = text.substr(0, end);
    text.remove_prefix(end);
    return condition.operand.empty() ? condition.path + " is compared with nothing" : "";
}

bool isInteger(const std::string& text, std::int64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

bool contains(std::string_view list, std::string_view element) {
    for (std::size_t begin = 0; begin <= list.size();) {
        const std::size_t end = std::min(list.find(',', begin), list.size());
        std::string_view item = list.substr(begin, end - begin);
        skipBlanks(item);
        if (item.substr(0, item.find_last_not_of(' ') + 1) == element) return true;
        begin = end + 1;
    }
    return false;
}

bool isTruth(const std::string& text) {
    return text == "true" || text == "1";
}

}  // namespace

std::string SearchExpression::parse(std::string_view text) {
    conditions_.clear();
    for (;;) {
        Condition condition;
        if (std::string wrong = takeCondition(text, condition); !wrong.empty()) return wrong;
        conditions_.push_back(std::move(condition));
        skipBlanks(text);
        if (text.empty()) return "";
        if (!text.starts_with("&&")) return "\"" + std::string(text) + "\" is not joined by &&";
        text.remove_prefix(2);
    }
}

std::string SearchExpression::check(const Condition& condition, Type type) {
    const std::string& operand = condition.operand;
    const bool ordering = condition.comparison != Operator::kEqual && condition.comparison != Operator::kUnequal;
    std::int64_t number = 0;
    switch (type) {
        case Type::kText:
            return condition.quoted ? "" : "texts are written in quotes: " + condition.path + "==\"" + operand + "\"";
        case Type::kBoolean:
            if (ordering) return condition.path + " is a boolean, which == and != compare";
            if (isTruth(operand) || operand == "false" || operand == "0") return "";
            return condition.path + " is a boolean, \"" + operand + "\" is none";
        case Type::kUnsignedInt:
        case Type::kInt:
            if (condition.comparison == Operator::kContains) return condition.path + " is a number, not a list";
            return isInteger(operand, number) ? "" : condition.path + " is a number, \"" + operand + "\" is none";
    }
    return "";
}

bool SearchExpression::holds(const Condition& condition, const Value& value) {
    std::int64_t number = 0;
    switch (value.type) {
        case Type::kText:
            if (condition.comparison == Operator::kContains) return contains(value.text, condition.operand);
            return compare(condition.comparison, value.text, condition.operand);
        case Type::kBoolean:
            return compare(condition.comparison, value.number != 0, isTruth(condition.operand));
        case Type::kUnsignedInt:
            (void)isInteger(condition.operand, number);  // check() has looked at it
            return compare(condition.comparison, std::int64_t{value.number}, number);
        case Type::kInt:
            (void)isInteger(condition.operand, number);  // check() has found that it is one
            return compare(condition.comparison, std::int64_t{static_cast<std::int32_t>(value.number)}, number);
    }
    return false;
}

}  // namespace quorvel::hostd
