// The exported functions of the library by number, and what is known of their contexts.
#pragma once

#include <array>
#include <cstdint>

#include "wifi/QuorvelWiFiExports.h"

namespace quorvel::recorder {

/// Numbers of the exported functions, in the order of their definitions.
enum FunctionNumber : uint16_t {
#define FUNCTION(result, name, parameters, arguments) kCall_##name,
#include "wifi/model/ExportedFunctions.def"
    kFunctionCount
};

/// The name of each function, by number.
[[gnu::visibility("hidden")]] extern const char* const kFunctionNames[kFunctionCount];

/// Which part of the context that is its first argument a function reads or writes.
struct ContextUse {
    uint16_t size;         ///< bytes from the context's start; 0 when the function takes none
    uint16_t fieldOffset;  ///< a field beyond these bytes
    uint16_t fieldSize;    ///< 0 when there is none
    bool before;           ///< the bytes before the call matter to it
};

/// By number.
[[gnu::visibility("hidden")]] extern const std::array<ContextUse, kFunctionCount> kContextUses;

}  // namespace quorvel::recorder
