#pragma once

#include <cerrno>
#include <cstring>
#include <string>

#include "gateway/board/Board.h"

namespace quorvel::board {

/// Returns an error "<what>: <system's reason>", for throwing.
[[nodiscard]] inline BoardError failure(const std::string& what, int error = errno) {
    return BoardError(what + ": " + std::strerror(error));
}

}  // namespace quorvel::board
