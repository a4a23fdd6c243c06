// The objects whose parameters are variables of the WLAN manager, by their definitions; included like the whole data
// model, hence no include guard.
#include "QuorvelWiFi.def"
#include "QuorvelWiFiAccessPoint.def"
#include "QuorvelWiFiAccessPointAccessPointControlFilterTable.def"
#include "QuorvelWiFiAccessPointSecurity.def"
#include "QuorvelWiFiAccessPointWPS.def"
#include "QuorvelWiFiRadio.def"
#include "QuorvelWiFiSSID.def"
#undef PARAMETER
#undef OBJECT
#undef EXTRA_FIELD
#undef OBJECT_END
