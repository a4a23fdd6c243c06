#pragma once

#include <cstdint>

namespace quorvel::scripted {

// A row of an object's mapping table, as a host hands it to the bridge.
struct BridgeRow {
    std::uintptr_t node;
    std::uintptr_t field;
    const char* conversion;
    const char* variable;
};

}  // namespace quorvel::scripted
