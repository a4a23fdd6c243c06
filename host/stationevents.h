/* Station events: the messages on the event socket that the plug-in listens to, and the record that its callback is
 * handed. Integers are in the host's byte order; the layout is the same on every platform. */
#ifndef QUORVEL_STATION_EVENTS_H
#define QUORVEL_STATION_EVENTS_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Codes of the two kinds of events: one with the station's details, and one that is the header alone. */
#define QUORVEL_EVENT_DETAILS 8
#define QUORVEL_EVENT_STATION 12

/* Begins every message. */
typedef struct StationEventHeader {
    uint32_t radio; /* from 0 */
    uint32_t bss;   /* within the radio, from 0 */
    uint32_t event;
    uint8_t mac[6];
    uint8_t reserved18[2];
} StationEventHeader;
static_assert(sizeof(StationEventHeader) == 20, "the header's size");
static_assert(offsetof(StationEventHeader, mac) == 12, "the header's MAC address");

/* A message with details: the header, and the manager's station record, of which these fields are handed on. */
typedef struct StationDetailsEvent {
    StationEventHeader header;
    uint8_t reserved20[98];
    uint8_t detailByte1;
    uint8_t detailByte2;
    uint32_t detailWord1;
    uint8_t reserved124[4];
    uint8_t detailBlock[12];
    uint32_t detailWord2;
    char detailText[64]; /* has no NUL when it fills the field */
    uint32_t detailWord3;
    uint8_t reserved212[44];
} StationDetailsEvent;
static_assert(sizeof(StationDetailsEvent) == 256, "the message's size");
static_assert(offsetof(StationDetailsEvent, detailByte1) == 118, "the first detail byte");
static_assert(offsetof(StationDetailsEvent, detailWord1) == 120, "the first detail word");
static_assert(offsetof(StationDetailsEvent, detailBlock) == 128, "the detail block");
static_assert(offsetof(StationDetailsEvent, detailWord2) == 140, "the second detail word");
static_assert(offsetof(StationDetailsEvent, detailText) == 144, "the detail text");
static_assert(offsetof(StationDetailsEvent, detailWord3) == 208, "the third detail word");

/* What the callback is handed. Everything behind the MAC address is zero for an event without details. */
typedef struct StationEventRecord {
    char mac[32]; /* NUL-terminated, such as "00:1A:2B:3C:4D:5E" */
    uint8_t detailByte1;
    uint8_t detailByte2;
    uint8_t reserved34[2];
    uint32_t detailWord1;
    uint8_t detailBlock[12];
    uint32_t detailWord2;
    char detailText[64]; /* has no NUL when it fills the field */
    uint32_t detailWord3;
} StationEventRecord;
static_assert(sizeof(StationEventRecord) == 124, "the record's size");
static_assert(offsetof(StationEventRecord, detailWord1) == 36, "the first detail word");
static_assert(offsetof(StationEventRecord, detailBlock) == 40, "the detail block");
static_assert(offsetof(StationEventRecord, detailWord2) == 52, "the second detail word");
static_assert(offsetof(StationEventRecord, detailText) == 56, "the detail text");
static_assert(offsetof(StationEventRecord, detailWord3) == 120, "the third detail word");

#ifdef __cplusplus
}
#endif

#endif
