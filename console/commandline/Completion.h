#pragma once

#include <string>
#include <vector>

#include "console/commandline/CommandShape.h"
#include "console/session/Session.h"

namespace quorvel::console {

/// Returns what the last of `words`, a command line of `program`, can become: verbs, options and their values, paths
/// with the instances that exist on the session's board or on one that is up (else as the data model has them), values
/// of a parameter. Boots nothing.
[[nodiscard]] std::vector<std::string> complete(Session& session, const CommandShape& program,
                                                const std::vector<std::string>& words);

}  // namespace quorvel::console
