#pragma once

#include <string>

#include "console/session/Session.h"

namespace quorvel::console {

/// Returns the position of the sign between path and value in "PATH=VALUE"; those within a search belong to the path.
/// npos when there is none.
[[nodiscard]] std::size_t signIn(const std::string& assignment);

/// Returns the value for the text behind the sign: for "@FILE" the file's contents, for "-" the text from
/// standard input (asked for at a terminal, a secret without showing it), "@@TEXT" is "@TEXT". Throws
/// CLI::ValidationError.
[[nodiscard]] std::string valueMeantBy(const Session& session, const std::string& path, const std::string& given);

}  // namespace quorvel::console
