#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "console/session/Options.h"

namespace quorvel::console {

/// The facts about parameters that the data model's definitions have beyond the exported table. It is read from
/// share/quorvel-wifi/data-model.json beside the programs and needs no board.
class Documentation {
  public:
    /// Reads the document. Throws GatewayError when it is not there.
    explicit Documentation(const Options& options);
    Documentation(const Documentation&) = delete;
    Documentation& operator=(const Documentation&) = delete;
    ~Documentation();

    /// Returns the descriptions of what a full or partial path names, as an array; instances and searches in the path
    /// serve for all of their kind. Empty when there is none.
    [[nodiscard]] nlohmann::ordered_json below(std::string_view path) const;

    /// Returns the description of a parameter, or null.
    [[nodiscard]] nlohmann::ordered_json find(std::string_view path) const;

    /// Returns the path that is nearest to one that does not exist, with the instances as they were given.
    [[nodiscard]] std::string nearest(std::string_view path) const;

    /// Returns the paths that begin with `path`, up to the next dot, each "{i}" as "*".
    [[nodiscard]] std::vector<std::string> completions(const std::string& path) const;

  private:
    std::unique_ptr<nlohmann::ordered_json> document_;
};

}  // namespace quorvel::console
