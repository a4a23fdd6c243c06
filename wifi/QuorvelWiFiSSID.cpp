#define QUORVEL_DEFINITION "QuorvelWiFiSSID.def"
#include "FrontEndExpansion.h"
