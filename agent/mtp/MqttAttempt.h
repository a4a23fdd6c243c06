#pragma once

// One attempt to reach a broker. Looking a name up and opening a connection block, so each attempt runs in a thread of
// its own; the client it opens is then served by the agent's only thread.

#include <atomic>
#include <memory>
#include <string>

#include "agent/Config.h"
#include "agent/mtp/Mtp.h"

struct mosquitto;

namespace quorvel::agent {

/// Ends a client of the MQTT library.
struct MqttClientEnd {
    void operator()(mosquitto* client) const;
};
using MqttClient = std::unique_ptr<mosquitto, MqttClientEnd>;

class MqttAttempt {
  public:
    /// Everything that a connection needs to know.
    struct Order {
        MqttSettings settings;
        TlsConfig tls;
        std::string endpointId;  ///< the agent's
    };

    /// Starts the attempt.
    [[nodiscard]] static std::shared_ptr<MqttAttempt> start(const Order& order);

    MqttAttempt(const MqttAttempt&) = delete;
    MqttAttempt& operator=(const MqttAttempt&) = delete;
    ~MqttAttempt();

    /// Returns the descriptor that becomes readable when the attempt has ended.
    [[nodiscard]] int descriptor() const {
        return ended_;
    }

    /// Returns the open client after the end, or null and the reason in `trouble`.
    [[nodiscard]] MqttClient take(std::string& trouble);

  private:
    MqttAttempt();
    void run(const Order& order);

    int ended_ = -1;
    std::atomic<bool> done_ = false;  // the members below belong to the thread before, to take() afterwards
    MqttClient client_;
    std::string trouble_;
};

}  // namespace quorvel::agent
