#include "gateway/hostd/Sinks.h"

#include <utility>

namespace quorvel::hostd {
namespace {

constexpr std::size_t kValuesPerPart = 128;

}  // namespace

void Service::PartSink::send(protocol::Part part) {
    if (kept_ != nullptr) kept_->push_back(part);
    part.of = of_;
    reply_.part(part);
}

void Service::PartSink::flush() {
    if (values_.empty()) return;
    protocol::Part part;
    part.values = std::move(values_);
    values_.clear();
    send(std::move(part));
}

void Service::PartSink::value(std::string path, Value value) {
    values_.push_back({std::move(path), toJson(value)});
    if (values_.size() >= kValuesPerPart) flush();
}

void Service::PartSink::measured(std::string path, protocol::Json record) {
    values_.push_back({std::move(path), std::move(record)});
    flush();
}

void Service::PartSink::fault(Fault fault) {
    flush();
    protocol::Part part;
    fault.path = presentable(fault.path);
    fault.reason = presentable(fault.reason);
    fault.log = presentable(fault.log);
    part.faults.push_back(std::move(fault));
    send(std::move(part));
}

void Service::LookSink::value(std::string path, Value value) {
    seen_.insert(path);
    const auto [found, added] = watched_.values.try_emplace(path, value);
    if (!added && found->second == value) return;
    if (watched_.known) part_.values.push_back({std::move(path), toJson(value)});
    found->second = std::move(value);
}

// A watch looks at no measurements: they take a second each.
void Service::LookSink::measured(std::string, protocol::Json) {}

// The path is gone, which finish() notices, or cannot be read for now.
void Service::LookSink::fault(Fault) {}

protocol::Part Service::LookSink::finish(bool complete) {
    if (!complete) return std::move(part_);
    std::erase_if(watched_.values, [this](const auto& item) {
        if (seen_.contains(item.first)) return false;
        part_.gone.push_back(item.first);
        return true;
    });
    return std::move(part_);
}

}  // namespace quorvel::hostd
