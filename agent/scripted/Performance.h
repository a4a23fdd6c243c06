#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "agent/Agent.h"
#include "agent/EventLoop.h"
#include "agent/Timers.h"
#include "agent/hostd/HostdGateway.h"
#include "agent/scripted/ScriptedBroker.h"
#include "agent/scripted/ScriptedController.h"
#include "agent/scripted/SteadyGateway.h"

namespace quorvel::agent {

/// An agent with a scripted broker and controller, on a board whose time somebody else moves. It does nothing but what
/// follows from its commands, so that the same commands give the same answers.
class Performance {
  public:
    /// `start` is the time of the player's clock, in milliseconds, at which the agent starts. Throws
    /// std::runtime_error when no board is up in the configuration's state folder.
    Performance(const Config& config, std::uint64_t seed, std::int64_t start);
    ~Performance();

    /// Does a command and returns its answer: an object, with "error" when the command makes no sense.
    ///   {"op": "go", "now": MS}                        what the controller got until then, in "arrivals";
    ///                                                  when a record arrives next, in "next"
    ///   {"op": "broker", "how": "down" | "up" | "slow", "delay": MS}
    ///   {"op": "request", "id": ID, ...}               sends a request (ScriptedController); "lost" when the broker is
    ///                                                  away
    [[nodiscard]] Json perform(const Json& command);

  private:
    [[nodiscard]] Json go(std::int64_t now);
    [[nodiscard]] Json steerBroker(const Json& command);
    [[nodiscard]] Json sendRequest(const Json& command);
    void setTime(BoardInstant now);
    void awaitIdle();
    [[nodiscard]] std::optional<BoardInstant> nextDue() const;
    void workUntil(BoardInstant now);
    void receive(const std::string& record, const std::string& topic);

    EventLoop loop_;
    Timers timers_;
    BoardInstant now_;
    HostdGateway board_;
    SteadyGateway gateway_;
    ScriptedBroker broker_;
    std::unique_ptr<Agent> agent_;
    std::unique_ptr<ScriptedController> controller_;
    Json arrivals_ = Json::array();
};

/// Serves commands, one JSON object a line, until the input ends. Answers a line each. Returns the exit status.
[[nodiscard]] int perform(const Config& config, std::uint64_t seed, std::int64_t start);

}  // namespace quorvel::agent
