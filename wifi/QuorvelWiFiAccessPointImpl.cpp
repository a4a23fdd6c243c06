// Access points: station walks, beacon rate, and the reads without a row in the table.
#include <strings.h>
#include <wlcsm.h>

#include <cstring>

#include "wifi/Log.h"
#include "wifi/Result.h"
#include "wifi/bridge/Mapped.h"
#include "wifi/model/Implementations.h"
#include "wifi/parsing/DecimalText.h"
#include "wifi/parsing/Text.h"
#include "wifi/records/Station.h"

using quorvel::kFailed;
using quorvel::kMacTextLength;
using quorvel::kSuccess;
using quorvel::kWiFiAccessPointObject;
using quorvel::ManagerAddress;
using quorvel::ManagerText;
using quorvel::readManager;
using quorvel::StationBuffer;
using quorvel::StationInformation;
using quorvel::StationVariable;

namespace {
constexpr const char* kLogFile = "wifi/QuorvelWiFiAccessPointImpl";
}

#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiAccessPoint.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiAccessPointApplyContextImpl(void* ctx, uint32_t ap) {
    return quorvel::applyMapped<quorvel::kWiFiAccessPointObject>(ap, ctx);
}

namespace {

// Reads how many stations the access point has; 0, which it logs, when there is none or the manager failed.
// Signed, so that a negative number is a walk over no station.
int32_t countStations(const char* function, const ManagerAddress& address, uint32_t ap) {
    ManagerText value;
    (void)readManager(address.radio, address.sub, "numStations", value);  // an unread number is 0
    const int32_t count = value.number();
    if (count == 0) {
        QUORVEL_LOG(Error, function, "There is no station associated on AP[%d]", ap);
    }
    return count;
}

// Reads a station's record; one that the manager does not have is all zeros.
void readStation(const ManagerAddress& address, int32_t position, StationBuffer& buffer) {
    memset(&buffer, 0, sizeof buffer);
    (void)wlcsm_mngr_get(address.radio, address.sub, StationVariable(position).name, buffer.text);
}

}  // namespace

uint32_t WiFiAccessPointAssociatedDeviceMacListGetImpl(uint32_t ap, char* buf, uint32_t len) {
    const ManagerAddress address(ap);
    const int32_t count = countStations(__func__, address, ap);
    if (count == 0) return kFailed;
    // Appended to what the caller's buffer holds, and never beyond it.
    size_t length = strnlen(buf, len);
    StationBuffer buffer;
    for (int32_t n = 0; n < count; ++n) {
        readStation(address, n, buffer);
        const size_t size = strnlen(buffer.station.macAddress, kMacTextLength);
        const size_t separator = n == 0 ? 0 : 1;
        if (length + separator + size >= len) break;
        if (separator != 0) buf[length++] = ',';
        memcpy(buf + length, buffer.station.macAddress, size);
        length += size;
        buf[length] = '\0';
    }
    const quorvel::LoggedText<quorvel::kValueSize> list(buf, len);
    QUORVEL_LOG(Traffic, __func__, "AssociatedDeviceMacList[%s]", list.text);
    return kSuccess;
}

namespace {

// Finds the station with this MAC address, whatever the case of its letters. Returns false when there is none.
bool findStation(const char* function, const ManagerAddress& address, int32_t count, const char* mac,
                 StationInformation& station) {
    StationBuffer buffer;
    for (int32_t n = 0; n < count; ++n) {
        readStation(address, n, buffer);
        if (strncasecmp(buffer.station.macAddress, mac, kMacTextLength) != 0) continue;
        station = buffer.station;
        station.macAddress[sizeof station.macAddress - 1] = '\0';
        QUORVEL_LOG(Traffic, function, "STA info:%s,%d,%d,%d\n", station.macAddress, station.rssi,
                    static_cast<int32_t>(station.transmitRate), static_cast<int32_t>(station.receiveRate));
        return true;
    }
    return false;
}

// Reads one number of a station's record. A station that is not there is no failure and reads as 0.
template <typename Number>
uint32_t readOfStation(const char* function, const char* message, uint32_t ap, const char* mac, int32_t* out,
                       Number StationInformation::*member) {
    *out = 0;
    const ManagerAddress address(ap);
    const int32_t count = countStations(function, address, ap);
    if (count == 0) return kFailed;
    StationInformation station;
    if (findStation(function, address, count, mac, station)) *out = static_cast<int32_t>(station.*member);
    QUORVEL_LOG(Traffic, function, message, *out);
    return kSuccess;
}

}  // namespace

uint32_t WiFiAccessPointAssociatedDeviceRSSIGetImpl(uint32_t ap, const char* mac, int32_t* out) {
    return readOfStation(__func__, "AssociatedDeviceRSSI[%d]", ap, mac, out, &StationInformation::rssi);
}

uint32_t WiFiAccessPointAssociatedDeviceRxRateGetImpl(uint32_t ap, const char* mac, int32_t* out) {
    return readOfStation(__func__, "AssociatedDeviceRxRate[%d]", ap, mac, out, &StationInformation::receiveRate);
}

uint32_t WiFiAccessPointAssociatedDeviceTxRateGetImpl(uint32_t ap, const char* mac, int32_t* out) {
    // Quirk: logs in the receive rate's words.
    return readOfStation(__func__, "AssociatedDeviceRxRate[%d]", ap, mac, out, &StationInformation::transmitRate);
}

