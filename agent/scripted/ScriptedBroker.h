#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "agent/Timers.h"
#include "agent/mtp/BackOff.h"
#include "agent/mtp/Mtp.h"

namespace quorvel::agent {

/// An MQTT broker without a socket, for an agent whose every wait runs on board time: it goes away, comes back and can
/// be slow when it is asked to. Records arrive in order, each when the timers reach its time.
class ScriptedBroker final : public Transports {
  public:
    /// Takes a Record that the agent has published, and its topic.
    using Subscriber = std::function<void(const std::string& record, const std::string& topic)>;

    /// `timers` carry everything that happens, `now` tells their time, `seed` starts the draws of the waits between
    /// attempts to connect.
    ScriptedBroker(Timers& timers, std::function<BoardInstant()> now, std::uint64_t seed);

    /// Sets the agent. Call it before the agent is started.
    void listen(MtpListener& listener) {
        listener_ = &listener;
    }
    /// Sets the receiver of everything that the agent publishes.
    void subscribe(Subscriber subscriber) {
        subscriber_ = std::move(subscriber);
    }

    /// Takes the broker away: connections end, Records that are on their way are lost.
    void goDown();
    /// Has it take connections again. The agent notices at its next attempt.
    void comeUp();
    /// Delays every Record, in both directions, from now on.
    void setDelay(std::chrono::milliseconds delay) {
        delay_ = delay;
    }
    [[nodiscard]] bool isUp() const {
        return up_;
    }

    /// Publishes a Record on a topic, with the topic for the answer. Returns false when the broker is away. A Record
    /// that nobody is subscribed to is lost without a word, as with any broker.
    [[nodiscard]] bool publish(const std::string& record, const std::string& topic, const std::string& replyTopic);

    void configure(const MtpSettings& settings) override;
    [[nodiscard]] bool send(std::string record, const Destination& destination) override;
    void closeChannel(std::uint64_t channel, const std::string& reason) override;
    void resetRetries(const std::string& /*row*/) override {}  // of WebSocket clients
    void stop(const std::string& reason) override;

  private:
    struct Link {
        MqttSettings settings;
        BackOff backOff;
        std::uint64_t channel = 0;  // 0: not connected
        Timers::Id attempt = 0;
    };

    void apply(const MtpSettings& settings);
    void connect(const std::string& row);
    void lose(Link& link, const std::string& reason);
    void retryLater(Link& link);
    void tell(const Link& link);
    void remove(const std::string& row);

    Timers& timers_;
    std::function<BoardInstant()> now_;
    std::uint64_t seed_;
    MtpListener* listener_ = nullptr;
    Subscriber subscriber_;
    std::map<std::string, Link> links_;  // by row of the MTP
    std::uint64_t lastChannel_ = 0;
    std::uint64_t life_ = 0;  // of the broker
    bool up_ = true;
    std::chrono::milliseconds delay_{0};
};

}  // namespace quorvel::agent
