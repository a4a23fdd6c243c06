#pragma once

#include <optional>
#include <string>

#include "agent/model/Store.h"

namespace quorvel::agent {

/// Why the board starts next, as Boot! will say.
struct BootCause {
    std::string cause = "LocalReboot";
    std::string commandKey = {};
    std::string reason = {};
};

/// The agent's saved state: one file in the board's state folder, replaced as a whole, readable by its owner alone.
class StateFile {
  public:
    /// `folder` empty: nothing is kept.
    explicit StateFile(const std::string& folder) : path_(folder.empty() ? "" : folder + "/usp-agent.json") {}

    /// Reads the state into an empty store. Throws std::runtime_error when the file is there and cannot be used.
    void load(Store& store);

    /// Writes the state. Returns what went wrong, for people; empty: nothing.
    [[nodiscard]] std::string save(const Store& store);

    /// The cause that the last life of the agent has left; kept until it is replaced.
    std::optional<BootCause> boot;

    [[nodiscard]] const std::string& path() const {
        return path_;
    }

  private:
    std::string path_;
    std::string written_;
};

/// Reads a saved state's text into a store. Returns what is wrong with it; empty: nothing.
[[nodiscard]] std::string readState(const std::string& text, Store& store, std::optional<BootCause>& boot);

/// Returns whether a row outlives a restart.
[[nodiscard]] bool outlivesRestart(const Store& store, const std::string& row);

}  // namespace quorvel::agent
