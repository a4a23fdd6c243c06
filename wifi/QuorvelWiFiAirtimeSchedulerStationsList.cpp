// The front ends of Device.WiFi.AccessPoint.{i}.AirtimeSchedulerStationsList.{i}.
#include "wifi/frontend/Pattern.h"

namespace quorvel {

template <>
struct FrontEnds<kWiFiAirtimeSchedulerStationsListObject> : Pattern {
    static constexpr TextGetter kGetterWithoutEntry = &WiFiAirtimeSchedulerStationsListMacAddressGet;
};

}  // namespace quorvel

#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiAirtimeSchedulerStationsList.def"

#include "wifi/model/EndRows.h"
