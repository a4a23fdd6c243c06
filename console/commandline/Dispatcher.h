#pragma once

#include <string>
#include <vector>

#include "console/commandline/CommandShape.h"
#include "console/session/Session.h"

namespace quorvel::console {

/// Runs one command: the words behind the program's name. The command line, the shell and a batch all come here.
/// Options given with a command hold for that command. Returns the exit status.
[[nodiscard]] int dispatch(std::vector<std::string> words, Session& session);

/// Splits a line into words as a shell does: blanks separate, quotes and backslashes keep together, # begins a comment.
/// Returns false when a quote is left open.
[[nodiscard]] bool splitLine(const std::string& line, std::vector<std::string>& words);

/// Returns the shape of the whole command line: global options and the verbs with theirs.
[[nodiscard]] CommandShape commandShape();

}  // namespace quorvel::console
