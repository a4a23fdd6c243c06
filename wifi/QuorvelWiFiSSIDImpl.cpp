// SSIDs: plain reads and writes through the bridge.
#include "wifi/bridge/Mapped.h"

#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiSSID.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiSSIDApplyContextImpl(void* ctx, uint32_t ssid) {
    return quorvel::applyMapped<quorvel::kWiFiSSIDObject>(ssid, ctx);
}
