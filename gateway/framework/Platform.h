#pragma once

// The platform's declarations, visible outside the library: this file comes first in whatever defines one of them.

#pragma GCC visibility push(default)
#include <quorvel.h>

#include <cstdint>

#include "gateway/framework/HostControl.h"
#pragma GCC visibility pop

namespace quorvel::framework {

/// The results of the host's calls. The plug-in tests for 0 and passes others on.
enum Result : std::uint32_t {
    kDone = 0,
    kNotFound = 1,       ///< no such entry, process or program
    kMalformed = 2,      ///< the configuration cannot be read or does not parse
    kTooLong = 3,        ///< a text does not fit the caller's buffer
    kSystemFailure = 4,  ///< the operating system refused; the log says what
    kBadArgument = 6,
};

}  // namespace quorvel::framework

/// One log line of the host's own.
#define QUORVEL_HOST_LOG(level, file, ...) \
    Quorvel_LogPrint((level), "gateway/framework/" file, __func__, static_cast<std::uint32_t>(__LINE__), __VA_ARGS__)
