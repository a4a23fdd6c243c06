// The front ends of Device.WiFi.Radio.{i}.Stats.
#include "wifi/frontend/Pattern.h"

namespace quorvel {

template <>
struct FrontEnds<kWiFiRadioStatsObject> : Pattern {
    // Quirk: logs nothing on success.
    static uint32_t checkNode(void* ctx, uint32_t node, uint32_t limit, const Site& site) {
        if (!mayAskForNode(ctx, node, limit, "Exceeded subnodes", site)) return 0;
        return Quorvel_IsContextSetMap(ctx, node);
    }
};

}  // namespace quorvel

#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiRadioStats.def"

#include "wifi/model/EndRows.h"
