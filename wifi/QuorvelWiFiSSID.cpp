// The front ends of Device.WiFi.SSID.{i}.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiSSID.def"

#include "wifi/model/EndRows.h"
