// The contention parameters of WMM access categories.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "wifi/model/Rows.h"

#pragma GCC visibility push(hidden)

namespace quorvel::contention {

inline constexpr uint32_t kRead = 0;
inline constexpr uint32_t kWrite = 1;

/// Returns the field that the source column WMM(field) of a row names.
[[nodiscard]] constexpr uint32_t fieldOf(size_t row) {
    return static_cast<uint32_t>(model::kParameters[row].source[sizeof "WMM(" - 1] - '0');
}

}  // namespace quorvel::contention

/// Reads (action 0) or writes (action 1) field 0 to 4 of the contention parameters of access category `ac` (1 to 8) of
/// access point `ap` (from 1). Returns 0 or 1.
extern "C" uint32_t wifi_ap_ac_config(uint32_t ap, uint32_t ac, uint32_t field, uint32_t action, uint32_t* value);

#pragma GCC visibility pop
