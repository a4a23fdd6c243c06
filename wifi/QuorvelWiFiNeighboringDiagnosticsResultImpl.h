// The store of neighbour scan results.
#pragma once

#include <cstdint>

#include "wifi/records/NeighbourResult.h"

#pragma GCC visibility push(hidden)

extern "C" {

/// Replaces the results of a radio (from 0) by `count` cleared ones. Returns 0 or 1.
[[nodiscard]] uint32_t WiFiNeighboringDiagnosticsResultInit(uint32_t radioIndex, uint32_t count,
                                                            quorvel::NeighboringWiFiResult** array);
/// Frees the results of the first two radios.
void WiFiNeighboringDiagnosticsResultUnInit(void);
/// Finds result `k` (from 1) in the sequence of all radios' results. Returns 0 or 6.
uint32_t QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(uint32_t k, quorvel::NeighboringWiFiResult** record);
}

#pragma GCC visibility pop
