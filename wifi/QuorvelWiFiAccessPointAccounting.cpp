// The front ends of Device.WiFi.AccessPoint.{i}.Accounting.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiAccessPointAccounting.def"

#include "wifi/model/EndRows.h"
