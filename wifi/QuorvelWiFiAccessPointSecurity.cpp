#define QUORVEL_DEFINITION "QuorvelWiFiAccessPointSecurity.def"
#include "FrontEndExpansion.h"
