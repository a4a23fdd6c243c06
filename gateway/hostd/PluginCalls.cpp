#include "gateway/hostd/PluginCalls.h"

#include <algorithm>

namespace quorvel::hostd {
namespace {

struct Counted {
    common::Durations durations;
    std::atomic<std::uint64_t> failed = 0;
};

// A process loads one plug-in, and keeps it.
Counted& countsOf(PluginCall kind) {
    static std::array<Counted, names(PluginCall{}).size()> all;
    return all[static_cast<std::size_t>(kind)];
}

}  // namespace

void countCall(PluginCall kind, common::Durations::Clock::duration duration, std::uint32_t result) {
    Counted& all = countsOf(kind);
    all.durations.add(duration);
    if (result != 0) all.failed.fetch_add(1, std::memory_order_relaxed);
}

std::vector<protocol::CallCount> pluginCalls() {
    callsAreCounted.store(true, std::memory_order_relaxed);
    std::vector<protocol::CallCount> counts;
    for (const auto& [kind, name] : names(PluginCall{})) {
        const Counted& each = countsOf(kind);
        const common::Durations::Classes classes = each.durations.classes();
        if (std::all_of(classes.begin(), classes.end(), [](std::uint64_t count) { return count == 0; })) continue;
        counts.push_back({name, each.failed, each.durations.seconds(), {classes.begin(), classes.end()}});
    }
    return counts;
}

}  // namespace quorvel::hostd
