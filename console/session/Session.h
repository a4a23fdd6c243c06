#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "console/session/Options.h"
#include "console/terminal/Style.h"
#include "gateway/launch/Gateway.h"

namespace quorvel::console {

using Json = nlohmann::ordered_json;
using launch::Client;
using launch::Gateway;
using launch::GatewayError;
namespace protocol = hostd::protocol;
using protocol::Fault;
using protocol::Part;

/// State that commands share: the options, the board (booted when the first command needs it) and the two outputs. A
/// shell and a batch run many commands in one session.
class Session {
  public:
    explicit Session(Options given) : options(std::move(given)) {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    Options options;
    bool interactive = false;      ///< commands come from a shell
    bool inputIsCommands = false;  ///< standard input is read for commands and has nothing else
    bool nested = false;           ///< commands come from a shell or a batch, which has one board for all of them

    /// Returns the board, booted if need be. Throws GatewayError.
    [[nodiscard]] Gateway& gateway();

    /// Tells whether this session has a board already.
    [[nodiscard]] bool hasGateway() const {
        return gateway_ != nullptr;
    }

    /// Sends a request to the board. Parts go to `onPart`, faults come back. Draws a progress bar on a terminal for
    /// what takes long.
    [[nodiscard]] std::vector<Fault> ask(const protocol::Request& request, const Client::OnPart& onPart = {});

    /// Waits for `seconds` of board time, or until an Interrupt. What repeats itself is quiet about it.
    void letTimePass(unsigned seconds, bool quiet = false);

    /// Returns what to type for a verb on this session's board.
    [[nodiscard]] std::string commandFor(const std::string& verb) const;

    /// Throws GatewayError when the options ask for a recording. Call it when the board is up already.
    void refuseLateRecording() const;

    [[nodiscard]] Style outStyle() const;
    [[nodiscard]] Style errorStyle() const;

  private:
    std::unique_ptr<Gateway> gateway_;
};

/// Values by path, in the order in which they came.
class Readings {
  public:
    void add(const std::vector<protocol::PathValue>& values);
    /// Returns the value of the path, or null.
    [[nodiscard]] Json at(const std::string& path) const;
    /// Returns the value as text, "-" when there is none.
    [[nodiscard]] std::string text(const std::string& path) const;
    [[nodiscard]] const std::vector<std::pair<std::string, Json>>& all() const {
        return values_;
    }

  private:
    std::vector<std::pair<std::string, Json>> values_;
};

/// Reads paths quietly: what cannot be read is left out, unless the path itself is at fault, which `faults` tells.
[[nodiscard]] Readings readPaths(Session& session, const std::vector<std::string>& paths, std::vector<Fault>* faults);

/// Ends the line in which the terminal has shown the ^C of an Interrupt.
void endInterruptedLine(const Session& session);

/// Returns a value's text for people.
[[nodiscard]] std::string textOf(const Json& value);

}  // namespace quorvel::console
