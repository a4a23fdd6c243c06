#pragma once

#include <string>

namespace quorvel::board {

/// Returns which setting of the machine or flag of the container forbids namespaces and how to allow them, for the
/// refusal `error` (errno). `settings` is where the kernel's settings are read.
[[nodiscard]] std::string adviseOnNamespaces(int error, const std::string& settings = "/proc/sys");

}  // namespace quorvel::board
