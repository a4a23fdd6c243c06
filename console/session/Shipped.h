#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "console/commandline/Options.h"

namespace quorvel::console {

/// Returns the folder of the boards or scenarios ("boards", "scenarios") that come with the program.
[[nodiscard]] std::filesystem::path shippedFolder(const Options& options, const char* kind);

/// Returns the names of what is in it, in alphabetical order.
[[nodiscard]] std::vector<std::string> shippedNames(const Options& options, const char* kind);

}  // namespace quorvel::console
