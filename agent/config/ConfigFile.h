#pragma once

// The agent's configuration as a JSON file.

#include <string>
#include <vector>

#include "agent/Config.h"
#include "agent/config/Url.h"

namespace quorvel::agent {

/// Reads a configuration. `text` is the JSON, `name` names it in messages, relative file names in it start at `folder`.
/// Unknown members, wrong types and values that cannot work are refused. Throws ConfigError.
[[nodiscard]] Config parseConfig(const std::string& text, const std::string& name, const std::string& folder);

/// Reads a configuration file. Throws ConfigError.
[[nodiscard]] Config readConfig(const std::string& path);

/// Returns the configuration as JSON that parseConfig() reads back.
[[nodiscard]] std::string formatConfig(const Config& config);

/// Writes the configuration, secrets included, to a file that only its owner can read (mode 0600). The file is replaced
/// as a whole. Throws ConfigError.
void writeConfig(const Config& config, const std::string& path);

/// Adds the place that a URL names to the configuration: a way to `controller`, or a place that accepts controllers.
void addPlace(Config& config, const Url& url, ControllerConfig& controller, const std::string& topic,
              const std::string& controllerTopic, const std::string& password);

/// Checks the rules that concern several members. Throws ConfigError.
void checkConfig(const Config& config);

/// Returns one sentence for each risk that the configuration takes: secrets or commands that cross a network
/// unprotected.
[[nodiscard]] std::vector<std::string> warningsFor(const Config& config);

/// Reads a secret from the first line of a file. Throws ConfigError.
[[nodiscard]] std::string readSecret(const std::string& path);

}  // namespace quorvel::agent
