// SSIDs: plain reads and writes through the bridge.
#include "QuorvelWiFiInternal.h"

#define QUORVEL_DEFINITION "QuorvelWiFiSSID.def"
#include "ImplementationExpansion.h"

uint32_t WiFiSSIDApplyContextImpl(void* ctx, uint32_t ssid) {
    return quorvel::applyMapped(quorvel::kWiFiSSIDObject, ssid, ctx);
}
