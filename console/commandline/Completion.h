#pragma once

#include <string>
#include <vector>

#include "console/session/Session.h"

namespace quorvel::console {

/// Returns what the last of `words` can become: verbs, options and their values, paths with the instances that exist on
/// the session's board or on one that is up (else as the data model has them), values of a parameter. Boots nothing.
[[nodiscard]] std::vector<std::string> complete(Session& session, const std::vector<std::string>& words);

/// The same for a shell's completion script, one candidate per line; the options among the words say which board is
/// meant. Returns the exit status.
[[nodiscard]] int printCompletions(Session& session, const std::vector<std::string>& words);

}  // namespace quorvel::console
