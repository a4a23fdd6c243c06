// Reading the text that the `wl` utility prints of a neighbour scan.
#pragma once

#include <cstdint>
#include <cstdio>

#include "wifi/records/NeighbourResult.h"

namespace quorvel {

/// Counts the entries of a results file: its lines that begin with "SSID: ".
[[nodiscard]] uint32_t countNeighbours(FILE* file);

/// Parses at most `count` entries into `results`, which are cleared. `radio` (from 1) is the one that scanned. An entry
/// ends at an empty line; one that the file's end cuts off keeps what was read, without the decisions on security and
/// standard.
void parseNeighbours(FILE* file, uint32_t radio, NeighboringWiFiResult* results, uint32_t count);

}  // namespace quorvel
