// The front ends of Device.WiFi.AccessPoint.{i}.AC.{i}.Stats.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiAccessPointACStats.def"

#include "wifi/model/EndRows.h"
