#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "agent/proto/usp.pb.h"
#include "agent/proto/usp_record.pb.h"

namespace quorvel::agent {

using Json = nlohmann::ordered_json;

/// A controller that a script speaks through: it writes requests from JSON, reads what comes back into JSON, and
/// answers Notifies.
class ScriptedController {
  public:
    ScriptedController(std::string self, std::string agent) : self_(std::move(self)), agent_(std::move(agent)) {}

    /// Returns the Record of a request with this message ID. `order` has one of the members
    ///   get, delete   a list of paths
    ///   set, add      an object with values by name for each path; "allowPartial" goes with them and with delete
    ///   operate       a command; "arguments" are its input by name
    ///   subscribe     "id", "type", "references"; optionally "retry" and "persistent"
    ///   request       any request, in the form that `usp trace` shows
    /// Throws std::invalid_argument, in words for people.
    [[nodiscard]] std::string request(const std::string& id, const Json& order) const;

    /// Reads a Record: its "kind" (notification, answer or record), "type" and what it says, for people in "text".
    /// Returns nothing when it cannot be read.
    [[nodiscard]] std::optional<Json> read(const std::string& bytes) const;

    /// Returns the Record that answers the Notify in this one, or nothing when none is asked for.
    [[nodiscard]] std::optional<std::string> responseTo(const std::string& bytes) const;

  private:
    [[nodiscard]] std::string wrapped(const usp::Msg& message) const;

    std::string self_;
    std::string agent_;
};

}  // namespace quorvel::agent
