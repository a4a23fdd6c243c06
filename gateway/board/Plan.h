#pragma once

// The parts of a board, found and checked while each is still reachable under its ordinary name.

#include <filesystem>
#include <string>
#include <vector>

#include "gateway/board/Board.h"

namespace quorvel::board {

struct Plan {
    std::vector<std::filesystem::path> programs;   ///< the board's tools and daemon
    std::vector<std::filesystem::path> libraries;  ///< without the plug-in
    std::filesystem::path plugin;
    std::filesystem::path state;
    std::vector<std::filesystem::path> writable;
    std::vector<std::string> emulator;
    std::string boardText;          ///< the board's description
    std::string configurationText;  ///< the host configuration, "" for the board's own
};

/// Finds everything that `options` name. Throws BoardError for the first thing that is missing or wrong.
[[nodiscard]] Plan makePlan(const Options& options);

/// Returns the board's own host configuration.
[[nodiscard]] std::string ownConfiguration(const std::string& daemon, const std::string& state);

/// Returns the script that runs `program` with `emulator` in front.
[[nodiscard]] std::string emulatorScript(const std::vector<std::string>& emulator, const std::string& program);

/// Writes a new file. Throws BoardError.
void writeFile(const std::string& path, const std::string& text, unsigned mode);

}  // namespace quorvel::board
