#pragma once

#include <cstdint>

namespace quorvel::hostd {

// The binary records of the two channel measurements, little-endian; the caller writes `channel` and `request`.

inline constexpr std::uint32_t kMaxHeard = 64;

/// One access point heard on the channel.
struct HeardAccessPoint {
    std::uint8_t bssid[6];
    std::uint8_t padding[2];
    std::uint32_t width;
    std::int32_t rssi;
};

struct ChannelMetricsRecord {
    std::uint32_t channel;
    std::uint32_t request;
    std::int32_t noise;
    std::uint8_t reserved[8];
    std::int32_t utilization;
    std::int32_t transmitPower;
    HeardAccessPoint heard[kMaxHeard];
    std::uint32_t count;
};
static_assert(sizeof(ChannelMetricsRecord) == 1056);

struct ChannelStatsRecord {
    std::uint32_t channel;
    std::uint32_t request;
    std::int32_t noise;
    std::uint8_t reserved[12];
    std::int32_t utilization;
    std::uint32_t padding;
    alignas(8) std::uint64_t total;
    std::uint64_t busy;
    std::uint64_t busyTransmitting;
    std::uint64_t busyReceiving;
    std::uint64_t busySelf;
    std::uint64_t busyOther;
};
static_assert(sizeof(ChannelStatsRecord) == 80);

/// The least text length that the plug-in takes for either.
inline constexpr std::uint32_t kMeasurementLength = 2048;

}  // namespace quorvel::hostd
