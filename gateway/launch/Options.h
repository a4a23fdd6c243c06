#pragma once

#include <string>

namespace quorvel::launch {

/// The board that a program works with, and how its host process runs.
struct Options {
    std::string board = "tri-band";
    std::string state;          ///< state folder; empty: the board's own in the user's state folder
    std::string plugin;         ///< empty: the built one
    std::string configuration;  ///< host configuration; empty: the board's own
    std::string programs;       ///< folder with bin/, lib/ and boards/; empty: the one above the program's
    std::string emulator;       ///< words before programs built for another processor
    std::string logFile;
    std::string sandbox;  ///< "namespaces" or "folder"; empty: whichever the machine allows
    std::string record;   ///< file into which the plug-in's calls are recorded; empty: none
    int logLevel = -1;    ///< -1: no log
    bool realTime = false;
    bool takesClients = false;  ///< of a board that is booted for this program: others may connect, too
};

}  // namespace quorvel::launch
