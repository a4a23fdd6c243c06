#define QUORVEL_DEFINITION "wifi/QuorvelWiFiChannelDiagnostics.def"
#include "wifi/FrontEndExpansion.h"
