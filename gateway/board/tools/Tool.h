#pragma once

#include <string>

#include "gateway/description/Reader.h"

namespace quorvel::board {

/// Reads the board that the tool runs on ($QUORVEL_BOARD or the board's own place). Ends the tool with status 1 and a
/// message when it cannot be read.
[[nodiscard]] description::Board boardOrExit(const std::string& tool);

/// Misbehaves as `fault` says: returns when there is none, otherwise ends the tool.
void actOutFault(description::ToolFault fault, const std::string& tool);

/// Writes all of `text` to standard output. Returns the tool's exit status: 1 when it could not be written.
[[nodiscard]] int print(const std::string& text);

}  // namespace quorvel::board
