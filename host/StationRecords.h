/* The binary records about stations and SSIDs: little-endian, laid out alike on every platform. */
#ifndef QUORVEL_STATION_RECORDS_H
#define QUORVEL_STATION_RECORDS_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

/* The WLAN manager's record of a station: its variable "wlStaInfo_N" and the answer of wlcsm_mngr_sta_info. */
typedef struct ManagerStationRecord {
    char mac[18]; /* colon-separated hexadecimal, NUL-terminated */
    uint8_t reserved18[80];
    uint8_t authenticated;
    uint8_t active;
    int32_t rssi; /* dBm */
    uint32_t reserved104;
    uint32_t downlinkRate; /* kbit/s, towards the station */
    uint32_t uplinkRate;   /* kbit/s, from the station */
    uint32_t retransmissions;
    uint32_t snr;       /* dB */
    char standard[64];  /* NUL-padded */
    uint32_t bandwidth; /* MHz */
    uint32_t reserved192;
    uint32_t txPackets;
    uint32_t txBytes;
    uint32_t rxPackets;
    uint32_t txUnicastFailures;
    uint32_t txMulticastFailures;
    uint32_t txUnicastRetries;
    uint32_t txMulticastRetries;
    uint32_t rxBytes;
    uint32_t rxRetries;
    uint32_t associatedSeconds;
} ManagerStationRecord;
static_assert(offsetof(ManagerStationRecord, authenticated) == 98 && offsetof(ManagerStationRecord, active) == 99,
              "the flags follow the MAC address and 80 reserved bytes");
static_assert(offsetof(ManagerStationRecord, rssi) == 100 && offsetof(ManagerStationRecord, downlinkRate) == 108 &&
                  offsetof(ManagerStationRecord, uplinkRate) == 112 &&
                  offsetof(ManagerStationRecord, retransmissions) == 116 && offsetof(ManagerStationRecord, snr) == 120,
              "the link's numbers follow the flags");
static_assert(offsetof(ManagerStationRecord, standard) == 124 && offsetof(ManagerStationRecord, bandwidth) == 188,
              "the bandwidth follows the standard");
static_assert(offsetof(ManagerStationRecord, txPackets) == 196 &&
                  offsetof(ManagerStationRecord, txUnicastFailures) == 208 &&
                  offsetof(ManagerStationRecord, txUnicastRetries) == 216 &&
                  offsetof(ManagerStationRecord, rxBytes) == 224 &&
                  offsetof(ManagerStationRecord, associatedSeconds) == 232,
              "the counters have four bytes each");
static_assert(sizeof(ManagerStationRecord) == 236, "a record of 236 bytes");

/* Answer of wlcsm_mngr_ssid_info. */
typedef struct SsidRecord {
    char ssid[36]; /* NUL-padded */
    uint32_t up;
} SsidRecord;
static_assert(sizeof(SsidRecord) == 40, "a record of 40 bytes");

/* Codes of the station events. An association carries the station's record; the other code, which says that a station
 * authenticated again or left, comes without. */
#define QUORVEL_EVENT_ASSOCIATED 8
#define QUORVEL_EVENT_AUTHENTICATION 12

/* The beginning of every message on the event socket. */
typedef struct StationEventHeader {
    uint32_t radio; /* from 0 */
    uint32_t bss;   /* from 0 */
    uint32_t event;
    uint8_t mac[6];
    uint8_t reserved18[2];
} StationEventHeader;
static_assert(offsetof(StationEventHeader, mac) == 12 && sizeof(StationEventHeader) == 20, "a header of 20 bytes");

/* The message of an association. */
typedef struct AssociationMessage {
    StationEventHeader header;
    ManagerStationRecord station;
} AssociationMessage;
static_assert(sizeof(AssociationMessage) == 256, "a message of 256 bytes");

/* The record that the host's callback receives. Only an association fills the fields after the MAC address. */
typedef struct StationEventRecord {
    char mac[32]; /* colon-separated upper-case hexadecimal, NUL-terminated */
    uint8_t authenticated;
    uint8_t active;
    uint8_t reserved34[2];
    int32_t rssi;          /* dBm */
    uint32_t downlinkRate; /* kbit/s */
    uint32_t uplinkRate;   /* kbit/s */
    uint32_t retransmissions;
    uint32_t snr;       /* dB */
    char standard[64];  /* without a NUL when it fills the field */
    uint32_t bandwidth; /* MHz */
} StationEventRecord;
static_assert(offsetof(StationEventRecord, rssi) == 36 && offsetof(StationEventRecord, downlinkRate) == 40 &&
                  offsetof(StationEventRecord, snr) == 52,
              "the link's numbers follow the flags");
static_assert(offsetof(StationEventRecord, standard) == 56 && offsetof(StationEventRecord, bandwidth) == 120,
              "the bandwidth follows the standard");
static_assert(sizeof(StationEventRecord) == 124, "a record of 124 bytes");

#endif
