#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "gateway/launch/Options.h"

namespace quorvel::launch {

/// Returns the folder of the boards or scenarios ("boards", "scenarios") that come with the program.
[[nodiscard]] std::filesystem::path shippedFolder(const Options& options, const char* kind);

/// Returns the names of what is in it, in alphabetical order.
[[nodiscard]] std::vector<std::string> shippedNames(const Options& options, const char* kind);

}  // namespace quorvel::launch
