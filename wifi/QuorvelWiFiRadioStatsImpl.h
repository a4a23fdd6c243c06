// Helpers of the radio statistics' implementation.
#pragma once

#include <cstdint>

#pragma GCC visibility push(hidden)

extern "C" {

/// Reads the counter of `node` from the output of the `wl` utility: 32 bits. Returns 0, 1 or 6.
[[nodiscard]] uint32_t Quorvel_P_WiFiRadioStatsGet(uint32_t radio, uint32_t node, void* out);
/// Sums the drops of the radio's interfaces. Returns 0 or 1.
[[nodiscard]] uint32_t Quorvel_P_WiFiRadioStatsDiscardPacketsGet(uint32_t radio, uint32_t* sent, uint32_t* received);
}

#pragma GCC visibility pop
