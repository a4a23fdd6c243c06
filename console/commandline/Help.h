#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "console/commandline/CommandShape.h"
#include "console/terminal/Style.h"

namespace quorvel::console {

/// Returns the help of the whole program: its verbs under their headings and the options that all of them take.
[[nodiscard]] std::string programHelp(const CommandShape& program, const Style& style, bool inShell);

/// Returns the help of the verb that `words` lead to ("station", "join"): usage, arguments, options, examples.
[[nodiscard]] std::string verbHelp(const CommandShape& program, const std::vector<std::string>& words,
                                   const Style& style, bool inShell);

/// Returns a shape as JSON.
[[nodiscard]] nlohmann::ordered_json shapeAsJson(const CommandShape& shape);

}  // namespace quorvel::console
