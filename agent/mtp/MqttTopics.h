#pragma once

// Which topics a client subscribes to, where it is answered, and how MQTT 3.1.1 carries a reply topic.

#include <string>
#include <vector>

#include "agent/mtp/Mtp.h"

namespace quorvel::agent {

/// The broker's answer when it accepted the connection.
struct BrokerWishes {
    std::string responseInformation;
    std::vector<std::string> subscribeTopics;
};

/// One subscription: the topic that asked for it, and the filter that goes to the broker.
struct PlannedTopic {
    std::string topic;
    std::string filter;
    std::uint8_t qos = 0;
};

/// The subscriptions of one connection and the topic where answers are expected.
struct TopicPlan {
    std::vector<PlannedTopic> topics;  ///< empty: the connection is of no use
    std::string replyTopic;            ///< empty: there is none
};

/// Tells whether the client speaks MQTT 5; it speaks 3.1.1 otherwise.
[[nodiscard]] bool speaksVersion5(const MqttSettings& settings);

/// Returns the subscriptions that settings and broker ask for, each filter once.
[[nodiscard]] TopicPlan planTopics(const MqttSettings& settings, const BrokerWishes& broker);

/// Returns `topic` with `replyTopic` put into it, as MQTT 3.1.1 needs it.
[[nodiscard]] std::string withReplyTopic(const std::string& topic, const std::string& replyTopic);

/// Returns the reply topic in a received topic, or the empty text.
[[nodiscard]] std::string replyTopicIn(const std::string& topic);

}  // namespace quorvel::agent
