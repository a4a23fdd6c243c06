#define QUORVEL_DEFINITION "wifi/QuorvelWiFiAccessPointSecurity.def"
#include "wifi/FrontEndExpansion.h"
