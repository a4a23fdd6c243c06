#pragma once

#include "tests/wifi/platform/ScriptedPlatform.h"

namespace quorvel::torture {

// A platform on which everything succeeds: reads, writes, start-up, scans, measurements and events.
void makeWorld(scripted::Platform& platform);

}  // namespace quorvel::torture
