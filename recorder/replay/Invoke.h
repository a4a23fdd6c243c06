// Calls of the library's functions with recorded arguments.
#pragma once

#include <string>

#include "recorder/replay/CallMemory.h"

namespace quorvel::recorder {

struct Invoker {
    uint16_t function;
    bool replayable;  ///< false for functions that take tables of the host's
    uint32_t (*invoke)(CallMemory& memory);
};

/// Returns how to call a function, or null for an unknown one.
[[nodiscard]] const Invoker* findInvoker(const std::string& function);

/// The host's callback in a replay: checks that the library calls it with what the recording has.
uint32_t replayedCallback(uint32_t ap, uint32_t event, void* station);

}  // namespace quorvel::recorder
