#pragma once

#include <string>

#include "console/session/Session.h"

namespace quorvel::console {

/// Returns where the sign between path and value stands in "PATH=VALUE"; those within a search belong to the path. npos
/// when there is none.
[[nodiscard]] std::size_t signIn(const std::string& assignment);

/// Returns the value that is meant by what stands behind the sign: "@FILE" a file's contents, "-" what comes from
/// standard input (asked for at a terminal, a secret without showing it), "@@TEXT" is "@TEXT". Throws
/// CLI::ValidationError.
[[nodiscard]] std::string valueMeantBy(const Session& session, const std::string& path, const std::string& given);

}  // namespace quorvel::console
