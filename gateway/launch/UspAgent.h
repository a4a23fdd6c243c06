#pragma once

// The USP agent of a board that stays up: a program of its own, which this one only starts.

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "common/Descriptor.h"
#include "gateway/launch/Gateway.h"

namespace quorvel::launch {

/// The places and names with which an agent is started. The agent's program reads the values.
struct UspOptions {
    std::vector<std::string> urls;
    std::string endpoint;
    std::string controller;
    std::string topic;
    std::string controllerTopic;
    std::string configFile;
    std::string passwordFile;

    /// Tells whether an agent is wanted.
    [[nodiscard]] bool any() const {
        return !urls.empty() || !configFile.empty();
    }
    /// Returns the first option that makes no sense without a place to meet a controller, or the empty text.
    [[nodiscard]] std::string firstIdle() const;
};

/// Has the agent's program check the options. Returns its warnings, one a line. Throws GatewayError when they cannot be
/// used, or when this build has no agent.
[[nodiscard]] std::string checkUsp(const Options& options, const UspOptions& usp);

/// Starts the agent for the board that is up. It ends with the board. Returns its Endpoint ID. Throws GatewayError.
/// The password of its brokers may be in the variable QUORVEL_USP_PASSWORD.
[[nodiscard]] std::string startUsp(const Options& options, const UspOptions& usp);

/// Runs the agent's program with these words and waits for it; its output goes where this program's goes. Returns its
/// exit status. Throws GatewayError when this build has no agent.
[[nodiscard]] int runUspProgram(const Options& options, const std::vector<std::string>& words);

/// Waits until the agent of a board that is down has ended, but no longer than `milliseconds`.
void awaitUspEnd(const std::string& stateFolder, int milliseconds);

/// The agent with a scripted broker and controller, for a board that takes clients. It does what it is asked to and
/// nothing else, and ends with this object.
class UspScript {
  public:
    /// Starts it. `seed` decides what varies by chance; `start` is the caller's clock, in milliseconds. Throws
    /// GatewayError, also when this build has no agent.
    UspScript(const Options& options, std::uint64_t seed, std::int64_t start);
    UspScript(const UspScript&) = delete;
    UspScript& operator=(const UspScript&) = delete;
    ~UspScript();

    /// Does a command (agent/scripted/Performance.h lists them) and returns the answer. Throws GatewayError when the
    /// program is gone or silent.
    [[nodiscard]] nlohmann::ordered_json ask(const nlohmann::ordered_json& command);

  private:
    [[nodiscard]] nlohmann::ordered_json answer();

    common::Descriptor socket_;
    pid_t process_ = -1;
    std::string received_;
};

}  // namespace quorvel::launch
