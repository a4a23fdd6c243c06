// The records of channel measurements, as the manager's client exchanges them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvel {

struct ChannelNeighbour {
    uint8_t bssid[6];
    uint8_t reserved6[2];
    uint32_t channelWidth;
    int32_t rssi;  ///< dBm
};
static_assert(sizeof(ChannelNeighbour) == 16);

inline constexpr uint32_t kMaxChannelNeighbours = 64;

struct DcsChannelMetricsRecord {
    uint32_t channel;  ///< to scan
    uint32_t request;  ///< 1
    int32_t noise;     ///< dBm
    uint8_t reserved12[8];
    int32_t utilization;  ///< percent
    int32_t txpower;      ///< dBm
    ChannelNeighbour neighbours[kMaxChannelNeighbours];
    uint32_t count;  ///< valid neighbours
};
static_assert(offsetof(DcsChannelMetricsRecord, request) == 4 && offsetof(DcsChannelMetricsRecord, noise) == 8);
static_assert(offsetof(DcsChannelMetricsRecord, utilization) == 20 && offsetof(DcsChannelMetricsRecord, txpower) == 24);
static_assert(offsetof(DcsChannelMetricsRecord, neighbours) == 28 && offsetof(DcsChannelMetricsRecord, count) == 1052);
static_assert(sizeof(DcsChannelMetricsRecord) == 1056);

struct ChannelStatsRecord {
    uint32_t channel;  ///< to measure
    uint32_t request;  ///< 1
    int32_t noise;     ///< dBm
    uint8_t reserved12[12];
    int32_t utilization;  ///< percent
    uint8_t reserved28[4];
    alignas(8) uint64_t ch_utilization_total;
    alignas(8) uint64_t ch_utilization_busy;
    alignas(8) uint64_t ch_utilization_busy_tx;
    alignas(8) uint64_t ch_utilization_busy_rx;
    alignas(8) uint64_t ch_utilization_busy_self;
    alignas(8) uint64_t ch_utilization_busy_ext;
};
static_assert(offsetof(ChannelStatsRecord, request) == 4 && offsetof(ChannelStatsRecord, noise) == 8);
static_assert(offsetof(ChannelStatsRecord, utilization) == 24);
static_assert(offsetof(ChannelStatsRecord, ch_utilization_total) == 32);
static_assert(offsetof(ChannelStatsRecord, ch_utilization_busy) == 40);
static_assert(offsetof(ChannelStatsRecord, ch_utilization_busy_tx) == 48);
static_assert(offsetof(ChannelStatsRecord, ch_utilization_busy_rx) == 56);
static_assert(offsetof(ChannelStatsRecord, ch_utilization_busy_self) == 64);
static_assert(offsetof(ChannelStatsRecord, ch_utilization_busy_ext) == 72);
static_assert(sizeof(ChannelStatsRecord) == 80 && alignof(ChannelStatsRecord) == 8);

struct ChannelStats2Record {
    uint32_t ch_Frequency;
    int32_t ch_NoiseFloor;
    int32_t ch_Non80211Noise;
    int32_t ch_Max80211Rssi;
    uint32_t ch_ObssUtil;
    uint32_t ch_SelfBssUtil;
};
static_assert(offsetof(ChannelStats2Record, ch_Max80211Rssi) == 12 && sizeof(ChannelStats2Record) == 24);

}  // namespace quorvel
