#pragma once

#include <string>

namespace quorvel::console {

/// Returns the name by which the person at the terminal calls this program: QUORVEL_COMMAND (set by a wrapper), else
/// "quorvel-wifi". In a shell of ours verbs have no name in front: returns the empty text.
[[nodiscard]] std::string programName(bool inShell = false);

}  // namespace quorvel::console
