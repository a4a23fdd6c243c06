#include "wifi/listener/StationEvents.h"

#include <cstdio>
#include <cstring>

#include "host/StationRecords.h"
#include "wifi/Log.h"

namespace quorvel {

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiImpl";
constexpr char kListener[] = "qvl_thread_main_loop";

void copyDetails(StationEventRecord& station, const uint8_t* message) {
    AssociationMessage event;
    memcpy(&event, message, sizeof event);
    station.authenticated = event.station.authenticated;
    station.active = event.station.active;
    station.rssi = event.station.rssi;
    station.downlinkRate = event.station.downlinkRate;
    station.uplinkRate = event.station.uplinkRate;
    station.retransmissions = event.station.retransmissions;
    station.snr = event.station.snr;
    strncpy(station.standard, event.station.standard, sizeof station.standard);
    station.bandwidth = event.station.bandwidth;
}

// Writes a MAC address as colon-separated upper-case hexadecimal.
void formatMac(char* text, const uint8_t (&mac)[6]) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (const uint8_t octet : mac) {
        *text++ = kDigits[octet >> 4];
        *text++ = kDigits[octet & 15];
        *text++ = ':';
    }
    text[-1] = '\0';
}

// Handles the message at the start of `length` bytes. Returns how many bytes it took; 0 discards the rest.
size_t handleEvent(const uint8_t* message, size_t length, AssociatedDeviceCallback callback) {
    StationEventHeader header;
    memcpy(&header, message, sizeof header);
    char mac[32] = {};
    formatMac(mac, header.mac);
    // Quirk: an event with an unknown code is logged as an association too.
    QUORVEL_LOG(Traffic, kListener, "New STA Association Event on wl%d.%d, Event[%d], STA MAC[%s]", header.radio,
                header.bss, header.event, mac);
    // Quirk: the line says "recev".
    printf("%s: recev event on wl%d.%d Event=%d STA MAC=[%s] len=%d\n", kListener, static_cast<int>(header.radio),
           static_cast<int>(header.bss), static_cast<int>(header.event), mac, static_cast<int>(length));
    fflush(stdout);
    if (header.event != QUORVEL_EVENT_ASSOCIATED && header.event != QUORVEL_EVENT_AUTHENTICATION) {
        QUORVEL_LOG(Error, kListener, "Invalid STA event[%d]", header.event);
        return 0;
    }
    StationEventRecord station{};
    memcpy(station.mac, mac, sizeof station.mac);
    size_t taken = sizeof(StationEventHeader);
    if (header.event == QUORVEL_EVENT_ASSOCIATED) {
        taken = sizeof(AssociationMessage);
        if (length < taken) {
            QUORVEL_LOG(Error, kListener, "message length too short[%d]", static_cast<int>(length));
            return 0;
        }
        copyDetails(station, message);
    }
    callback(header.radio * WiFiSystemMaxNumberOfAccessPointsPerRadio() + header.bss + 1, header.event, &station);
    return taken;
}

}  // namespace

void handleStationEvents(const uint8_t* messages, size_t length, AssociatedDeviceCallback callback) {
    while (length >= sizeof(StationEventHeader)) {
        const size_t taken = handleEvent(messages, length, callback);
        if (taken == 0) return;
        messages += taken;
        length -= taken;
    }
}

}  // namespace quorvel
