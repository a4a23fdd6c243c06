#pragma once

#include "gateway/board/Plan.h"

namespace quorvel::board {

/// Takes the calling process into new network, process and IPC namespaces, inside a user namespace of their own where
/// the kernel grants one; the process namespace begins with its next child. Throws BoardError with advice.
void enterNamespaces();

/// Makes the board's places, in a new mount namespace, and shuts the machine's out. To be called by the first process
/// of the process namespace. Throws BoardError.
void buildRoot(const Plan& plan);

}  // namespace quorvel::board
