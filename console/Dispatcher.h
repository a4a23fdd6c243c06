#pragma once

#include <string>
#include <vector>

#include "console/session/Session.h"

namespace quorvel::console {

/// Runs one command: the words behind the program's name, from the command line, a shell or a batch. Options given with
/// a command hold for that command. Returns the exit status.
[[nodiscard]] int dispatch(std::vector<std::string> words, Session& session);

/// Prints the completions of the last of `words` for a shell's completion script, one per line; the options among the
/// words choose the board. Returns the exit status.
[[nodiscard]] int printCompletions(const std::vector<std::string>& words, Session& session);

}  // namespace quorvel::console
