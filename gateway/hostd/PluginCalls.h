#pragma once

#include <array>
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

/// Counts the call of the plug-in that is made while it lives.
class CountedCall {
  public:
    explicit CountedCall(PluginCall kind);

    /// Takes the call's result in, and returns it.
    [[nodiscard]] std::uint32_t with(std::uint32_t result) const;

  private:
    PluginCall kind_;
    common::Stopwatch watch_;
};

/// Returns the counts of every kind that was called, since the process started. Callable from any thread.
[[nodiscard]] std::vector<protocol::CallCount> pluginCalls();

}  // namespace quorvel::hostd
