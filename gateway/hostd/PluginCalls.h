#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/Durations.h"
#include "gateway/hostd/protocol/Counts.h"

namespace quorvel::hostd {

/// The kinds of the plug-in's functions that the host process calls for clients.
enum class PluginCall : std::uint8_t { kGet, kMeasure, kSet, kInitContext, kApplyContext, kSnapshot, kOperate, kSave };
constexpr auto names(PluginCall) {
    return std::array{std::pair(PluginCall::kGet, "get"),
                      std::pair(PluginCall::kMeasure, "measure"),
                      std::pair(PluginCall::kSet, "set"),
                      std::pair(PluginCall::kInitContext, "init_context"),
                      std::pair(PluginCall::kApplyContext, "apply_context"),
                      std::pair(PluginCall::kSnapshot, "snapshot"),
                      std::pair(PluginCall::kOperate, "operate"),
                      std::pair(PluginCall::kSave, "save")};
}

/// Whether calls are counted. Off until somebody asks for the counts: reading the clock twice costs a read of a number
/// a sixth of its time.
inline constinit std::atomic<bool> callsAreCounted = false;

/// Counts one call of the plug-in.
void countCall(PluginCall kind, common::Durations::Clock::duration duration, std::uint32_t result);

/// Makes the call of the plug-in, counts it once calls are counted, and returns its result.
template <typename Call>
std::uint32_t counted(PluginCall kind, const Call& call) {
    if (!callsAreCounted.load(std::memory_order_relaxed)) [[likely]]
        return call();
    const auto start = common::Durations::Clock::now();
    const std::uint32_t result = call();
    countCall(kind, common::Durations::Clock::now() - start, result);
    return result;
}

/// Returns the counts of every kind that was called, since they were first asked for. Callable from any thread.
[[nodiscard]] std::vector<protocol::CallCount> pluginCalls();

}  // namespace quorvel::hostd
