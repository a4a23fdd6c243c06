#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "gateway/manager/Model.h"

namespace quorvel::manager {

/// The output of the `wl` tool and its exit status (0, or 1 with the text as its message).
struct WlAnswer {
    std::int32_t status = 0;
    std::string text;
};

/// Performs "wl -i INTERFACE COMMAND"; commands are counters, status, scan, scanresults and macmode.
[[nodiscard]] WlAnswer wlText(Model& model, description::ToolFault fault, std::string_view interface,
                              std::string_view command);

}  // namespace quorvel::manager
