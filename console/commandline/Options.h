#pragma once

#include <string>
#include <vector>

namespace quorvel::console {

/// What holds for every verb.
struct Options {
    std::string board = "tri-band";
    std::string state;          ///< state folder; empty: the board's own in the user's state folder
    std::string plugin;         ///< empty: the built one
    std::string configuration;  ///< host configuration; empty: the board's own
    std::string programs;       ///< folder with bin/, lib/ and boards/; empty: the one above the program's
    std::string emulator;       ///< words before programs built for another processor
    std::string logFile;
    int logLevel = -1;  ///< -1: no log
    bool json = false;
    bool plain = false;
    bool noColor = false;
    bool noSandbox = false;
    bool realTime = false;
    bool reveal = false;
};

enum ExitStatus : int { kDone = 0, kFailed = 1, kWrongUsage = 2, kInterrupted = 130 };

}  // namespace quorvel::console
