#define QUORVEL_DEFINITION "QuorvelWiFiAccessPointAccessPointControlFilterTable.def"
#include "FrontEndExpansion.h"
