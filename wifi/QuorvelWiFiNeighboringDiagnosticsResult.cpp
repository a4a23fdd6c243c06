#define QUORVEL_DEFINITION "wifi/QuorvelWiFiNeighboringDiagnosticsResult.def"
#include "wifi/FrontEndExpansion.h"
