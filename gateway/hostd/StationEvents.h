#pragma once

#include <cstdint>
#include <functional>

#include "gateway/hostd/Plugin.h"
#include "gateway/hostd/protocol/Records.h"

namespace quorvel::hostd {

/// Sets who receives station events from now on. Called from the plug-in's listener thread.
void onStationEvents(std::function<void(const protocol::StationEvent&)> receiver);

/// Registers the process's callback with the plug-in. Returns the plug-in's result code.
[[nodiscard]] std::uint32_t listenForEvents(const Plugin& plugin);

/// Registers the callback again: a new WLAN manager does not know the listeners of the old one.
void listenAnew(const Plugin& plugin);

}  // namespace quorvel::hostd
