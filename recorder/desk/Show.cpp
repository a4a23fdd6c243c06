#include "recorder/desk/Show.h"

#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

#include "recorder/desk/Text.h"

namespace quorvel::recorder {

namespace {

using Json = nlohmann::ordered_json;

std::string seconds(uint64_t nanoseconds) {
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%llu.%06llu",
                        static_cast<unsigned long long>(nanoseconds / 1'000'000'000),
                        static_cast<unsigned long long>(nanoseconds / 1000 % 1'000'000));
    return text.data();
}

std::string describeEvent(const Record& event) {
    switch (event.kind) {
        case RecordKind::kLog:
            return "log " + describeLog(event);
        case RecordKind::kPlatform:
            return describePlatform(event);
        case RecordKind::kCallback:
            return "calls the host back: " + describePlatform(event);
        case RecordKind::kStart:
        case RecordKind::kName:
        case RecordKind::kCall:
        case RecordKind::kReturn:
        case RecordKind::kGap:
        case RecordKind::kEnd:
        case RecordKind::kThread:
            break;
    }
    return {};
}

std::string describeArguments(const Record& call) {
    std::string text;
    for (const Value* const value : call.valuesOf(ValueRole::kArgument))
        text += (text.empty() ? "" : ", ") + describe(*value);
    return text;
}

std::string describeGap(const Record& gap) {
    const bool full = gap.values[1].number == static_cast<uint64_t>(GapReason::kQueueFull);
    return std::to_string(gap.values[0].number) +
           " records are missing: " + (full ? "the recorder's queue was full" : "the disk was full");
}

Json jsonOf(const Value& value) {
    switch (value.type) {
        case ValueType::kNull:
            return nullptr;
        case ValueType::kNumber:
        case ValueType::kNumber64:
        case ValueType::kHandle:
        case ValueType::kConstant:
            return value.number;
        case ValueType::kText:
        case ValueType::kName:
            return value.bytes;
        case ValueType::kBytes: {
            std::string digits;
            std::array<char, 3> pair{};
            for (const char c : value.bytes) {
                (void)std::snprintf(pair.data(), pair.size(), "%02x", static_cast<unsigned char>(c));
                digits += pair.data();
            }
            return Json{{"bytes", digits}};
        }
    }
    return nullptr;
}

Json jsonOf(const Record& record, ValueRole role) {
    Json list = Json::array();
    for (const Value* const value : record.valuesOf(role))
        list.push_back(jsonOf(*value));
    return list;
}

Json jsonOfEvent(const Record& event) {
    if (event.kind == RecordKind::kLog) return {{"time", event.nanoseconds}, {"log", describeLog(event)}};
    return {{"time", event.nanoseconds},
            {"function", event.function},
            {"arguments", jsonOf(event, ValueRole::kArgument)},
            {"result", jsonOf(event, ValueRole::kResult)},
            {"after", jsonOf(event, ValueRole::kAfter)}};
}

Json jsonOfEvents(const std::vector<const Record*>& events) {
    Json list = Json::array();
    for (const Record* const event : events)
        list.push_back(jsonOfEvent(*event));
    return list;
}

// A text that is no UTF-8, as an SSID may be, is shown with replacement characters.
void print(std::ostream& out, const Json& document) {
    out << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace

void showText(std::ostream& out, const Recording& recording, const Filter& filter) {
    const CallTree tree = makeCallTree(recording);
    for (const Call& call : tree.calls) {
        if (!filter.takes(call)) continue;
        out << seconds(call.begin->nanoseconds) << "  [" << call.begin->thread << "] " << call.begin->function << '('
            << describeArguments(*call.begin) << ")\n";
        for (const Record* const event : call.events)
            out << "    " << seconds(event->nanoseconds) << "  " << describeEvent(*event) << '\n';
        if (call.end == nullptr) {
            out << "    the recording ends before the call returns\n";
            continue;
        }
        for (const Value* const result : call.end->valuesOf(ValueRole::kResult))
            out << "    " << seconds(call.end->nanoseconds) << "  returns " << describe(*result) << '\n';
        for (const Value* const memory : call.end->valuesOf(ValueRole::kAfter))
            out << "                memory after: " << describe(*memory) << '\n';
    }
    for (const LibraryThread& thread : tree.threads) {
        if (filter.thread && thread.begin->thread != *filter.thread) continue;
        out << seconds(thread.begin->nanoseconds) << "  [" << thread.begin->thread << "] a thread of the library\n";
        for (const Record* const event : thread.events)
            out << "    " << seconds(event->nanoseconds) << "  " << describeEvent(*event) << '\n';
    }
    for (const Record* const gap : tree.gaps)
        out << "gap at byte " << gap->position << ": " << describeGap(*gap) << '\n';
    if (!recording.ended) {
        out << "the recording was not ended in order";
        if (recording.unreadBytes != 0)
            out << "; its last record is cut off after " << recording.unreadBytes << " bytes";
        out << '\n';
    }
}

void showPlain(std::ostream& out, const Recording& recording, const Filter& filter) {
    const CallTree tree = makeCallTree(recording);
    for (const Call& call : tree.calls) {
        if (!filter.takes(call)) continue;
        out << seconds(call.begin->nanoseconds) << '\t' << call.begin->thread << '\t' << call.begin->function << '\t'
            << describeArguments(*call.begin) << '\t';
        if (call.end != nullptr) {
            for (const Value* const result : call.end->valuesOf(ValueRole::kResult))
                out << describe(*result);
        }
        out << '\n';
    }
}

void showJson(std::ostream& out, const Recording& recording, const Filter& filter) {
    const CallTree tree = makeCallTree(recording);
    Json document{{"recording",
                   {{"library", recording.library},
                    {"wordSize", recording.wordSize},
                    {"began", recording.wallSeconds},
                    {"replayable", recording.replayable},
                    {"macsKept", recording.macsKept},
                    {"ssidsKept", recording.ssidsKept},
                    {"ended", recording.ended},
                    {"unreadBytes", recording.unreadBytes}}},
                  {"calls", Json::array()},
                  {"threads", Json::array()},
                  {"gaps", Json::array()}};
    for (const Call& call : tree.calls) {
        if (!filter.takes(call)) continue;
        Json entry{{"time", call.begin->nanoseconds},
                   {"thread", call.begin->thread},
                   {"function", call.begin->function},
                   {"arguments", jsonOf(*call.begin, ValueRole::kArgument)},
                   {"before", jsonOf(*call.begin, ValueRole::kBefore)},
                   {"events", jsonOfEvents(call.events)}};
        if (call.end != nullptr) {
            entry["returned"] = call.end->nanoseconds;
            entry["result"] = jsonOf(*call.end, ValueRole::kResult);
            entry["after"] = jsonOf(*call.end, ValueRole::kAfter);
        }
        document["calls"].push_back(std::move(entry));
    }
    for (const LibraryThread& thread : tree.threads) {
        document["threads"].push_back({{"time", thread.begin->nanoseconds},
                                       {"thread", thread.begin->thread},
                                       {"events", jsonOfEvents(thread.events)}});
    }
    for (const Record* const gap : tree.gaps)
        document["gaps"].push_back(
            {{"position", gap->position}, {"records", gap->values[0].number}, {"reason", describeGap(*gap)}});
    print(out, document);
}

}  // namespace quorvel::recorder
