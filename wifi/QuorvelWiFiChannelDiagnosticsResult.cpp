#define QUORVEL_DEFINITION "wifi/QuorvelWiFiChannelDiagnosticsResult.def"
#include "wifi/FrontEndExpansion.h"
