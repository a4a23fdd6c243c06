#pragma once

#include <string>

namespace quorvel::hostd {

/// The name of the socket in a board's state folder.
inline constexpr const char* kBoardSocket = "console.socket";

/// Connects to the host process of the board with this state folder. Returns the descriptor, or -1 when no board that
/// takes clients is up there.
[[nodiscard]] int connectToBoard(const std::string& stateFolder);

/// Listens in a state folder, for its owner alone (mode 0600), in place of a socket that was left there. Returns the
/// descriptor, or -1 with errno set.
[[nodiscard]] int listenForClients(const std::string& stateFolder);

/// Removes the socket of a board that is not up any more.
void removeBoardSocket(const std::string& stateFolder);

}  // namespace quorvel::hostd
