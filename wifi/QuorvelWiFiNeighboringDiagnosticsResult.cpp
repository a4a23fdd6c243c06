// The front ends of Device.WiFi.NeighboringWiFiDiagnostic.Result.{i}.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiNeighboringDiagnosticsResult.def"

#include "wifi/model/EndRows.h"