uint32_t WiFiAccessPointBeaconRateGetImpl(uint32_t ap, char* buf, uint32_t len) {
    ManagerText value;
    // The band is the radio's, whatever the access point.
    (void)readManager(ManagerAddress(ap).radio, 0, "wlBand", value);  // an unread band is band 0
    const int32_t band = value.number();
    QUORVEL_LOG(Traffic, __func__, "wlBand[%d]", band);
    uint32_t rate = 0;
    const uint32_t result =
        quorvel::readNode<quorvel::kWiFiAccessPointObject, WiFiAccessPointNode::BeaconRate>(ap, &rate);
    if (result != 0) {
        QUORVEL_LOG(Error, __func__, "Quorvel_P_WiFiWlcsmMngrGet WIFIACCESSPOINT_BEACONRATE fail");
        return result;
    }
    struct Rate {
        uint32_t units;  // of 500 kbit/s
        const char text[8];
    };
    static constexpr Rate kRates[] = {{2, "1Mbps"},   {4, "2Mbps"},   {11, "5.5Mbps"}, {12, "6Mbps"},
                                      {22, "11Mbps"}, {24, "12Mbps"}, {48, "24Mbps"}};
    if (rate == 0) quorvel::copyText(buf, len, band == 1 ? "6Mbps" : "1Mbps");
    for (const Rate& known : kRates) {
        if (known.units == rate) quorvel::copyText(buf, len, known.text);
    }
    // Quirk: another rate succeeds, and leaves the buffer unchanged.
    const quorvel::LoggedText<quorvel::kValueSize> text(buf, len);
    QUORVEL_LOG(Traffic, __func__, "BeaconRate[%s]", text.text);
    return kSuccess;
}

namespace {

// Reads how often the manager has seen the station associate.
uint64_t associationCount(const ManagerAddress& address, const char* mac) {
    constexpr size_t kDigits = 8;
    char name[64] = {};
    snprintf(name, sizeof name, "wlStaAssocCnt_%s", mac);
    ManagerText value;
    (void)readManager(address.radio, address.sub, name, value);  // an unread count is 0
    value.text[kDigits] = '\0';                                  // so many characters count
    return static_cast<uint64_t>(int64_t{quorvel::decimalNumber(value.text)});
}

constexpr uint32_t kTransmit = 0;
constexpr uint32_t kReceive = 1;

uint32_t statsResult(const char* function, uint32_t ap, const char* mac, uint32_t direction, uint32_t w1, uint32_t w2,
                     uint64_t* out) {
    *out = 0;
    const ManagerAddress address(ap);
    if (wlcsm_mngr_clientRxTxStatsResult(address.radio, address.sub, mac, direction, w1, w2) != 0) {
        QUORVEL_LOG(Error, function, "wlcsm_mngr_clientRxTxStatsResult fail");
        return kFailed;
    }
    *out = associationCount(address, mac);
    return kSuccess;
}

}  // namespace

uint32_t WiFiAccessPointRxStatsResultGetImpl(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2, uint64_t* out) {
    return statsResult(__func__, ap, mac, kReceive, w1, w2, out);
}

uint32_t WiFiAccessPointTxStatsResultGetImpl(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2, uint64_t* out) {
    return statsResult(__func__, ap, mac, kTransmit, w1, w2, out);
}

uint32_t WiFiAccessPointStatsGetImpl(uint32_t ap, const char* mac, void* record, uint64_t* out) {
    *out = 0;
    const ManagerAddress address(ap);
    if (wlcsm_mngr_sta_info(address.radio, address.sub, mac, record) != 0) {
        QUORVEL_LOG(Error, __func__, "wlcsm_mngr_sta_info fail");
        return kFailed;
    }
    *out = associationCount(address, mac);
    return kSuccess;
}

uint32_t WiFiAccessPointSsidNameStatusGetImpl(uint32_t ap, void* buffer) {
    const ManagerAddress address(ap);
    if (wlcsm_mngr_ssid_info(address.radio, address.sub, buffer) != 0) {
        QUORVEL_LOG(Error, __func__, "wlcsm_mngr_ssid_info fail");
        return kFailed;
    }
    return kSuccess;
}

uint32_t WiFiAccessPointMacModeGetImpl(uint32_t ap, uint32_t* out) {
    const ManagerAddress address(ap);
    char interface[31];
    if ((ap & 7) == 1) {
        snprintf(interface, sizeof interface, "%s%d", "wl", static_cast<int>(address.radio));
    } else {
        snprintf(interface, sizeof interface, "%s%d.%d", "wl", static_cast<int>(address.radio),
                 static_cast<int>(address.sub));
    }
    char command[64];
    snprintf(command, sizeof command, "wl -i %s macmode", interface);
    FILE* output = popen(command, "r");
    if (output == nullptr) {
        QUORVEL_LOG(Error, __func__, "popen fail fail");
        return kFailed;
    }
    char line[257] = {};
    (void)!fgets(line, sizeof line, output);  // a tool that says nothing reads as mode 0
    pclose(output);
    *out = static_cast<uint32_t>(quorvel::decimalNumber(line));
    return kSuccess;
}
