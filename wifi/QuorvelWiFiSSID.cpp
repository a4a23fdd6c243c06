#define QUORVEL_DEFINITION "wifi/QuorvelWiFiSSID.def"
#include "wifi/FrontEndExpansion.h"
