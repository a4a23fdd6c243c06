#pragma once

// One client of one MQTT broker: connects, subscribes, publishes, and connects again when the broker is lost.

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "agent/EventLoop.h"
#include "agent/mtp/BackOff.h"
#include "agent/mtp/MqttAttempt.h"
#include "agent/mtp/MqttTopics.h"

namespace quorvel::agent {

/// A message as it came from the broker.
struct MqttMessage {
    std::string topic;
    std::string replyTopic;   ///< empty: the sender named none
    std::string contentType;  ///< empty: none
    std::string payload;
};

enum class MqttState { kDisabled, kConnecting, kConnected, kMisconfigured, kUnreachable };

/// Hears what happens on a link. A call may stop or destroy the link.
class MqttListener {
  public:
    virtual ~MqttListener() = default;
    /// The link can send: `replyTopic` is where answers are expected.
    virtual void mqttReady(const std::string& replyTopic, const std::string& responseInformation) = 0;
    /// The link cannot send any more; `reason` is a sentence for the trace.
    virtual void mqttLost(const std::string& reason) = 0;
    virtual void mqttReceived(MqttMessage message) = 0;
    /// The broker assigned this client ID; it is to be used from now on.
    virtual void mqttAssigned(const std::string& clientId) = 0;
    /// The state or a subscription has changed.
    virtual void mqttChanged() = 0;
};

class MqttLink {
  public:
    /// `loop` and `listener` outlive the link. Nothing happens before start().
    MqttLink(EventLoop& loop, MqttAttempt::Order order, MqttListener& listener);
    MqttLink(const MqttLink&) = delete;
    MqttLink& operator=(const MqttLink&) = delete;
    ~MqttLink();

    void start();

    /// Ends the connection with DISCONNECT after everything that was sent before.
    void stop();

    /// Ends the connection and connects again at once.
    void restart(const std::string& reason);

    /// Publishes one record to `topic`. Returns false when the link is not ready or its queue is full.
    [[nodiscard]] bool send(const std::string& topic, std::string_view record);

    /// Takes over changed subscriptions, response topic and QoS without connecting again.
    void change(const MqttSettings& settings);

    [[nodiscard]] MqttState state() const {
        return state_;
    }
    [[nodiscard]] const MqttSettings& settings() const {
        return order_.settings;
    }
    [[nodiscard]] bool isReady() const {
        return ready_;
    }
    [[nodiscard]] const std::string& replyTopic() const {
        return plan_.replyTopic;
    }
    /// Tells whether the broker has granted the subscription to `topic`.
    [[nodiscard]] bool isSubscribed(const std::string& topic) const;
    [[nodiscard]] bool wasRefused(const std::string& topic) const;
    [[nodiscard]] const std::string& lastTrouble() const {
        return trouble_;
    }
    [[nodiscard]] int attempts() const {
        return backOff_.attempts();
    }

  private:
    struct Callbacks;
    enum class Grant { kAsked, kGranted, kRefused };

    void connectNow();
    void connectLater();
    void finishAttempt();
    void serve(short events);
    void afterCalls();
    void scheduleKeepAlive();
    void lose(const std::string& reason, MqttState state);
    void drop();
    void accept(const BrokerWishes& broker, const std::string& assignedId);
    void subscribe(const PlannedTopic& topic);
    void noteGrant(int message, bool granted);
    void noteSent(int message);
    void becomeReadyOrLeave();
    void leave();
    void enter(MqttState state);

    EventLoop& loop_;
    MqttAttempt::Order order_;
    bool version5_;
    MqttListener& listener_;
    BackOff backOff_;
    std::shared_ptr<MqttAttempt> attempt_;
    MqttClient client_;
    int descriptor_ = -1;
    bool wantsWrite_ = false;
    std::uint32_t keepAlive_ = 0;  ///< seconds, as agreed with the broker; 0: none
    bool ready_ = false;
    MqttState state_ = MqttState::kDisabled;
    std::string assignedId_;  // by the broker, not reported yet
    BrokerWishes broker_;
    TopicPlan plan_;
    std::map<int, std::string> asked_;     // SUBSCRIBE in flight: message number to topic
    std::map<std::string, Grant> grants_;  // by topic
    std::vector<MqttMessage> received_;
    std::map<int, std::size_t> unsent_;  // bytes by message number
    std::size_t unsentBytes_ = 0;
    int sentAtOnce_ = 0;   // the message that left while it was handed over
    std::string refusal_;  // why the broker or the library ended the connection, during a call
    bool grantsChanged_ = false;
    bool planFulfilled_ = false;  // every subscription was answered once
    std::string trouble_;
    EventLoop::TimerId timer_ = 0;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);  // false after destruction, for calls under way
};

}  // namespace quorvel::agent
