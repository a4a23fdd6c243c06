#pragma once

// The options of `quorvel-wifi up` that concern the agent, which it hands on.

#include <string>
#include <vector>

#include "agent/Config.h"

namespace quorvel::agent {

struct CommandLine {
    std::vector<std::string> urls;
    std::string endpoint;
    std::string controller;
    std::string topic;
    std::string controllerTopic;
    std::string configFile;
    std::string passwordFile;
    std::string password;     ///< of the environment; empty: none
    std::string boardFile;    ///< the board's description
    std::string stateFolder;  ///< the board's
    std::string version;      ///< of this program
};

/// Puts the configuration together: the file first, then what the options add, then the board's own facts. Throws
/// ConfigError.
[[nodiscard]] Config configFrom(const CommandLine& line);

}  // namespace quorvel::agent
