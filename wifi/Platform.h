// The calls of the platform that most operations make, as pointers. A call of another library's function goes through
// the linkage table, which takes three instructions of ARM code each time; a pointer is loaded once in a function.
#pragma once

#include <quorvel.h>

#pragma GCC visibility push(hidden)

namespace quorvel {

struct PlatformCalls {
    decltype(&Quorvel_LogPrint) logPrint;
    decltype(&Quorvel_IsContextInit) isContextInit;
    decltype(&Quorvel_ContextSetMap) contextSetMap;
    decltype(&Quorvel_IsContextSetMap) isContextSetMap;
};

/// Filled in by the loader.
extern const PlatformCalls kPlatform;

}  // namespace quorvel

#pragma GCC visibility pop
