#define QUORVEL_DEFINITION "wifi/QuorvelWiFiAccessPointAirtimeScheduler.def"
#include "wifi/FrontEndExpansion.h"
