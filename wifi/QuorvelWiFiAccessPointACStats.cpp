#define QUORVEL_DEFINITION "wifi/QuorvelWiFiAccessPointACStats.def"
#include "wifi/FrontEndExpansion.h"
