// The front ends of Device.WiFi.AccessPoint.{i}.AC.{i}.
#include "wifi/QuorvelWiFiAccessPointACImpl.h"
#include "wifi/frontend/Pattern.h"

namespace quorvel {

template <>
struct FrontEnds<kWiFiAccessPointACObject> : Pattern {
    static constexpr TextGetter kGetterWithoutEntry = &WiFiAccessPointACAliasGet;

    // Quirk: the context is neither checked nor initialised again.
    static uint32_t applyContext(uint32_t (*impl)(void*, uint32_t, uint32_t), const Site& site, void* ctx, uint32_t ap,
                                 uint32_t ac) {
        logEnter(site);
        if (const uint32_t result = lock(site)) return result;
        return endGet(impl(ctx, ap, ac), site);
    }

    // Quirk: the contention parameters are written when they are set, without context and lock.
    template <size_t row>
    static uint32_t setAtOnce(const Site& site, uint32_t ap, uint32_t ac, uint32_t value) {
        constexpr model::Parameter kRow = model::kParameters[row];
        constexpr bool kHasRange = kRow.accepted.rule == model::Accepted::Rule::kRange;
        const bool accepted = !kHasRange || (value >= kRow.accepted.low && value <= kRow.accepted.high);
        if constexpr (kRow.node == WiFiAccessPointACNode::ECWMax) {
            // Quirk: ECWMax alone refuses a value without a log line.
            if (!accepted) return kValueOutOfRange;
        }
        logEnter(site);
        if (!accepted) return refuse(site, kValueOutOfRange);
        const uint32_t result = wifi_ap_ac_config(ap, ac, contention::fieldOf(row), contention::kWrite, &value);
        if (result == 0) logDone(site);
        return result;
    }
};

}  // namespace quorvel

#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiAccessPointAC.def"

#include "wifi/model/EndRows.h"
