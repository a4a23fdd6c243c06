#pragma once

#include <cstddef>
#include <cstdint>

// The binary records that the manager hands out and the messages on the event socket: little-endian, laid out the same
// on every platform.
namespace quorvel::manager {

// What "wlStaInfo_N" and the station information call give.
struct StationRecord {
    char mac[18];
    std::uint8_t reserved18[80];
    std::uint8_t authenticated;
    std::uint8_t active;
    std::int32_t rssi;  // dBm
    std::uint32_t reserved104;
    std::uint32_t downlinkRate;  // kbit/s
    std::uint32_t uplinkRate;    // kbit/s
    std::uint32_t retransmissions;
    std::uint32_t snr;  // dB
    char standard[64];
    std::uint32_t bandwidth;  // MHz
    std::uint32_t reserved192;
    std::uint32_t txPackets;
    std::uint32_t txBytes;
    std::uint32_t rxPackets;
    std::uint32_t txUnicastFailures;
    std::uint32_t txMulticastFailures;
    std::uint32_t txUnicastRetries;
    std::uint32_t txMulticastRetries;
    std::uint32_t rxBytes;
    std::uint32_t rxRetries;
    std::uint32_t associatedSeconds;
};
static_assert(sizeof(StationRecord) == 236);
static_assert(offsetof(StationRecord, authenticated) == 98);
static_assert(offsetof(StationRecord, active) == 99);
static_assert(offsetof(StationRecord, rssi) == 100);
static_assert(offsetof(StationRecord, downlinkRate) == 108);
static_assert(offsetof(StationRecord, uplinkRate) == 112);
static_assert(offsetof(StationRecord, retransmissions) == 116);
static_assert(offsetof(StationRecord, snr) == 120);
static_assert(offsetof(StationRecord, standard) == 124);
static_assert(offsetof(StationRecord, bandwidth) == 188);
static_assert(offsetof(StationRecord, txPackets) == 196);
static_assert(offsetof(StationRecord, txUnicastFailures) == 208);
static_assert(offsetof(StationRecord, txUnicastRetries) == 216);
static_assert(offsetof(StationRecord, rxBytes) == 224);
static_assert(offsetof(StationRecord, associatedSeconds) == 232);

// What the SSID information call gives.
struct SsidRecord {
    char ssid[36];  // NUL-padded
    std::uint32_t up;
};
static_assert(sizeof(SsidRecord) == 40);

// The two kinds of station events by their code.
inline constexpr std::uint32_t kStationAssociated = 8;  // header and station record
inline constexpr std::uint32_t kStationAuthentication =
    12;  // header alone: re-authentication, or the end of an association

// Header of a message on the event socket.
struct EventHeader {
    std::uint32_t radio;
    std::uint32_t bss;
    std::uint32_t event;
    std::uint8_t mac[6];
    std::uint8_t padding[2];
};
static_assert(sizeof(EventHeader) == 20);

struct AssociationMessage {
    EventHeader header;
    StationRecord station;
};
static_assert(sizeof(AssociationMessage) == 256);

struct ChannelNeighbour {
    std::uint8_t bssid[6];
    std::uint8_t padding[2];
    std::uint32_t width;  // MHz
    std::int32_t rssi;    // dBm
};
static_assert(sizeof(ChannelNeighbour) == 16);

inline constexpr std::size_t kMaxChannelNeighbours = 64;

struct ChannelMetricsRecord {
    std::uint32_t channel;
    std::uint32_t request;
    std::int32_t noise;  // dBm
    std::uint8_t reserved12[8];
    std::int32_t utilization;  // percent
    std::int32_t txPower;      // dBm
    ChannelNeighbour neighbours[kMaxChannelNeighbours];
    std::uint32_t count;
};
static_assert(sizeof(ChannelMetricsRecord) == 1056);
static_assert(offsetof(ChannelMetricsRecord, utilization) == 20);
static_assert(offsetof(ChannelMetricsRecord, neighbours) == 28);
static_assert(offsetof(ChannelMetricsRecord, count) == 1052);

struct ChannelStatsRecord {
    std::uint32_t channel;
    std::uint32_t request;
    std::int32_t noise;  // dBm
    std::uint8_t reserved12[12];
    std::int32_t utilization;  // percent
    std::uint32_t padding28;
    alignas(8) std::uint64_t total;  // these six: microseconds of the measurement
    alignas(8) std::uint64_t busy;
    alignas(8) std::uint64_t busyTx;
    alignas(8) std::uint64_t busyRx;
    alignas(8) std::uint64_t busySelf;
    alignas(8) std::uint64_t busyExt;
};
static_assert(sizeof(ChannelStatsRecord) == 80);
static_assert(offsetof(ChannelStatsRecord, utilization) == 24);
static_assert(offsetof(ChannelStatsRecord, total) == 32);
static_assert(offsetof(ChannelStatsRecord, busyExt) == 72);

struct ChannelStats2Record {
    std::uint32_t frequency;  // MHz
    std::int32_t noiseFloor;  // dBm
    std::int32_t non80211Noise;
    std::int32_t max80211Rssi;
    std::uint32_t obssUtil;  // percent
    std::uint32_t selfBssUtil;
};
static_assert(sizeof(ChannelStats2Record) == 24);

}  // namespace quorvel::manager
