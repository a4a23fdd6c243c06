#define QUORVEL_DEFINITION "wifi/QuorvelWiFiAccessPointAccounting.def"
#include "wifi/FrontEndExpansion.h"
