#include "agent/mtp/MqttTopics.h"

#include <mosquitto.h>

#include <algorithm>
#include <string_view>

namespace quorvel::agent {
namespace {

constexpr std::string_view kReplyMark = "/reply-to=";
constexpr std::string_view kEncodedSlash = "%2F";

bool covers(const std::string& filter, const std::string& topic) {
    if (filter == topic) return true;
    bool matches = false;
    return mosquitto_topic_matches_sub(filter.c_str(), topic.c_str(), &matches) == MOSQ_ERR_SUCCESS && matches;
}

void addUnlessCovered(std::vector<PlannedTopic>& topics, const std::string& topic, std::uint8_t qos) {
    if (topic.empty()) return;
    const bool covered = std::any_of(topics.begin(), topics.end(),
                                     [&topic](const PlannedTopic& other) { return covers(other.filter, topic); });
    if (!covered) topics.push_back({topic, topic, qos});
}

bool isPlain(const PlannedTopic& topic) {
    return topic.filter.find_first_of("+#") == std::string::npos;
}

}  // namespace

bool speaksVersion5(const MqttSettings& settings) {
    return settings.protocolVersion != "3.1.1";
}

TopicPlan planTopics(const MqttSettings& settings, const BrokerWishes& broker) {
    TopicPlan plan;
    // A row may overlap another one: each has a status of its own and is subscribed to.
    for (const MqttSubscriptionSettings& row : settings.subscriptions) {
        const bool known = std::any_of(plan.topics.begin(), plan.topics.end(),
                                       [&row](const PlannedTopic& other) { return other.topic == row.topic; });
        if (!known && !row.topic.empty()) plan.topics.push_back({row.topic, row.topic, row.qos});
    }
    for (const std::string& topic : broker.subscribeTopics)
        addUnlessCovered(plan.topics, topic, settings.publishQos);
    const std::string& own =
        broker.responseInformation.empty() ? settings.responseTopicConfigured : broker.responseInformation;
    addUnlessCovered(plan.topics, own, settings.publishQos);

    const auto plain = std::find_if(plan.topics.begin(), plan.topics.end(), isPlain);
    plan.replyTopic = own.empty() && plain != plan.topics.end() ? plain->topic : own;
    // Senders that speak 3.1.1 append their reply topic to ours; both filters would bring a message twice.
    if (!speaksVersion5(settings)) {
        for (PlannedTopic& topic : plan.topics) {
            if (topic.topic == plan.replyTopic) topic.filter += "/#";
        }
    }
    return plan;
}

std::string withReplyTopic(const std::string& topic, const std::string& replyTopic) {
    if (replyTopic.empty()) return topic;
    std::string text = topic;
    text += kReplyMark;
    for (const char letter : replyTopic) {
        if (letter == '/') {
            text += kEncodedSlash;
        } else {
            text += letter;
        }
    }
    return text;
}

std::string replyTopicIn(const std::string& topic) {
    const std::size_t mark = topic.rfind(kReplyMark);
    if (mark == std::string::npos) return "";
    std::string text;
    for (std::size_t at = mark + kReplyMark.size(); at < topic.size(); ++at) {
        const std::string_view three = std::string_view(topic).substr(at, kEncodedSlash.size());
        if (three == kEncodedSlash || three == "%2f") {
            text += '/';
            at += kEncodedSlash.size() - 1;
        } else {
            text += topic[at];
        }
    }
    return text;
}

}  // namespace quorvel::agent
