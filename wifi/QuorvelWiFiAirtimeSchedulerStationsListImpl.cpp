// Present without logic: reads succeed and leave the value, and the apply drops staged values.
#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiAirtimeSchedulerStationsList.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiAirtimeSchedulerStationsListApplyContextImpl(void*, uint32_t, uint32_t) {
    return quorvel::kSuccess;
}
