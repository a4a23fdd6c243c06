// The top-level object's implementation.
#include <wlcsm.h>

#include "wifi/Log.h"
#include "wifi/Result.h"
#include "wifi/bridge/ManagerText.h"
#include "wifi/bridge/Mapped.h"
#include "wifi/model/Implementations.h"

using quorvel::kFailed;
using quorvel::kSuccess;

namespace {
constexpr const char* kLogFile = "wifi/QuorvelWiFiImpl";
}

#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFi.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiRadioNumberOfEntriesGetImpl(uint32_t* out) {
    *out = 0;
    quorvel::ManagerText value;
    if (!quorvel::readManager(0, 0, "radio_number", value)) {
        QUORVEL_LOG(Error, __func__, "Radio number Get Fail");
        return kFailed;
    }
    *out = static_cast<uint32_t>(value.number());
    return kSuccess;
}

uint32_t WiFiBandSteeringCapabilityGetImpl(uint8_t* out) {
    *out = 1;
    return kSuccess;
}

uint32_t WiFiATMCapableGetImpl(uint8_t* out) {
    *out = 0;
    return kSuccess;
}

uint32_t WiFiApplyContextImpl(void* ctx) {
    const auto* context = static_cast<const WiFiContext*>(ctx);
    if (WiFiCheckContextNodeSet(ctx, WiFiNode::BandSteeringEnable) != 0) {
        const char* role = context->BandSteeringEnable == 1 ? "3" : "0";
        // Quirk: a manager that does not take the role is not reported.
        (void)wlcsm_nvram_set("bsd_role", role);
        for (uint32_t radio = 0; radio < quorvel::kRadios; ++radio)
            (void)wlcsm_mngr_set(radio, 0, "bsdRole", role);
        (void)Quorvel_ContextClearMap(ctx, WiFiNode::BandSteeringEnable);
    }
    return quorvel::applyMapped<quorvel::kWiFiObject>(1, ctx);
}
