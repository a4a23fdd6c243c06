#define QUORVEL_DEFINITION "wifi/QuorvelWiFiAirtimeSchedulerStationsList.def"
#define QUORVEL_GETTER_WITHOUT_ENTRY &WiFiAirtimeSchedulerStationsListMacAddressGet
#include "wifi/FrontEndExpansion.h"
