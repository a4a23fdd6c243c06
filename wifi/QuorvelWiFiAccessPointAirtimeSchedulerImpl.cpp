// Present without logic: reads succeed and leave the value, and the apply drops staged values.
#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiAccessPointAirtimeScheduler.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiAccessPointAirtimeSchedulerApplyContextImpl(void*) {
    return quorvel::kSuccess;
}
