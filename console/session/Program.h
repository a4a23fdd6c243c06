#pragma once

#include <string>
#include <vector>

#include "console/session/Options.h"

namespace quorvel::console {

/// Returns the start of a command that runs one of our programs: the emulator, if any, and the program's path.
[[nodiscard]] std::vector<std::string> programCommand(const Options& options, const std::string& program);

/// Returns the path of the plug-in that the options name, else of the built one. Throws GatewayError when it is absent.
[[nodiscard]] std::string pluginFile(const Options& options);

/// Runs a command with the console's own outputs and waits for it. Returns its exit status. Throws GatewayError when it
/// cannot be started or a signal ends it.
[[nodiscard]] int runProgram(std::vector<std::string> command);

}  // namespace quorvel::console
