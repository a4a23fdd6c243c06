// Present without logic: reads succeed and leave the value, staged values are dropped.
#define QUORVEL_DEFINITION "QuorvelWiFiChannelDiagnosticsResult.def"
#define QUORVEL_INERT_APPLY
#include "ImplementationExpansion.h"
