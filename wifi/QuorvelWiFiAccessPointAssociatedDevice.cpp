#include "wifi/QuorvelWiFiInternal.h"

#define QUORVEL_DEFINITION "wifi/QuorvelWiFiAccessPointAssociatedDevice.def"
#define QUORVEL_OWN_SNAPSHOT
#include "wifi/FrontEndExpansion.h"

#define THIS_OBJECT WiFiAccessPointAssociatedDevice

namespace {

#define MEMBER_FIELD(member) station.member
#define STORE_STATION_TEXT(name, source) \
    quorvel::storeText(ctx, offsetof(OBJECT_CONTEXT, name), MEMBER_##source, sizeof(OBJECT_CONTEXT::name));
#define STORE_STATION_NUMBER(name, source) \
    quorvel::storeBytes(ctx, offsetof(OBJECT_CONTEXT, name), &MEMBER_##source, sizeof(OBJECT_CONTEXT::name));
#define PARAMETER(node, name, access, type, accepted, read, source, ...) STORE_##read(name, source)

void storeStation(void* ctx, const quorvel::StationInformation& station) {
#undef THIS_OBJECT
#include "wifi/QuorvelWiFiAccessPointAssociatedDevice.def"
#define THIS_OBJECT WiFiAccessPointAssociatedDevice
#undef PARAMETER
    const uint32_t* counters = station.counters;
    const uint32_t stored[8] = {
        counters[0], counters[1], counters[2], counters[3] + counters[4], counters[5] + counters[6],
        counters[7], counters[8], counters[9]};
    static_assert(sizeof stored == sizeof(OBJECT_CONTEXT::Counters));
    quorvel::storeBytes(ctx, offsetof(OBJECT_CONTEXT, Counters), stored, sizeof stored);
}

}  // namespace

// One fetch under the lock for all fields, so that they belong together.
uint32_t WiFiAccessPointAssociatedDeviceInstanceGet(void* ctx, uint32_t ap, uint32_t dev) {
    QUORVEL_SITE("WiFiAccessPointAssociatedDeviceInstanceGet");
    quorvel::beginSnapshot(ctx, site);
    if (const uint32_t result = quorvel::lock(site)) return result;
    quorvel::StationBuffer buffer{};
    const uint32_t result = quorvel::unlock(WiFiAccessPointAssociatedDeviceInstanceGetImpl(ap, dev, buffer.text), site);
    if (result != 0) return result;
    storeStation(ctx, buffer.station);
    quorvel::logDone(site);
    return quorvel::kSuccess;
}
