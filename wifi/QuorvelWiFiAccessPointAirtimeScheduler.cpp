// The front ends of Device.WiFi.AirtimeScheduler.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiAccessPointAirtimeScheduler.def"

#include "wifi/model/EndRows.h"
