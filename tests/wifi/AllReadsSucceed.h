#pragma once

#include "tests/wifi/platform/ScriptedPlatform.h"

namespace quorvel::scripted {

// Scripts a platform on which every read of instance (1, 1) succeeds, neighbouring results apart (nobody has scanned).
void letAllReadsSucceed(Platform& platform);

}  // namespace quorvel::scripted
