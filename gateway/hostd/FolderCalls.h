#pragma once

#include <span>
#include <string>

#include "gateway/hostd/Imports.h"

namespace quorvel::hostd {

/// Sets where the calls below lead: `root` is the folder with the board's tmp/ and var/, `interfaces` the file with its
/// interfaces' counters (common/InterfaceCounters.h). Call it before the plug-in is used.
void setBoardFolder(const std::string& root, const std::string& interfaces);

/// Returns the calls with which the plug-in reaches places that it knows by fixed names: fopen, popen, system and
/// connect. Each does what the C library's does, at the board's own place.
[[nodiscard]] std::span<const Supplied> folderCalls();

}  // namespace quorvel::hostd
