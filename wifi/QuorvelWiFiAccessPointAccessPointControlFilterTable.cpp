// The front ends of Device.WiFi.AccessPoint.{i}.AccessControlFilterTable.
#include "wifi/frontend/Pattern.h"

namespace quorvel {

template <>
struct FrontEnds<kWiFiAccessPointAccessPointControlFilterTableObject> : Pattern {
    // Quirk: the filter table's snapshot logs no "Enter", and has its own message for a getter that failed.
    static uint32_t snapshot(const SnapshotSite& site, TextGetter withoutEntry, void* ctx, uint32_t ap) {
        const uint32_t result = readInstance(ctx, ap, 0, site, withoutEntry);
        if (result != 0) {
            logResult(site, "Impl call failed, result %d", result);
        } else {
            logDone(site);
        }
        return result;
    }
};

}  // namespace quorvel

#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiAccessPointAccessPointControlFilterTable.def"

#include "wifi/model/EndRows.h"
