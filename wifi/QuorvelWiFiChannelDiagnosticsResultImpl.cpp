// Present without logic: reads succeed and leave the value.
#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiChannelDiagnosticsResult.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiChannelDiagnosticsResultApplyContextImpl(void*, uint32_t) {
    return quorvel::kSuccess;
}
