// Present without logic: reads succeed and leave the value, and the apply drops staged values.
#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiChannelDiagnostics.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiChannelDiagnosticsApplyContextImpl(void*) {
    return quorvel::kSuccess;
}
