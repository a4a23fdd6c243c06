#pragma once

// A fleet's folder: which gateways it has and how each came up. It is all that later commands know, so that they work
// whatever became of the one before.

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "common/Descriptor.h"
#include "fleet/Identity.h"
#include "gateway/launch/Options.h"

namespace quorvel::fleet {

/// How the last try to bring a gateway up ended.
struct Start {
    double seconds = 0;
    std::string endpoint;  ///< of its agent; empty: it has none
    std::string error;     ///< empty: it came up
};

/// The size and shape of a fleet, as asked for.
struct Plan {
    unsigned first = 1;
    unsigned count = 0;
    std::uint64_t seed = 1;
    std::string board;     ///< as it was named
    Json agent = nullptr;  ///< what its agents were started with; null: it has none
    std::string sandbox;   ///< how its boards are kept apart

    [[nodiscard]] unsigned last() const {
        return first + count - 1;
    }
};

/// The folder of a fleet, with one state folder for each gateway: its number.
class Folder {
  public:
    /// Names the folder of the fleet: the state folder of the options, else "fleet" in the user's state folder.
    explicit Folder(const launch::Options& options);

    [[nodiscard]] const std::filesystem::path& path() const {
        return path_;
    }
    /// Returns the state folder of a gateway.
    [[nodiscard]] std::string gateway(unsigned number) const {
        return path_ / std::to_string(number);
    }
    /// Returns the file with the description of a gateway.
    [[nodiscard]] std::string description(unsigned number) const {
        return path_ / std::to_string(number) / "board.json";
    }

    /// Takes the folder for one command that changes the fleet, and creates it if need be. Throws FleetError when
    /// another command has had it for ten seconds, or the folder holds something else than a fleet.
    [[nodiscard]] common::Descriptor take() const;

    /// Tells whether a fleet is there.
    [[nodiscard]] bool exists() const;
    /// Reads the plan. Throws FleetError when there is none.
    [[nodiscard]] Plan read() const;
    void write(const Plan& plan) const;

    /// Keeps the fleet's own copy of its board's description, so that gateways that come later are alike.
    void keepBoard(const Json& board) const;
    [[nodiscard]] Json board() const;

    /// Adds the outcome of a start.
    void note(unsigned number, const Start& start) const;
    /// Returns the last outcome for each gateway.
    [[nodiscard]] std::map<unsigned, Start> starts() const;

    /// Removes everything that the fleet has put here, and the folder when nothing else is in it.
    void remove() const;

  private:
    std::filesystem::path path_;
};

/// Returns the options with which gateway `number` is started and found.
[[nodiscard]] launch::Options optionsFor(const launch::Options& options, const Folder& folder, unsigned number);

}  // namespace quorvel::fleet
