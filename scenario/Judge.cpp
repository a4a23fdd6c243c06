#include "scenario/Judge.h"

#include <algorithm>
#include <regex>

namespace quorvel::scenario {
namespace {

constexpr std::size_t kShownValues = 4;

bool same(const Json& a, const Json& b) {
    if (a.is_number() && b.is_number()) return a.get<double>() == b.get<double>();
    return textOf(a) == textOf(b);
}

std::string faultText(const Fault& fault) {
    return "fault " + std::to_string(codeOf(fault)) + (fault.reason.empty() ? "" : ": " + fault.reason);
}

bool hasCode(const std::vector<Fault>& faults, unsigned code) {
    return std::any_of(faults.begin(), faults.end(), [code](const Fault& fault) { return codeOf(fault) == code; });
}

Verdict lookAtParameter(const Expectation& expectation, Stage& stage) {
    std::vector<Json> values;
    hostd::protocol::Get request;
    request.paths = {expectation.subject};
    const std::vector<Fault> faults = stage.ask(request, [&values](const hostd::protocol::Part& part) {
        for (const auto& [path, value] : part.values)
            values.push_back(value);
    });
    if (expectation.kind == Expectation::Kind::kUnreadable) {
        return {hasCode(faults, expectation.fault), false,
                faults.empty() ? (values.empty() ? "no value" : textOf(values.front())) : faultText(faults.front())};
    }
    Verdict verdict;
    for (const Json& value : values) {
        if (!holds(expectation.condition, value)) continue;
        verdict.holds = true;
        verdict.seen = textOf(value);
        return verdict;
    }
    if (values.empty()) verdict.seen = faults.empty() ? "no value" : faultText(faults.front());
    for (std::size_t i = 0; i < values.size() && i <= kShownValues; ++i)
        verdict.seen += (i == 0 ? "" : ", ") + (i < kShownValues ? textOf(values[i]) : "...");
    return verdict;
}

// Too many are too many for ever; too few may become enough; never too many is certain at the end only.
Verdict judgeCount(const Expectation& expectation, std::size_t count, const std::string& last) {
    Verdict verdict;
    verdict.seen = count == 0 ? "none" : std::to_string(count) + (last.empty() ? "" : ", the last: " + last);
    verdict.holds = count >= expectation.atLeast && (!expectation.atMost || count <= *expectation.atMost);
    verdict.final = expectation.atMost && count > *expectation.atMost;
    return verdict;
}

bool inTime(Time time, const Expectation& expectation) {
    return time >= expectation.after && time <= expectation.by;
}

Verdict lookAtEvents(const Expectation& expectation, const Stage& stage) {
    std::size_t count = 0;
    std::string last;
    for (const StationEvent& event : stage.events()) {
        const bool meant = inTime(event.time, expectation) && event.kind == expectation.subject &&
                           (expectation.station.empty() || event.station == expectation.station) &&
                           (expectation.accessPoint == 0 || event.accessPoint == expectation.accessPoint);
        if (!meant) continue;
        ++count;
        last = event.station + " on access point " + std::to_string(event.accessPoint);
    }
    return judgeCount(expectation, count, last);
}

Verdict lookAtLog(const Expectation& expectation, const Stage& stage) {
    const std::regex pattern(expectation.pattern);
    std::size_t count = 0;
    std::string last;
    for (const LogLine& entry : stage.log()) {
        const bool meant = inTime(entry.time, expectation) && entry.kind == expectation.subject &&
                           (expectation.pattern.empty() || std::regex_search(entry.text, pattern));
        if (!meant) continue;
        ++count;
        last = entry.text;
    }
    return judgeCount(expectation, count, last);
}

// Compares names and numbers one by one; * is any.
bool leadsTo(std::string_view pattern, std::string_view path) {
    for (;;) {
        const std::size_t end = pattern.find('.');
        const std::size_t there = path.find('.');
        const std::string_view asked = pattern.substr(0, end);
        if (asked != "*" && asked != path.substr(0, there)) return false;
        if (end == std::string_view::npos || there == std::string_view::npos) return end == there;
        pattern.remove_prefix(end + 1);
        path.remove_prefix(there + 1);
    }
}

bool hasFault(const Expectation& expectation, const UspArrival& arrival) {
    if (expectation.code == 0U) return arrival.faults.empty();
    return std::any_of(arrival.faults.begin(), arrival.faults.end(), [&](const UspArrival::Fault& fault) {
        return fault.code == *expectation.code && (expectation.path.empty() || leadsTo(expectation.path, fault.path));
    });
}

bool fits(const Expectation& expectation, const UspArrival& arrival) {
    const bool notification = expectation.kind == Expectation::Kind::kNotification;
    if (arrival.kind != (notification ? UspArrival::Kind::kNotification : UspArrival::Kind::kAnswer)) return false;
    if (arrival.subject != expectation.subject || !inTime(arrival.time, expectation)) return false;
    if (!expectation.subscription.empty() && arrival.subscription != expectation.subscription) return false;
    if (expectation.code && !hasFault(expectation, arrival)) return false;
    if (notification) {
        if (!expectation.path.empty() && !leadsTo(expectation.path, arrival.path)) return false;
        if (!expectation.wanted) return true;
        if (expectation.member.empty()) return holds(*expectation.wanted, arrival.value);
        const auto found = arrival.values.find(expectation.member);
        return found != arrival.values.end() && holds(*expectation.wanted, *found);
    }
    if (expectation.path.empty() || expectation.code) return true;
    for (const auto& item : arrival.values.items()) {
        if (leadsTo(expectation.path, item.key()) && (!expectation.wanted || holds(*expectation.wanted, item.value())))
            return true;
    }
    return false;
}

Verdict lookAtController(const Expectation& expectation, const Stage& stage) {
    std::size_t count = 0;
    std::string last;
    for (const UspArrival& arrival : stage.arrivals()) {
        if (!fits(expectation, arrival)) continue;
        ++count;
        last = arrival.text;
    }
    Verdict verdict = judgeCount(expectation, count, last);
    if (count != 0 || stage.arrivals().empty()) return verdict;
    // Something like it helps to find the difference.
    for (const UspArrival& arrival : stage.arrivals()) {
        if (arrival.subject == expectation.subject) last = arrival.text;
    }
    if (!last.empty()) verdict.seen += "; but " + last;
    return verdict;
}

Verdict lookAtFaults(const Expectation& expectation, const StepFaults& done) {
    const auto step = done.find(expectation.subject);
    if (step == done.end()) return {};
    const std::vector<Fault>& faults = step->second;
    return {expectation.fault == 0 ? faults.empty() : hasCode(faults, expectation.fault), true,
            faults.empty() ? "no fault" : faultText(faults.front())};
}

}  // namespace

bool holds(const Condition& condition, const Json& value) {
    switch (condition.kind) {
        case Condition::Kind::kEquals:
            return same(value, condition.value);
        case Condition::Kind::kDiffers:
            return !same(value, condition.value);
        case Condition::Kind::kOneOf:
            return std::any_of(condition.value.begin(), condition.value.end(),
                               [&value](const Json& one) { return same(value, one); });
        case Condition::Kind::kMatches:
            return std::regex_search(textOf(value), std::regex(condition.value.get<std::string>()));
        case Condition::Kind::kAtLeast:
            return value.is_number() && value.get<double>() >= condition.value.get<double>();
        case Condition::Kind::kAtMost:
            return value.is_number() && value.get<double>() <= condition.value.get<double>();
    }
    return false;
}

Verdict look(const Expectation& expectation, Stage& stage, const StepFaults& faults) {
    switch (expectation.kind) {
        case Expectation::Kind::kParameter:
        case Expectation::Kind::kUnreadable:
            return lookAtParameter(expectation, stage);
        case Expectation::Kind::kEvent:
            return lookAtEvents(expectation, stage);
        case Expectation::Kind::kLog:
            return lookAtLog(expectation, stage);
        case Expectation::Kind::kFault:
            return lookAtFaults(expectation, faults);
        case Expectation::Kind::kNotification:
        case Expectation::Kind::kAnswer:
            return lookAtController(expectation, stage);
    }
    return {};
}

}  // namespace quorvel::scenario
