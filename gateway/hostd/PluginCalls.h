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

/// Whether calls are counted. Off until somebody asks for the counts: reading the clock twice costs a read of a number a
/// sixth of its time.
inline constinit std::atomic<bool> callsAreCounted = false;

/// Counts the call of the plug-in that is made while it lives, once calls are counted.
class CountedCall {
  public:
    explicit CountedCall(PluginCall kind) : kind_(kind), counts_(callsAreCounted.load(std::memory_order_relaxed)) {
        if (counts_) begin();
    }
    CountedCall(const CountedCall&) = delete;
    CountedCall& operator=(const CountedCall&) = delete;
    ~CountedCall() {
        if (counts_) end();
    }

    /// Takes the call's result in, and returns it.
    [[nodiscard]] std::uint32_t with(std::uint32_t result) {
        failed_ = result != 0;
        return result;
    }

  private:
    void begin();
    void end() const;

    const PluginCall kind_;
    const bool counts_;
    bool failed_ = false;
    common::Durations::Clock::time_point start_;
};

/// Returns the counts of every kind that was called, since they were first asked for. Callable from any thread.
[[nodiscard]] std::vector<protocol::CallCount> pluginCalls();

}  // namespace quorvel::hostd
