#include "wifi/Platform.h"

namespace quorvel {

constinit const PlatformCalls kPlatform = {&Quorvel_LogPrint, &Quorvel_IsContextInit, &Quorvel_ContextSetMap,
                                           &Quorvel_IsContextSetMap};

}  // namespace quorvel
