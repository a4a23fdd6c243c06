#include "agent/mtp/TransportSet.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

namespace quorvel::agent {

TransportSet::TransportSet(EventLoop& loop, TlsConfig tls) : loop_(loop), tls_(std::move(tls)) {}

TransportSet::~TransportSet() {
    loop_.cancel(applying_);
}

void TransportSet::configure(const MtpSettings& settings) {
    wanted_ = settings;
    loop_.cancel(applying_);
    // The agent may be inside a call of the connection that shall go; its answer leaves first.
    applying_ = loop_.after(std::chrono::milliseconds(0), [this] { apply(); });
}

void TransportSet::apply() {
    configureMqtt();
    configureWebSocket();
}

void TransportSet::configureMqtt() {
    for (auto broker = brokers_.begin(); broker != brokers_.end();) {
        const auto same = std::find_if(wanted_.mqtt.begin(), wanted_.mqtt.end(),
                                       [&broker](const MqttSettings& other) { return other.mtpRow == broker->first; });
        if (same != wanted_.mqtt.end() && broker->second->adopt(*same)) {
            ++broker;
            continue;
        }
        broker->second->stop();
        broker = brokers_.erase(broker);
    }
    for (const MqttSettings& settings : wanted_.mqtt) {
        if (brokers_.contains(settings.mtpRow)) continue;
        auto channel = std::make_unique<MqttChannel>(loop_, MqttAttempt::Order{settings, tls_, wanted_.endpointId},
                                                     *listener_, [this] { return nextChannel(); });
        MqttChannel& started = *channel;
        brokers_.emplace(settings.mtpRow, std::move(channel));
        started.start();
    }
}

void TransportSet::configureWebSocket() {
    if (webSocket_ == nullptr && wanted_.servers.empty() && wanted_.clients.empty()) return;
    if (webSocket_ == nullptr)
        webSocket_ =
            std::make_unique<WebSocketService>(loop_, tls_, wanted_.endpointId, static_cast<WebSocketListener&>(*this));
    try {
        webSocket_->configure(wanted_);
    } catch (const std::exception& trouble) {
        for (const WebSocketServerSettings& place : wanted_.servers)
            webSocketListens(place.mtpRow, trouble.what());
        webSocket_.reset();
    }
}

bool TransportSet::send(std::string record, const Destination& destination) {
    for (const auto& [row, broker] : brokers_) {
        if (broker->id() == destination.channel && destination.channel != 0) {
            return broker->send(destination.topic, record);
        }
    }
    return webSocket_ != nullptr && webSocket_->send(destination.channel, record);
}

void TransportSet::closeChannel(std::uint64_t channel, const std::string& reason) {
    for (const auto& [row, broker] : brokers_) {
        if (broker->id() != channel || channel == 0) continue;
        // Not from within a call of this connection.
        loop_.post([this, row = row, channel, reason] {
            const auto found = brokers_.find(row);
            if (found != brokers_.end() && found->second->id() == channel) found->second->restart(reason);
        });
        return;
    }
    if (webSocket_ != nullptr) webSocket_->close(channel, CloseCode::kNormal, reason);
}

void TransportSet::resetRetries(const std::string& row) {
    if (webSocket_ != nullptr) webSocket_->resetRetries(row);
}

void TransportSet::stop(const std::string& reason) {
    loop_.cancel(applying_);
    for (const auto& [row, broker] : brokers_)
        broker->stop();
    brokers_.clear();
    if (webSocket_ != nullptr) webSocket_->stop(reason);
}

int TransportSet::portOf(const std::string& mtpRow) const {
    return webSocket_ == nullptr ? 0 : webSocket_->portOf(mtpRow);
}

std::uint64_t TransportSet::nextChannel() {
    return ++lastChannel_;
}

void TransportSet::webSocketOpened(const WebSocketSession& session) {
    Channel channel;
    channel.protocol = Protocol::kWebSocket;
    channel.id = session.id;
    channel.mtp = session.row;
    channel.peer = session.peer;
    channel.endpointId = session.endpointId;
    listener_->onConnected(channel);
}

void TransportSet::webSocketClosed(std::uint64_t session, const std::string& reason) {
    listener_->onLost(session, reason);
}

bool TransportSet::webSocketReceived(std::uint64_t session, std::string_view message) {
    return listener_->onRecord(message, {session, "", ""});
}

void TransportSet::webSocketDropped(std::uint64_t session, std::size_t size, const std::string& reason) {
    listener_->onDropped(size, {session, "", ""}, reason);
}

void TransportSet::webSocketListens(const std::string& row, const std::string& trouble) {
    listener_->onStatus(row, "Status", trouble.empty() ? "Up" : "Error");
}

void TransportSet::webSocketRetries(const std::string& row, int attempts, const std::string& /*trouble*/) {
    listener_->onStatus(row, "CurrentRetryCount", std::to_string(attempts));
}

}  // namespace quorvel::agent
