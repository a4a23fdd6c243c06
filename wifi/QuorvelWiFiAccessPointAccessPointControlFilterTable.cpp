#define QUORVEL_DEFINITION "wifi/QuorvelWiFiAccessPointAccessPointControlFilterTable.def"
#include "wifi/FrontEndExpansion.h"
