// Basic rates: the manager's keywords and the rate lists of the data model. Quirk: reads and writes
// have tables of their own, which are not each other's inverse.
#pragma once

namespace quorvel {

/// Returns the rate list of a keyword, or null for an unknown one. `ofdm` is false for a radio with 802.11b rates only.
[[nodiscard]] const char* basicRatesToRead(bool ofdm, const char* keyword);

/// Returns the keyword of a rate list, or null when the list is none of the radio's.
[[nodiscard]] const char* basicRatesKeyword(bool ofdm, const char* rates);

}  // namespace quorvel
