// Associated devices: fields of the manager's station record.
#include <wlcsm.h>

#include <cstring>

#include "wifi/Log.h"
#include "wifi/QuorvelWiFiAccessPointAssociatedDeviceImpl.h"
#include "wifi/Result.h"
#include "wifi/model/Implementations.h"
#include "wifi/parsing/DecimalText.h"
#include "wifi/parsing/Text.h"
#include "wifi/records/Station.h"

using quorvel::kFailed;
using quorvel::kInvalidInput;
using quorvel::kSuccess;
using quorvel::StationBuffer;

namespace {
constexpr const char* kLogFile = "wifi/QuorvelWiFiAccessPointAssociatedDeviceImpl";
}

uint32_t Quorvel_P_GetWiFiAccessPointAssociatedDeviceList(uint32_t ap, uint32_t dev, uint32_t* count, void* record) {
    if (WiFiAccessPointAssociatedDeviceNumberOfEntriesGetImpl(ap, count) != 0) {
        QUORVEL_LOG(Error, __func__, "WiFiAccessPointAssociatedDeviceNumberOfEntriesGetImpl Fail. ");
        return kFailed;
    }
    if (*count < dev) {
        QUORVEL_LOG(Error, __func__,
                    "associatedDeviceInstance[%d] is bigger then the AssociatedDeviceNumberOfEntries[%d]", dev, *count);
        return kFailed;
    }
    // Quirk: device 0 passes, and asks for position -1.
    const quorvel::StationVariable variable(static_cast<int32_t>(dev - 1));
    // A station that has left since is the record as the caller cleared it.
    const quorvel::ManagerAddress address(ap);
    (void)wlcsm_mngr_get(address.radio, address.sub, variable.name, static_cast<char*>(record));
    return kSuccess;
}

namespace {

// Fetches the record for a getter, which logs under its own name.
uint32_t fetch(const char* getter, uint32_t ap, uint32_t dev, StationBuffer& buffer) {
    memset(&buffer, 0, sizeof buffer);
    if (ap == 0) {
        QUORVEL_LOG(Error, getter, "Invalid accessPointInstance[%d], accessPointInstance should start from 1.", ap);
        return kInvalidInput;
    }
    uint32_t count = 0;
    // The fetch refuses a device beyond the count, so that there is no need to look at the count again.
    if (Quorvel_P_GetWiFiAccessPointAssociatedDeviceList(ap, dev, &count, buffer.text) == 0) return kSuccess;
    QUORVEL_LOG(Error, getter,
                "Quorvel_P_GetWiFiAccessPointAssociatedDeviceList Fail accessPointInstance[%d] "
                "associatedDeviceInstance[%d]",
                ap, dev);
    return kFailed;
}

}  // namespace

// Quirk: copies as many bytes as the caller asks for, from the record's start; 17 leave the terminator behind.
uint32_t WiFiAccessPointAssociatedDeviceMACAddressGetImpl(uint32_t ap, uint32_t dev, char* buf, uint32_t len) {
    StationBuffer buffer;
    const uint32_t result = fetch(__func__, ap, dev, buffer);
    if (result == 0) memcpy(buf, buffer.text, len < sizeof buffer ? len : sizeof buffer);
    return result;
}

uint32_t WiFiAccessPointAssociatedDeviceOperStandardGetImpl(uint32_t ap, uint32_t dev, char* buf, uint32_t len) {
    StationBuffer buffer;
    const uint32_t result = fetch(__func__, ap, dev, buffer);
    if (result == 0) {
        quorvel::copyFieldText(buf, len, buffer.station.operStandard, sizeof buffer.station.operStandard);
    }
    return result;
}

uint32_t WiFiAccessPointAssociatedDeviceInstanceGetImpl(uint32_t ap, uint32_t dev, void* record) {
    StationBuffer buffer;
    const uint32_t result = fetch(__func__, ap, dev, buffer);
    if (result == 0) memcpy(record, &buffer.station, sizeof buffer.station);
    return result;
}

// The numbers; the texts are above.
#define FIELD(member) buffer.station.member
#define READS_STATION_NUMBER(...) __VA_ARGS__
#define READS_STATION_TEXT(...)
#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, accepted, read, source, ...) \
    READS_##read(uint32_t prefix##stem##GetImpl(uint32_t ap, uint32_t dev, OUTPUT_##type) {              \
        StationBuffer buffer;                                                                            \
        const uint32_t result = fetch(__func__, ap, dev, buffer);                                        \
        if (result == 0) memcpy(out, &source, sizeof *out);                                              \
        return result;                                                                                   \
    })
#include "wifi/model/BeginRows.h"

#include "wifi/QuorvelWiFiAccessPointAssociatedDevice.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiAccessPointAssociatedDeviceApplyContextImpl(void*, uint32_t, uint32_t) {
    return kSuccess;
}
