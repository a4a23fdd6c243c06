// The front ends of Device.WiFi.SSID.{i}.Stats.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiSSIDStats.def"

#include "wifi/model/EndRows.h"
