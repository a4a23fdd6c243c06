// Helpers of the radio's implementation.
#pragma once

#include <cstdint>

#pragma GCC visibility push(hidden)

/// Band-steering policy of a radio, as its non-volatile text holds it.
struct BsdSteeringPolicy {
    int32_t BwUtil;  ///< percent
    int32_t samplePeriod;
    int32_t consecutiveSampleCount;
    int32_t RssiThreshold;
    int32_t PhyRateThreshold;
    int32_t extFlag;
};

extern "C" {

/// Reads the policy of `radio` (from 1). Returns 0, or 1 when the radio has none; the policy is then all 0.
[[nodiscard]] uint32_t get_bsd_steering_policy(uint32_t radio, BsdSteeringPolicy* policy);
/// Replaces the field of `node` (53, 54 or 55) by `value` and stores the policy. Returns 0 or 1.
[[nodiscard]] uint32_t set_bsd_steering_policy(uint32_t radio, int32_t value, uint32_t node);
/// Replaces every `from` in `text` by `to`.
void str_replace(char* text, char from, char to);
}

#pragma GCC visibility pop
