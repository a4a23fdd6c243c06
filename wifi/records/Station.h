// The manager's records of associated stations.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wifi/bridge/ManagerText.h"
#include "wifi/parsing/DecimalText.h"

namespace quorvel {

/// Characters of a MAC address as text.
inline constexpr size_t kMacTextLength = 17;

/// The manager's record of a station, as "wlStaInfo_%d" reads.
struct StationInformation {
    char macAddress[18];  ///< colon-separated hexadecimal, NUL-terminated
    char reserved18[80];
    uint8_t authenticationState;
    uint8_t active;
    int32_t rssi;  ///< dBm
    char reserved104[4];
    uint32_t receiveRate;   ///< of the last data frame towards the station
    uint32_t transmitRate;  ///< of the last data frame from the station
    uint32_t retransmissions;
    uint32_t snr;
    char operStandard[64];
    uint32_t operBandwidth;
    char reserved192[4];
    uint32_t counters[10];
};
static_assert(offsetof(StationInformation, authenticationState) == 98 && offsetof(StationInformation, active) == 99);
static_assert(offsetof(StationInformation, rssi) == 100 && offsetof(StationInformation, receiveRate) == 108);
static_assert(offsetof(StationInformation, transmitRate) == 112 &&
              offsetof(StationInformation, retransmissions) == 116);
static_assert(offsetof(StationInformation, snr) == 120 && offsetof(StationInformation, operStandard) == 124);
static_assert(offsetof(StationInformation, operBandwidth) == 188 && offsetof(StationInformation, counters) == 196);
static_assert(sizeof(StationInformation) == 236);

/// A station record in a buffer that the manager may fill.
union StationBuffer {
    char text[kValueSize];
    StationInformation station;
};

/// The manager's variable of the station at `position` (from 0).
struct StationVariable {
    char name[24] = "wlStaInfo_";
    explicit StationVariable(int32_t position) {
        appendDecimal(name + sizeof "wlStaInfo_" - 1, position);
    }
};

}  // namespace quorvel
