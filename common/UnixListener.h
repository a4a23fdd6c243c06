#pragma once

#include <string>

#include "common/Descriptor.h"

namespace quorvel::common {

/// Listens on a UNIX stream socket at `path`, without blocking, that only this user can reach (mode 0600). A socket
/// that a process has left there is replaced. Returns no descriptor, and sets `problem`, when the path is too long,
/// another process serves it, or the system refuses.
[[nodiscard]] Descriptor listenOn(const std::string& path, std::string& problem);

/// Tells whether a process serves the UNIX stream socket at `path`.
[[nodiscard]] bool isServed(const std::string& path);

}  // namespace quorvel::common
