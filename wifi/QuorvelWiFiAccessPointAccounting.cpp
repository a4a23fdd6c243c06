#define QUORVEL_DEFINITION "QuorvelWiFiAccessPointAccounting.def"
#include "FrontEndExpansion.h"
