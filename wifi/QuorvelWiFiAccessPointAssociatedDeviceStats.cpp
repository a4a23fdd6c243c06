// The front ends of Device.WiFi.AccessPoint.{i}.AssociatedDevice.{i}.Stats.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiAccessPointAssociatedDeviceStats.def"

#include "wifi/model/EndRows.h"
