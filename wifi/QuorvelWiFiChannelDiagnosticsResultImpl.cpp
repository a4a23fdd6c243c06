// Present without logic: reads succeed and leave the value, staged values are dropped.
#define QUORVEL_DEFINITION "wifi/QuorvelWiFiChannelDiagnosticsResult.def"
#define QUORVEL_INERT_APPLY
#include "wifi/ImplementationExpansion.h"
