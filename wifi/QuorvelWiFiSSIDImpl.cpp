// SSIDs: plain reads and writes through the bridge.
#include "wifi/QuorvelWiFiInternal.h"

#define QUORVEL_DEFINITION "wifi/QuorvelWiFiSSID.def"
#include "wifi/ImplementationExpansion.h"

uint32_t WiFiSSIDApplyContextImpl(void* ctx, uint32_t ssid) {
    return quorvel::applyMapped(quorvel::kWiFiSSIDObject, ssid, ctx);
}
