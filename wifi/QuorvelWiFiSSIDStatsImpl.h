// Helpers of the SSID statistics' implementation.
#pragma once

#include <cstdint>
#include <cstdio>

#include "wifi/records/NetDevStats.h"

#pragma GCC visibility push(hidden)

extern "C" {

/// Reads and parses the next line of /proc/net/dev. Returns 0, or 1 at the end or on a malformed line.
[[nodiscard]] uint32_t Quorvel_P_WiFiSSIDStatsNetDevStatsGetNext(FILE* stream, quorvel::NetDevStats* record);
/// Reads the counter of `node` of the interface that carries the SSID. Returns 0, 1 or 6.
[[nodiscard]] uint32_t Quorvel_P_WiFiSSIDStatsGet(uint32_t ssid, uint32_t node, uint32_t* out);
}

#pragma GCC visibility pop
