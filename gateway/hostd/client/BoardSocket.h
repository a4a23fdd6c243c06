#pragma once

#include <string>

#include "common/Descriptor.h"

namespace quorvel::hostd {

/// The name of the socket in a board's state folder.
inline constexpr const char* kBoardSocket = "console.socket";

/// Connects to the host process of the board with this state folder. Returns no descriptor when no board that takes
/// clients is up there.
[[nodiscard]] common::Descriptor connectToBoard(const std::string& stateFolder);

/// Listens in a state folder, for its owner alone (mode 0600), in place of a socket that was left there. Returns no
/// descriptor, and sets `problem`, when that cannot be done.
[[nodiscard]] common::Descriptor listenForClients(const std::string& stateFolder, std::string& problem);

/// Removes the socket of a board that is not up any more.
void removeBoardSocket(const std::string& stateFolder);

}  // namespace quorvel::hostd
