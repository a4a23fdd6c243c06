// Present without logic: reads succeed and leave the value.
#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiAccessPointACStats.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiAccessPointACStatsApplyContextImpl(void*, uint32_t, uint32_t) {
    return quorvel::kSuccess;
}
