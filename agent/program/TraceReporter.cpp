#include "agent/program/TraceReporter.h"

#include <chrono>
#include <nlohmann/json.hpp>
#include <utility>

namespace quorvel::agent {
namespace {

constexpr std::size_t kMostEntries = 1000;
constexpr std::size_t kMostBytes = 60000;  // of one decoded entry; the host process takes a little more
constexpr std::size_t kMostInOne = 50;     // entries of one request
constexpr std::size_t kQuiet = 20;         // entries between two looks
constexpr int kMostBusyLooks = 20;
constexpr std::chrono::milliseconds kLook(100);

nlohmann::ordered_json decode(const TraceEntry& entry) {
    nlohmann::ordered_json json = toJson(entry);
    const auto size = [&json] {
        return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace).size();
    };
    if (entry.size > kMostBytes / 4 && size() > kMostBytes) {
        json["message"] = {{"shortened", "the message is too large to be shown"}};
        if (size() > kMostBytes) json["record"] = nullptr;
    }
    return json;
}

}  // namespace

TraceReporter::TraceReporter(EventLoop& loop, Sink sink) : loop_(loop), sink_(std::move(sink)) {}

TraceReporter::~TraceReporter() {
    loop_.cancel(timer_);
}

void TraceReporter::add(const TraceEntry& entry) {
    kept_.push_back(entry);
    if (kept_.size() > kMostEntries) kept_.pop_front();
    ++addedSinceLook_;
    if (timer_ != 0) return;
    busyLooks_ = 0;
    timer_ = loop_.after(kLook, [this] { flushWhenQuiet(); });
}

void TraceReporter::flushWhenQuiet() {
    timer_ = 0;
    const bool busy = std::exchange(addedSinceLook_, 0) > kQuiet;
    if (busy && ++busyLooks_ < kMostBusyLooks) {
        timer_ = loop_.after(kLook, [this] { flushWhenQuiet(); });
        return;
    }
    flush();
}

void TraceReporter::flush() {
    std::vector<nlohmann::ordered_json> entries;
    for (const TraceEntry& entry : std::exchange(kept_, {})) {
        entries.push_back(decode(entry));
        if (entries.size() == kMostInOne) sink_(std::exchange(entries, {}));
    }
    if (!entries.empty()) sink_(std::move(entries));
}

}  // namespace quorvel::agent
