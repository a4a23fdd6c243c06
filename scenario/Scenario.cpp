#include "scenario/Scenario.h"

#include <algorithm>
#include <cstdio>

namespace quorvel::scenario {

std::string textOf(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

namespace {

std::string describe(const Condition& condition) {
    switch (condition.kind) {
        case Condition::Kind::kEquals:
            return " = " + textOf(condition.value);
        case Condition::Kind::kDiffers:
            return " is not " + textOf(condition.value);
        case Condition::Kind::kMatches:
            return " matches " + textOf(condition.value);
        case Condition::Kind::kAtLeast:
            return " >= " + textOf(condition.value);
        case Condition::Kind::kAtMost:
            return " <= " + textOf(condition.value);
        case Condition::Kind::kOneOf:
            break;
    }
    std::string list;
    for (const Json& value : condition.value)
        list += (list.empty() ? "" : ", ") + textOf(value);
    return " is one of " + list;
}

std::string counts(const Expectation& expectation) {
    std::string text;
    if (expectation.atMost == 0U) return ", never";
    if (expectation.atLeast != 1 && !expectation.atMost)
        text += ", at least " + std::to_string(expectation.atLeast) + " times";
    if (expectation.atMost) text += ", at most " + std::to_string(*expectation.atMost) + " times";
    return text;
}

std::string told(const Expectation& expectation) {
    std::string text = expectation.path.empty() ? "" : " " + expectation.path;
    if (!expectation.subscription.empty()) text += " of subscription " + expectation.subscription;
    if (expectation.code) {
        text += *expectation.code == 0 ? " without a fault" : " with fault " + std::to_string(*expectation.code);
    }
    if (expectation.wanted)
        text += (expectation.member.empty() ? "" : " " + expectation.member) + describe(*expectation.wanted);
    return text;
}

std::string span(const Expectation& expectation) {
    const auto brief = [](Time time) {
        std::string text = seconds(time);
        while (text.ends_with('0'))
            text.pop_back();
        if (text.ends_with('.')) text.pop_back();
        return text + " s";
    };
    if (expectation.after == expectation.by) return " at " + brief(expectation.by);
    if (expectation.after == 0) return " by " + brief(expectation.by);
    return " between " + brief(expectation.after) + " and " + brief(expectation.by);
}

// Lists and objects without the marks of JSON.
std::string plain(const Json& value) {
    if (!value.is_structured()) return textOf(value);
    std::string text;
    const char* separator = "";
    for (const auto& item : value.items()) {
        const bool nested = item.value().is_structured();
        text += separator;
        if (value.is_object()) text += item.key() + (nested ? " " : " = ");
        text += plain(item.value());
        separator = ", ";
    }
    return text;
}

}  // namespace

bool Scenario::usesUsp() const {
    return std::any_of(timeline.begin(), timeline.end(),
                       [](const Step& step) { return step.action.starts_with("usp."); }) ||
           std::any_of(expectations.begin(), expectations.end(),
                       [](const Expectation& one) { return one.isOfController(); });
}

// An agent is sent the same events; they must have come before it is asked for what follows.
bool Scenario::listens() const {
    return usesUsp() || std::any_of(expectations.begin(), expectations.end(),
                                    [](const Expectation& one) { return one.kind == Expectation::Kind::kEvent; });
}

std::string describe(const Step& step) {
    const Json& members = step.members;
    std::string text = step.action;
    if (step.action == "set") {
        const char* separator = " ";
        for (const auto& item : members.at("values").items()) {
            text += separator + item.key() + " = " + textOf(item.value());
            separator = ", ";
        }
        return text + (members.value("save", false) ? ", saved" : "");
    }
    for (const auto& item : members.items())
        text += " " + item.key() + " " + plain(item.value());
    return text;
}

std::string describe(const Expectation& expectation) {
    using Kind = Expectation::Kind;
    switch (expectation.kind) {
        case Kind::kParameter:
            return expectation.subject + describe(expectation.condition) + span(expectation);
        case Kind::kUnreadable:
            return expectation.subject + " gives fault " + std::to_string(expectation.fault) + span(expectation);
        case Kind::kEvent:
            return "event " + expectation.subject + (expectation.station.empty() ? "" : " " + expectation.station) +
                   (expectation.accessPoint == 0 ? "" : " on access point " + std::to_string(expectation.accessPoint)) +
                   counts(expectation) + span(expectation);
        case Kind::kLog:
            return "log entry " + expectation.subject +
                   (expectation.pattern.empty() ? "" : " matching " + expectation.pattern) + counts(expectation) +
                   span(expectation);
        case Kind::kFault:
            return "step " + expectation.subject + " gives " +
                   (expectation.fault == 0 ? "no fault" : "fault " + std::to_string(expectation.fault));
        case Kind::kNotification:
            return "notification " + expectation.subject + told(expectation) + counts(expectation) + span(expectation);
        case Kind::kAnswer:
            return "answer to " + expectation.subject + told(expectation) + counts(expectation) + span(expectation);
    }
    return "";
}

std::string seconds(Time time) {
    char text[32];
    (void)std::snprintf(text, sizeof text, "%lld.%03lld", static_cast<long long>(time / 1000),
                        static_cast<long long>(time % 1000));  // two numbers always fit
    return text;
}

}  // namespace quorvel::scenario
