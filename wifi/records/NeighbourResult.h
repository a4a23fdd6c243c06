// Results of a neighbour diagnostic.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wifi/bridge/ManagerText.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// One radio's neighbour diagnostic: its state and how many results are stored.
struct RadioDiagnosticsRecord {
    uint32_t diagnosticsState;
    uint32_t resultNumberOfEntries;
};
extern RadioDiagnosticsRecord radioDiagnostics[kRadios];

/// A neighbouring network as a scan found it. Texts that fill their field have no terminator.
struct NeighboringWiFiResult {
    char reserved0[132];
    char radio[32];
    char ssid[32];
    char bssid[20];
    uint32_t mode;
    uint32_t channel;
    int32_t signalStrength;  ///< dBm
    uint32_t securityModeEnabled;
    uint32_t encryptionMode;
    uint32_t operatingFrequencyBand;
    char supportedStandards[64];
    char operatingStandards[256];
    uint32_t operatingChannelBandwidth;
    uint32_t beaconPeriod;
    int32_t noise;  ///< dBm
    char basicDataTransferRates[256];
    char supportedDataTransferRates[256];
    uint32_t dtimPeriod;
    uint32_t qbssUtilization;  ///< percent
};
static_assert(sizeof(NeighboringWiFiResult) == 1092);
static_assert(offsetof(NeighboringWiFiResult, ssid) == 164 && offsetof(NeighboringWiFiResult, bssid) == 196);
static_assert(offsetof(NeighboringWiFiResult, mode) == 216 && offsetof(NeighboringWiFiResult, noise) == 568);
static_assert(offsetof(NeighboringWiFiResult, qbssUtilization) == 1088);

}  // namespace quorvel

#pragma GCC visibility pop
