// The front ends of Device.WiFi.AccessPoint.{i}.AssociatedDevice.{i}.
#include "wifi/frontend/Pattern.h"
#include "wifi/model/Implementations.h"
#include "wifi/records/Station.h"

namespace quorvel {
namespace {

// Copies a field of the station's record: a number, or a text.
template <typename Value>
void store(void* ctx, const Field& field, const Value& member) {
    static_assert(sizeof(Value) <= 4);
    storeBytes(ctx, field.offset, &member, field.size);
}

template <size_t size>
void store(void* ctx, const Field& field, const char (&member)[size]) {
    storeText(ctx, field.offset, member, field.size);
}

void storeStation(void* ctx, const StationInformation& station) {
#define FIELD(member) station.member
#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, accepted, read, source, ...) \
    store(ctx, kFields[model::rowOf(k##prefix##Object, node)], source);
#include "wifi/model/BeginRows.h"

#include "wifi/QuorvelWiFiAccessPointAssociatedDevice.def"

#include "wifi/model/EndRows.h"
    const uint32_t* counters = station.counters;
    const uint32_t stored[8] = {
        counters[0], counters[1], counters[2], counters[3] + counters[4], counters[5] + counters[6],
        counters[7], counters[8], counters[9]};
    static_assert(sizeof stored == sizeof(WiFiAccessPointAssociatedDeviceContext::Counters));
    storeBytes(ctx, offsetof(WiFiAccessPointAssociatedDeviceContext, Counters), stored, sizeof stored);
}

}  // namespace

template <>
struct FrontEnds<kWiFiAccessPointAssociatedDeviceObject> : Pattern {
    // One fetch under the lock for all fields, so that they belong together.
    static uint32_t snapshot(const SnapshotSite& site, TextGetter, void* ctx, uint32_t ap, uint32_t dev) {
        logEnter(site);
        (void)Quorvel_ContextInit(ctx, site.contextSize);  // a context that the host refuses stays unchanged
        if (const uint32_t result = lock(site)) return result;
        StationBuffer buffer{};
        const uint32_t result = unlock(WiFiAccessPointAssociatedDeviceInstanceGetImpl(ap, dev, buffer.text), site);
        if (result != 0) return result;
        storeStation(ctx, buffer.station);
        logDone(site);
        return kSuccess;
    }
};

}  // namespace quorvel

#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiAccessPointAssociatedDevice.def"

#include "wifi/model/EndRows.h"
