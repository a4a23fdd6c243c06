// The front ends of Device.WiFi.
#include <wlcsm.h>

#include "wifi/frontend/Pattern.h"
#include "wifi/model/Implementations.h"
#include "wifi/parsing/DecimalText.h"

namespace quorvel {

template <>
struct FrontEnds<kWiFiObject> : Pattern {
    // Quirk: the top-level object says nodes, the others subnodes.
    static uint32_t checkNode(void* ctx, uint32_t node, uint32_t limit, const Site& site) {
        if (!mayAskForNode(ctx, node, limit, "Exceeded nodes", site)) return 0;
        logDone(site);
        return Quorvel_IsContextSetMap(ctx, node);
    }

    // Quirk: BandSteeringEnable reads the non-volatile role here, and not through its implementation.
    static uint32_t getPastImplementation(const Site& site, uint8_t* out) {
        if (const uint32_t result = beginGet(out, site)) return result;
        const char* role = wlcsm_nvram_get("bsd_role");
        *out = role != nullptr && decimalNumber(role) == 3 ? 1 : 0;
        return endGet(kSuccess, site);
    }
};

}  // namespace quorvel

#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFi.def"

#include "wifi/model/EndRows.h"

// Quirk: acts at once, without the lock, and whatever the value.
uint32_t WiFiCommitSettingsSet(void) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiObject, __func__);
    quorvel::logEnter(site);
    uint32_t result = quorvel::kSuccess;
    for (uint32_t radio = 0; radio < WiFiSystemMaxNumberOfRadios(); ++radio) {
        if (wlcsm_mngr_restart(radio, 0, 0, 0) != 0) continue;
        quorvel::logResult(site, "wlcsm_mngr_restart: radio[%d], FAIL.", radio);
        result = quorvel::kFailed;
    }
    quorvel::logDone(site);
    return result;
}

// Quirk: both log "DONE" before the work.

uint32_t WiFiNewAPAssociatedDeviceCallbackRegister(AssociatedDeviceCallback callback) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiObject, __func__);
    if (callback == nullptr) return quorvel::refuse(site, quorvel::kInvalidInput);
    quorvel::logDone(site);
    return WiFiNewAPAssociatedDeviceCallbackRegisterImpl(callback);
}

uint32_t WiFiNewAPAssociatedDeviceCallbackDeRegister(void) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiObject, __func__);
    quorvel::logDone(site);
    return WiFiNewAPAssociatedDeviceCallbackDeRegisterImpl();
}
