#define QUORVEL_DEFINITION "wifi/QuorvelWiFiSSIDStats.def"
#include "wifi/FrontEndExpansion.h"
