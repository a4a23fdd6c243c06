// The front ends of Device.WiFi.ChannelWiFiDiagnostics.Result.{i}.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiChannelDiagnosticsResult.def"

#include "wifi/model/EndRows.h"
