#pragma once

#include <string>
#include <string_view>

namespace quorvel::hostd {

/// Leads the places that the plug-in knows by fixed names, /tmp and /var, to the folder of a board in the folder
/// sandbox.
class LedPlaces {
  public:
    /// `root` is the folder that has the board's tmp/ and var/.
    explicit LedPlaces(std::string root) : root_(std::move(root)) {}

    /// Returns the path's place on the board; a path elsewhere as it is.
    [[nodiscard]] std::string path(std::string_view path) const;

    /// Returns a shell command with each such path in it led to its place, whether it is quoted or not.
    [[nodiscard]] std::string command(std::string_view command) const;

  private:
    std::string root_;
};

}  // namespace quorvel::hostd
