#define QUORVEL_DEFINITION "QuorvelWiFiAirtimeSchedulerStationsList.def"
#include "FrontEndExpansion.h"
