#include "recorder/replay/Stream.h"

#include <algorithm>

#include "recorder/desk/Text.h"

namespace quorvel::recorder {

namespace {

// Addresses differ from run to run: these take the caller's own.
bool takesContext(const std::string& function) {
    return function.starts_with("Quorvel_") && function != "Quorvel_LogPrint";
}

// Formats that begin so print their own source line as their second argument.
constexpr std::string_view kLinePrinted = "%s:%d";

std::string formattedWithoutLine(const std::string& format, std::span<const Value> arguments) {
    std::vector<Value> kept(arguments.begin(), arguments.end());
    if (format.starts_with(kLinePrinted) && kept.size() > 1) kept[1].number = 0;
    return formatted(format, kept);
}

std::span<const Value> from(std::span<const Value> values, size_t first) {
    return first < values.size() ? values.subspan(first) : std::span<const Value>();
}

bool sameLog(std::span<const Value> then, std::span<const Value> now) {
    if (then.size() < kLogArguments || now.size() < kLogArguments) return false;
    return then[kLogLevel].number == now[kLogLevel].number && then[kLogFile].bytes == now[kLogFile].bytes &&
           then[kLogFunction].bytes == now[kLogFunction].bytes &&
           formattedWithoutLine(then[kLogFormat].bytes, from(then, kLogArguments)) ==
               formattedWithoutLine(now[kLogFormat].bytes, from(now, kLogArguments));
}

// A constant of the library is a text under a name.
bool isText(const Value& value) {
    return value.type == ValueType::kText || value.type == ValueType::kName;
}

bool sameValue(const Value& then, const Value& now) {
    if (isText(then) && isText(now)) return then.bytes == now.bytes;
    if (then.type != now.type) return false;
    // A handle of a 64-bit device has its low half here on a 32-bit one.
    if (then.type == ValueType::kHandle) return static_cast<uint32_t>(then.number) == static_cast<uint32_t>(now.number);
    return then.number == now.number && then.bytes == now.bytes;
}

// printf and fprintf: the stream, if any, then the format and its arguments.
bool samePrinted(std::span<const Value* const> then, std::span<const Value> now) {
    std::string texts[2];
    const auto add = [](std::string& text, std::span<const Value> values) {
        size_t format = 0;
        while (format < values.size() && values[format].type != ValueType::kName) {
            text += describe(values[format]) + ' ';
            ++format;
        }
        if (format < values.size()) text += formattedWithoutLine(values[format].bytes, from(values, format + 1));
    };
    std::vector<Value> copy;
    for (const Value* const value : then)
        copy.push_back(*value);
    add(texts[0], copy);
    add(texts[1], now);
    return texts[0] == texts[1];
}

bool isSame(const Record& then, RecordKind kind, const std::string& function, std::span<const Value> now) {
    if (then.kind != kind || then.function != function) return false;
    if (kind == RecordKind::kLog) return sameLog(then.values, now);
    const auto arguments = then.valuesOf(ValueRole::kArgument);
    if (function == "printf" || function == "fprintf") return samePrinted(arguments, now);
    if (arguments.size() != now.size()) return false;
    for (size_t i = takesContext(function) ? 1 : 0; i < now.size(); ++i) {
        if (!sameValue(*arguments[i], now[i])) return false;
    }
    return true;
}

std::string describeSeen(RecordKind kind, const std::string& function, std::span<const Value> values) {
    Record record;
    record.kind = kind;
    record.function = function;
    record.values.assign(values.begin(), values.end());
    return kind == RecordKind::kLog ? "log " + describeLog(record) : describePlatform(record);
}

std::string describeRecorded(const Record& record) {
    return describeSeen(record.kind, record.function, record.values);
}

}  // namespace

std::vector<Difference> inOrder(std::vector<Difference> differences) {
    std::ranges::stable_sort(differences, {}, &Difference::position);
    return differences;
}

const Record* Stream::take(RecordKind kind, const std::string& function, std::span<const Value> seen) {
    if (next_ < events_.size() && isSame(*events_[next_], kind, function, seen)) return events_[next_++];
    const std::string now = describeSeen(kind, function, seen);
    if (next_ >= events_.size()) {
        note(events_.empty() ? 0 : events_.back()->position, "the recording has nothing more, the library does " + now);
        return nullptr;
    }
    note(events_[next_]->position,
         "the recording has " + describeRecorded(*events_[next_]) + ", the library does " + now);
    // The library may have left something out: it goes on where the recording has what it does now.
    for (size_t later = next_ + 1; later < events_.size(); ++later) {
        if (!isSame(*events_[later], kind, function, seen)) continue;
        next_ = later + 1;
        return events_[later];
    }
    return nullptr;
}

void Stream::finish() {
    if (next_ >= events_.size()) return;
    note(events_[next_]->position,
         "the recording has " + describeRecorded(*events_[next_]) + ", the library does not do it" +
             (events_.size() - next_ > 1 ? ", nor the " + std::to_string(events_.size() - next_ - 1) + " after it"
                                         : ""));
    next_ = events_.size();
}

void Stream::note(uint64_t position, std::string text) {
    differences_.push_back({position, thread_, call_, std::move(text)});
}

}  // namespace quorvel::recorder
