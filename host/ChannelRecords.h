/* The binary records of the channel measurements: little-endian, laid out alike on every platform. The WLAN manager
 * fills them, the plug-in passes them on, and the host reads them. */
#ifndef QUORVEL_CHANNEL_RECORDS_H
#define QUORVEL_CHANNEL_RECORDS_H

#include <assert.h>
#include <stdalign.h>
#include <stddef.h>
#include <stdint.h>

/* The most neighbours in a ChannelMetricsRecord. */
#define QUORVEL_MAX_CHANNEL_NEIGHBOURS 64

/* One access point heard on the channel. */
typedef struct ChannelNeighbour {
    uint8_t bssid[6];
    uint8_t reserved6[2];
    uint32_t width; /* MHz */
    int32_t rssi;   /* dBm */
} ChannelNeighbour;
static_assert(sizeof(ChannelNeighbour) == 16, "a record of 16 bytes");

/* Answer of wlcsm_mngr_ci_scanresults and wlcsm_mngr_chanim_stats, and of the host's DcsChannelMetrics. The caller
 * writes `channel` and `request`. */
typedef struct ChannelMetricsRecord {
    uint32_t channel;
    uint32_t request; /* 1 */
    int32_t noise;    /* dBm */
    uint8_t reserved12[8];
    int32_t utilization; /* percent */
    int32_t txPower;     /* dBm */
    ChannelNeighbour neighbours[QUORVEL_MAX_CHANNEL_NEIGHBOURS];
    uint32_t count; /* valid neighbours */
} ChannelMetricsRecord;
static_assert(offsetof(ChannelMetricsRecord, noise) == 8, "noise follows channel and request");
static_assert(offsetof(ChannelMetricsRecord, utilization) == 20 && offsetof(ChannelMetricsRecord, txPower) == 24,
              "utilization and txPower follow eight reserved bytes");
static_assert(offsetof(ChannelMetricsRecord, neighbours) == 28 && offsetof(ChannelMetricsRecord, count) == 1052,
              "the count follows the neighbours");
static_assert(sizeof(ChannelMetricsRecord) == 1056, "a record of 1056 bytes");

/* Answer of wlcsm_mngr_channelstats, and of the host's RadioChannelStats. The caller writes `channel` and `request`. */
typedef struct ChannelStatsRecord {
    uint32_t channel;
    uint32_t request; /* 1 */
    int32_t noise;    /* dBm */
    uint8_t reserved12[12];
    int32_t utilization; /* percent */
    uint8_t reserved28[4];
    alignas(8) uint64_t total; /* this and the following: microseconds of the measurement */
    alignas(8) uint64_t busy;
    alignas(8) uint64_t busyTx;
    alignas(8) uint64_t busyRx;
    alignas(8) uint64_t busySelf;
    alignas(8) uint64_t busyExt;
} ChannelStatsRecord;
static_assert(offsetof(ChannelStatsRecord, noise) == 8, "noise follows channel and request");
static_assert(offsetof(ChannelStatsRecord, utilization) == 24, "utilization follows twelve reserved bytes");
static_assert(offsetof(ChannelStatsRecord, total) == 32 && offsetof(ChannelStatsRecord, busy) == 40 &&
                  offsetof(ChannelStatsRecord, busyTx) == 48 && offsetof(ChannelStatsRecord, busyRx) == 56 &&
                  offsetof(ChannelStatsRecord, busySelf) == 64 && offsetof(ChannelStatsRecord, busyExt) == 72,
              "the times have eight bytes each on every platform");
static_assert(sizeof(ChannelStatsRecord) == 80 && alignof(ChannelStatsRecord) == 8, "a record of 80 bytes");

/* Answer of wlcsm_mngr_getRadioChannelStats2. */
typedef struct ChannelStats2Record {
    uint32_t frequency;    /* MHz */
    int32_t noiseFloor;    /* dBm */
    int32_t non80211Noise; /* dBm */
    int32_t max80211Rssi;  /* dBm */
    uint32_t obssUtil;     /* percent */
    uint32_t selfBssUtil;  /* percent */
} ChannelStats2Record;
static_assert(offsetof(ChannelStats2Record, max80211Rssi) == 12 && sizeof(ChannelStats2Record) == 24,
              "a record of 24 bytes");

#endif
