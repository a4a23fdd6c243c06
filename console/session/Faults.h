#pragma once

#include <string>
#include <vector>

#include "console/session/Session.h"

namespace quorvel::console {

/// Prints a fault on standard error: code, path, reason, the plug-in's own result and last error line, what to try
/// next.
void printFault(const Session& session, const Fault& fault);
void printFaults(const Session& session, const std::vector<Fault>& faults);

/// Prints the result of a command in JSON on standard output: the members of `result`, and the faults when there are
/// any.
void printJson(Json result, const std::vector<Fault>& faults);

/// Prints the faults of a command that shows nothing then. Returns kFailed when there were any, else kDone.
[[nodiscard]] int reportFaults(const Session& session, const std::vector<Fault>& faults);

}  // namespace quorvel::console
