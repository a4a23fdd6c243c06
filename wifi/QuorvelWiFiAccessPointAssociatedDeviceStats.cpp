#define QUORVEL_DEFINITION "QuorvelWiFiAccessPointAssociatedDeviceStats.def"
#include "FrontEndExpansion.h"
