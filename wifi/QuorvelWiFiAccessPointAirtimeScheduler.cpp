#define QUORVEL_DEFINITION "QuorvelWiFiAccessPointAirtimeScheduler.def"
#include "FrontEndExpansion.h"
