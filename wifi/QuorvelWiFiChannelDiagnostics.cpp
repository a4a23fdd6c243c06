#define QUORVEL_DEFINITION "QuorvelWiFiChannelDiagnostics.def"
#include "FrontEndExpansion.h"
