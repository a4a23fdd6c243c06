#include "gateway/hostd/PluginCalls.h"

#include <algorithm>

namespace quorvel::hostd {
namespace {

struct Counted {
    common::Durations durations;
    std::atomic<std::uint64_t> failed = 0;
};

// A process loads one plug-in, and keeps it.
Counted& counted(PluginCall kind) {
    static std::array<Counted, names(PluginCall{}).size()> all;
    return all[static_cast<std::size_t>(kind)];
}

}  // namespace

void CountedCall::begin() {
    start_ = common::Durations::Clock::now();
}

void CountedCall::end() const {
    Counted& all = counted(kind_);
    all.durations.add(common::Durations::Clock::now() - start_);
    if (failed_) all.failed.fetch_add(1, std::memory_order_relaxed);
}

std::vector<protocol::CallCount> pluginCalls() {
    callsAreCounted.store(true, std::memory_order_relaxed);
    std::vector<protocol::CallCount> counts;
    for (const auto& [kind, name] : names(PluginCall{})) {
        const Counted& each = counted(kind);
        const common::Durations::Classes classes = each.durations.classes();
        if (std::all_of(classes.begin(), classes.end(), [](std::uint64_t count) { return count == 0; })) continue;
        counts.push_back({name, each.failed, each.durations.seconds(), {classes.begin(), classes.end()}});
    }
    return counts;
}

}  // namespace quorvel::hostd
