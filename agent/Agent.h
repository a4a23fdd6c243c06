#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "agent/Config.h"
#include "agent/Gateway.h"
#include "agent/Trace.h"
#include "agent/mtp/Mtp.h"

namespace quorvel::agent {

class AgentCore;

/// A USP agent: Records in, Records out. Runs in one thread, never blocks, knows no socket.
class Agent final : public MtpListener {
  public:
    /// The agent's needs besides the gateway and the transports.
    struct Surroundings {
        /// Returns a random number from 0 to below 1, for back-off. The standard library's when empty.
        std::function<double()> random;
        /// Takes each Record that was sent, received or dropped.
        std::function<void(const TraceEntry&)> trace;
        /// Takes a line for the agent's log.
        std::function<void(const std::string&)> log;
    };

    /// `gateway` and `transports` must outlive the agent.
    Agent(Config config, Gateway& gateway, Transports& transports, Surroundings surroundings);
    ~Agent() override;

    /// Reads the saved state, lays the configuration over it, configures the transports and announces Boot!. Call it
    /// when the gateway is ready. Throws std::runtime_error, in words for people, when the saved state cannot be used.
    void start();

    /// Says goodbye to the peers (Disconnect Record) and stops the transports.
    void stop(const std::string& reason);

    // From the transports.
    void onConnected(const Channel& channel) override;
    void onLost(std::uint64_t channel, const std::string& reason) override;
    [[nodiscard]] bool onRecord(std::string_view bytes, const Source& source) override;
    void onDropped(std::size_t size, const Source& source, const std::string& reason) override;
    void onStatus(const std::string& object, const std::string& parameter, const std::string& value) override;

    /// Does everything that is due at this board time: retries, expirations, Periodic!, timers. Call it whenever
    /// board time has moved; time that goes back is ignored.
    void tick(BoardInstant now);

    /// Returns the board time of the next thing to do, or nothing.
    [[nodiscard]] std::optional<BoardInstant> nextDue() const;

    /// Returns MTPs, sessions, controllers, subscriptions and counters as one JSON object, for `usp status`.
    [[nodiscard]] nlohmann::ordered_json status() const;

    /// Returns the agent's Endpoint ID.
    [[nodiscard]] const std::string& endpointId() const;

  private:
    std::unique_ptr<AgentCore> core_;
};

}  // namespace quorvel::agent
