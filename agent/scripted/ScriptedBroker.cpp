#include "agent/scripted/ScriptedBroker.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quorvel::agent {
namespace {

bool isSubscribed(const MqttSettings& settings, const std::string& topic) {
    return settings.responseTopicConfigured == topic ||
           std::any_of(settings.subscriptions.begin(), settings.subscriptions.end(),
                       [&topic](const MqttSubscriptionSettings& row) { return row.topic == topic; });
}

// Tells whether a change needs no new connection.
bool keepsConnection(const MqttSettings& before, MqttSettings after) {
    after.subscriptions = before.subscriptions;
    after.responseTopicConfigured = before.responseTopicConfigured;
    after.publishQos = before.publishQos;
    return after == before;
}

}  // namespace

ScriptedBroker::ScriptedBroker(Timers& timers, std::function<BoardInstant()> now, std::uint64_t seed)
    : timers_(timers), now_(std::move(now)), seed_(seed) {}

void ScriptedBroker::goDown() {
    up_ = false;
    ++life_;
    for (auto& [row, link] : links_) {
        lose(link, "the connection to the broker ended");
        retryLater(link);
    }
}

void ScriptedBroker::comeUp() {
    up_ = true;
}

bool ScriptedBroker::publish(const std::string& record, const std::string& topic, const std::string& replyTopic) {
    if (!up_) return false;
    (void)timers_.at(now_() + delay_, [this, record, topic, replyTopic, life = life_] {
        if (life != life_) return;
        std::vector<std::uint64_t> channels;
        for (const auto& [row, link] : links_) {
            if (link.channel != 0 && isSubscribed(link.settings, topic)) channels.push_back(link.channel);
        }
        for (const std::uint64_t channel : channels)
            (void)listener_->onRecord(record, {channel, topic, replyTopic});  // a wrong one has no consequence
    });
    return true;
}

bool ScriptedBroker::send(std::string record, const Destination& destination) {
    const bool open =
        destination.channel != 0 && std::any_of(links_.begin(), links_.end(), [&destination](const auto& each) {
            return each.second.channel == destination.channel;
        });
    if (!open) return false;
    (void)timers_.at(now_() + delay_, [this, record = std::move(record), topic = destination.topic, life = life_] {
        if (life == life_ && subscriber_) subscriber_(record, topic);
    });
    return true;
}

// The agent calls from within its own work: whatever follows for it happens later.
void ScriptedBroker::configure(const MtpSettings& settings) {
    (void)timers_.at(now_(), [this, settings] { apply(settings); });
}

void ScriptedBroker::apply(const MtpSettings& settings) {
    std::vector<std::string> gone;
    for (auto& [row, link] : links_) {
        const auto wanted = std::find_if(settings.mqtt.begin(), settings.mqtt.end(),
                                         [&row = row](const MqttSettings& one) { return one.mtpRow == row; });
        if (wanted == settings.mqtt.end() || !keepsConnection(link.settings, *wanted)) {
            gone.push_back(row);
        } else {
            link.settings = *wanted;
        }
    }
    for (const std::string& row : gone)
        remove(row);
    for (const MqttSettings& wanted : settings.mqtt) {
        if (links_.contains(wanted.mtpRow)) continue;
        links_.emplace(wanted.mtpRow, Link{wanted, BackOff(wanted.retryTime, wanted.retryMultiplier,
                                                           wanted.retryMaxInterval, ++seed_)});
        connect(wanted.mtpRow);
    }
}

void ScriptedBroker::connect(const std::string& row) {
    const auto found = links_.find(row);
    if (found == links_.end()) return;
    Link& link = found->second;
    link.attempt = 0;
    if (!up_) return retryLater(link);
    link.backOff.reset();
    link.channel = ++lastChannel_;
    tell(link);
    Channel channel;
    channel.protocol = Protocol::kMqtt;
    channel.id = link.channel;
    channel.mtp = row;
    channel.peer = "scripted broker";
    channel.replyTopic = link.settings.responseTopicConfigured;
    channel.mqttVersion = "5.0";
    listener_->onConnected(channel);
}

void ScriptedBroker::lose(Link& link, const std::string& reason) {
    const std::uint64_t channel = std::exchange(link.channel, 0);
    if (channel != 0) listener_->onLost(channel, reason);
}

void ScriptedBroker::retryLater(Link& link) {
    tell(link);
    if (link.attempt != 0) return;
    link.attempt = timers_.at(now_() + link.backOff.next(), [this, row = link.settings.mtpRow] { connect(row); });
}

void ScriptedBroker::tell(const Link& link) {
    const bool connected = link.channel != 0;
    listener_->onStatus(link.settings.clientRow, "Status", connected ? "Connected" : "Error_BrokerUnreachable");
    listener_->onStatus(link.settings.mtpRow, "Status", connected ? "Up" : "Error");
}

void ScriptedBroker::remove(const std::string& row) {
    const auto found = links_.find(row);
    if (found == links_.end()) return;
    timers_.cancel(found->second.attempt);
    lose(found->second, "the agent ended the connection");
    listener_->onStatus(found->second.settings.clientRow, "Status", "Disabled");
    listener_->onStatus(row, "Status", "Down");
    links_.erase(found);
}

// A client connects again at once: the broker is not to blame.
void ScriptedBroker::closeChannel(std::uint64_t channel, const std::string& reason) {
    (void)timers_.at(now_(), [this, channel, reason] {
        for (auto& [row, link] : links_) {
            if (link.channel != channel || channel == 0) continue;
            lose(link, reason);
            return connect(row);
        }
    });
}

void ScriptedBroker::stop(const std::string& /*reason*/) {
    ++life_;
    while (!links_.empty())
        remove(std::string(links_.begin()->first));
}

}  // namespace quorvel::agent
