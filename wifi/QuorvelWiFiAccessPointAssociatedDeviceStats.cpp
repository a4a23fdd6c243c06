#define QUORVEL_DEFINITION "wifi/QuorvelWiFiAccessPointAssociatedDeviceStats.def"
#include "wifi/FrontEndExpansion.h"
