#include "gateway/hostd/Services.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "gateway/hostd/protocol/Codec.h"

namespace quorvel::hostd {
namespace {

using protocol::Json;

std::size_t sizeOf(const Json& value) {
    std::string text;
    protocol::appendJson(text, value);
    return text.size();
}

std::string refusedSize(const std::string& what, std::size_t size) {
    return what + " has " + std::to_string(size) + " bytes of JSON; at most " + std::to_string(Services::kMaxStatus) +
           " are kept, shorten it";
}

}  // namespace

std::string Services::report(const protocol::ReportStatus& request, int owner) {
    if (const std::size_t size = sizeOf(request.status); size > kMaxStatus) return refusedSize("the status", size);
    auto found = std::find_if(reported_.begin(), reported_.end(),
                              [&request](const Reported& each) { return each.status.service == request.service; });
    if (found == reported_.end()) {
        if (reported_.size() >= kMaxServices) {
            return "there are " + std::to_string(kMaxServices) + " services already; no further one can report";
        }
        found = reported_.insert(found, Reported{});
    }
    *found = {{request.service, true, request.status}, owner};
    return "";
}

bool Services::disconnected(int owner) {
    bool changed = false;
    for (Reported& each : reported_) {
        if (each.owner != owner || !each.status.connected) continue;
        each.status.connected = false;
        each.owner = -1;
        changed = true;
    }
    return changed;
}

std::string Services::add(const protocol::ReportTrace& request, double time, std::vector<protocol::TraceEntry>& added) {
    std::vector<Kept> entries;
    for (const Json& entry : request.entries) {
        const std::size_t size = sizeOf(entry);
        if (size > kMaxStatus) return refusedSize("an entry", size);
        entries.push_back({{0, time, request.service, entry}, size});
    }
    for (Kept& each : entries) {
        each.entry.number = ++lastNumber_;
        added.push_back(each.entry);
        traceSize_ += each.size;
        trace_.push_back(std::move(each));
    }
    while (trace_.size() > kMaxEntries || traceSize_ > kMaxTrace) {
        traceSize_ -= trace_.front().size;
        trace_.pop_front();
    }
    return "";
}

std::vector<protocol::ServiceStatus> Services::statuses(const std::string& service) const {
    std::vector<protocol::ServiceStatus> found;
    for (const Reported& each : reported_) {
        if (service.empty() || each.status.service == service) found.push_back(each.status);
    }
    return found;
}

std::vector<protocol::TraceEntry> Services::trace(const protocol::ReadTrace& request) const {
    std::vector<protocol::TraceEntry> found;
    for (const Kept& each : trace_) {
        const bool wanted = request.service.empty() || each.entry.service == request.service;
        if (wanted && each.entry.number > request.since) found.push_back(each.entry);
    }
    if (request.count != 0 && found.size() > request.count) {
        found.erase(found.begin(), found.end() - static_cast<std::ptrdiff_t>(request.count));
    }
    return found;
}

}  // namespace quorvel::hostd
