#define QUORVEL_DEFINITION "QuorvelWiFiRadioStats.def"
#include "FrontEndExpansion.h"
