#include "agent/mtp/MqttChannel.h"

#include <array>
#include <utility>

namespace quorvel::agent {
namespace {

const char* clientStatus(MqttState state) {
    switch (state) {
        case MqttState::kDisabled:
            return "Disabled";
        case MqttState::kConnecting:
            return "Connecting";
        case MqttState::kConnected:
            return "Connected";
        case MqttState::kMisconfigured:
            return "Error_Misconfigured";
        case MqttState::kUnreachable:
            return "Error_BrokerUnreachable";
    }
    return "";
}

const char* mtpStatus(MqttState state) {
    switch (state) {
        case MqttState::kDisabled:
        case MqttState::kConnecting:
            return "Down";
        case MqttState::kConnected:
            return "Up";
        case MqttState::kMisconfigured:
        case MqttState::kUnreachable:
            return "Error";
    }
    return "";
}

bool isUspContent(const std::string& type) {
    return type.empty() || type == "usp.msg" || type == "application/vnd.bbf.usp.msg";
}

}  // namespace

MqttChannel::MqttChannel(EventLoop& loop, MqttAttempt::Order order, MtpListener& listener,
                         std::function<std::uint64_t()> nextChannel)
    : listener_(listener),
      nextChannel_(std::move(nextChannel)),
      link_(std::make_unique<MqttLink>(loop, std::move(order), *this)) {}

void MqttChannel::start() {
    link_->start();
    mqttChanged();
}

void MqttChannel::stop() {
    link_->stop();
    if (id_ != 0) listener_.onLost(std::exchange(id_, 0), "the agent ended the connection");
    mqttChanged();
}

bool MqttChannel::adopt(const MqttSettings& settings) {
    MqttSettings same = link_->settings();
    same.subscriptions = settings.subscriptions;
    same.responseTopicConfigured = settings.responseTopicConfigured;
    same.publishQos = settings.publishQos;
    // The broker's choice of a client ID comes back as a setting, or is not one yet.
    if (settings.clientId.empty()) same.clientId.clear();
    if (!(same == settings)) return false;
    link_->change(settings);
    mqttChanged();
    return true;
}

void MqttChannel::restart(const std::string& reason) {
    link_->restart(reason);
}

void MqttChannel::mqttReady(const std::string& replyTopic, const std::string& responseInformation) {
    const MqttSettings& settings = link_->settings();
    id_ = nextChannel_();
    tell(settings.clientRow, "ResponseInformation", responseInformation);
    tell(settings.mtpRow + "MQTT.", "ResponseTopicDiscovered", responseInformation);
    mqttChanged();
    Channel channel;
    channel.protocol = Protocol::kMqtt;
    channel.id = id_;
    channel.mtp = settings.mtpRow;
    channel.peer = settings.address + ":" + std::to_string(settings.port);
    channel.replyTopic = replyTopic;
    channel.mqttVersion = speaksVersion5(settings) ? "5.0" : "3.1.1";
    listener_.onConnected(channel);
}

void MqttChannel::mqttLost(const std::string& reason) {
    if (id_ != 0) listener_.onLost(std::exchange(id_, 0), reason);
}

Source MqttChannel::sourceOf(const MqttMessage& message) const {
    return {id_, message.topic, message.replyTopic};
}

void MqttChannel::mqttReceived(MqttMessage message) {
    const Source source = sourceOf(message);
    if (!isUspContent(message.contentType)) {
        listener_.onDropped(message.payload.size(), source, "the Content Type is " + message.contentType);
        return;
    }
    if (message.payload.size() > kMaxRecord) {
        listener_.onDropped(message.payload.size(), source, "the Record is larger than 4 MiB");
        return;
    }
    (void)listener_.onRecord(message.payload, source);  // a wrong Record has no consequence over MQTT
}

void MqttChannel::mqttAssigned(const std::string& clientId) {
    tell(link_->settings().clientRow, "ClientID", clientId);
}

void MqttChannel::mqttChanged() {
    const MqttSettings settings = link_->settings();
    const MqttState state = link_->state();
    tell(settings.clientRow, "Status", clientStatus(state));
    tell(settings.mtpRow, "Status", mtpStatus(state));
    for (const MqttSubscriptionSettings& row : settings.subscriptions) {
        const char* status = "Unsubscribed";
        if (link_->isSubscribed(row.topic)) status = "Subscribed";
        if (link_->wasRefused(row.topic)) status = "Error";
        tell(row.row, "Status", status);
    }
}

void MqttChannel::tell(const std::string& object, const std::string& parameter, const std::string& value) {
    std::string& last = said_[{object, parameter}];
    if (last == value) return;
    last = value;
    listener_.onStatus(object, parameter, value);
}

}  // namespace quorvel::agent
