#define QUORVEL_DEFINITION "QuorvelWiFiChannelDiagnosticsResult.def"
#include "FrontEndExpansion.h"
