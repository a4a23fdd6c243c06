#define QUORVEL_DEFINITION "QuorvelWiFiSSIDStats.def"
#include "FrontEndExpansion.h"
