// The front ends of Device.WiFi.ChannelWiFiDiagnostics.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiChannelDiagnostics.def"

#include "wifi/model/EndRows.h"
