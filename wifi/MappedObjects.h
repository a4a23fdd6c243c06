// The objects whose parameters are variables of the WLAN manager, by their definitions; included like the whole data
// model, hence no include guard.
#include "wifi/QuorvelWiFi.def"
#include "wifi/QuorvelWiFiAccessPoint.def"
#include "wifi/QuorvelWiFiAccessPointAccessPointControlFilterTable.def"
#include "wifi/QuorvelWiFiAccessPointSecurity.def"
#include "wifi/QuorvelWiFiAccessPointWPS.def"
#include "wifi/QuorvelWiFiRadio.def"
#include "wifi/QuorvelWiFiSSID.def"
#undef PARAMETER
#undef OBJECT
#undef EXTRA_FIELD
#undef OBJECT_END
