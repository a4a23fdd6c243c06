#pragma once

// One MQTT client of the data model as a channel of the agent.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "agent/mtp/MqttLink.h"
#include "agent/mtp/Mtp.h"

namespace quorvel::agent {

class MqttChannel final : public MqttListener {
  public:
    /// `loop`, `listener` and `nextChannel` outlive the channel. `nextChannel` numbers each connection.
    MqttChannel(EventLoop& loop, MqttAttempt::Order order, MtpListener& listener,
                std::function<std::uint64_t()> nextChannel);
    MqttChannel(const MqttChannel&) = delete;
    MqttChannel& operator=(const MqttChannel&) = delete;
    ~MqttChannel() override = default;

    void start();

    /// Ends the connection and reports the rows' last status.
    void stop();

    /// Takes over what needs no new connection. Returns false when the settings ask for a new one.
    [[nodiscard]] bool adopt(const MqttSettings& settings);

    [[nodiscard]] bool send(const std::string& topic, std::string_view record) {
        return link_->send(topic, record);
    }
    /// Returns the number of the open connection, or 0.
    [[nodiscard]] std::uint64_t id() const {
        return id_;
    }
    /// Ends the connection and connects again after a wait.
    void restart(const std::string& reason);

    void mqttReady(const std::string& replyTopic, const std::string& responseInformation) override;
    void mqttLost(const std::string& reason) override;
    void mqttReceived(MqttMessage message) override;
    void mqttAssigned(const std::string& clientId) override;
    void mqttChanged() override;

  private:
    void tell(const std::string& object, const std::string& parameter, const std::string& value);
    [[nodiscard]] Source sourceOf(const MqttMessage& message) const;

    MtpListener& listener_;
    std::function<std::uint64_t()> nextChannel_;
    std::unique_ptr<MqttLink> link_;
    std::uint64_t id_ = 0;
    std::map<std::pair<std::string, std::string>, std::string> said_;  // the last value of each status parameter
};

}  // namespace quorvel::agent
