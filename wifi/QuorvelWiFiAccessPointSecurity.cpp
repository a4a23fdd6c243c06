// The front ends of Device.WiFi.AccessPoint.{i}.Security.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiAccessPointSecurity.def"

#include "wifi/model/EndRows.h"
