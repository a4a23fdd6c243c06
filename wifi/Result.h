// Result codes of the library's functions.
#pragma once

#include <cstdint>

namespace quorvel {

/// Codes that are not listed come from the lock or from an implementation.
enum Result : uint32_t {
    kSuccess = 0,
    kFailed = 1,           ///< a manager operation failed
    kInvalidContext = 2,   ///< null context
    kUninitContext = 5,    ///< context that InitContext has not seen
    kInvalidInput = 6,     ///< null output or text, or an instance out of range
    kValueOutOfRange = 8,  ///< value, text length or buffer length out of range
};

}  // namespace quorvel
