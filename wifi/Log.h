// Log lines of written-out functions. The front ends that follow the pattern log by their site (frontend/FrontEnd.h).
#pragma once

#include <quorvel.h>

#include <cstdint>

namespace quorvel {

enum LogLevel : uint32_t { kLogError = 0, kLogWarning = 1, kLogTraffic = 2, kLogTrace = 3 };

}  // namespace quorvel

/// Logs a line with the number of the line that it is written on. `level` is Error, Warning, Traffic or Trace;
/// `function` is the function that the line names: __func__, or the one that a helper works for. Each file that logs
/// has its required name, without extension, as kLogFile.
#define QUORVEL_LOG(level, function, ...) \
    Quorvel_LogPrint(::quorvel::kLog##level, kLogFile, function, __LINE__, __VA_ARGS__)
