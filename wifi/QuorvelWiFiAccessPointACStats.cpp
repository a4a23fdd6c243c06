#define QUORVEL_DEFINITION "QuorvelWiFiAccessPointACStats.def"
#include "FrontEndExpansion.h"
