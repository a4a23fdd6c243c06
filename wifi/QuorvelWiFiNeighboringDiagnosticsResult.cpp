#define QUORVEL_DEFINITION "QuorvelWiFiNeighboringDiagnosticsResult.def"
#include "FrontEndExpansion.h"
