// Messages from the event socket.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wifi/QuorvelWiFiExports.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Logs and prints each event of the `length` bytes at `messages` and hands it to `callback`. Drops what follows an
/// event that is cut off or has an unknown code; a message in two reads is not put together.
void handleStationEvents(const uint8_t* messages, size_t length, AssociatedDeviceCallback callback);

}  // namespace quorvel

#pragma GCC visibility pop
