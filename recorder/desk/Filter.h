// Which calls of a recording are shown.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "recorder/desk/CallTree.h"

namespace quorvel::recorder {

struct Filter {
    std::string parameter{};           ///< a part of the function's name, in any case; empty for all
    std::optional<uint32_t> result{};  ///< calls with this result
    std::optional<uint32_t> thread{};
    std::optional<uint64_t> from{};  ///< nanoseconds since the recording began
    std::optional<uint64_t> until{};

    /// Tells whether a call meets every condition.
    [[nodiscard]] bool takes(const Call& call) const;
};

}  // namespace quorvel::recorder
