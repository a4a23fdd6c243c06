#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::agent {

enum class Protocol : std::uint8_t { kMqtt, kWebSocket };

/// One way on which Records come and go: a broker connection, or one WebSocket session.
struct Channel {
    Protocol protocol = Protocol::kMqtt;
    std::uint64_t id = 0;     ///< never used twice in one process
    std::string mtp;          ///< row that it belongs to: "Device.LocalAgent.MTP.1.", or of a controller's MTP table
    std::string peer;         ///< for people: "127.0.0.1:1883"
    std::string endpointId;   ///< of the WebSocket peer when it has named itself, else empty
    std::string replyTopic;   ///< MQTT: the agent's own reply topic, for the Connect Record
    std::string mqttVersion;  ///< "5.0" or "3.1.1"
};

/// Where a Record came from.
struct Source {
    std::uint64_t channel = 0;
    std::string topic;          ///< MQTT: on which it was published
    std::string responseTopic;  ///< MQTT: where the peer wants the answer; empty when it gave none
};

/// Where a Record goes. Over WebSocket, the channel says it all.
struct Destination {
    std::uint64_t channel = 0;
    std::string topic;  ///< MQTT: where to publish
};

/// Events that a transport reports to the agent. All calls come from the event loop's thread.
class MtpListener {
  public:
    MtpListener() = default;
    MtpListener(const MtpListener&) = delete;
    MtpListener& operator=(const MtpListener&) = delete;
    virtual ~MtpListener() = default;

    /// A channel is open and its subscriptions, if any, are confirmed: the agent sends its Connect Record now.
    virtual void onConnected(const Channel& channel) = 0;

    /// A channel is gone; `reason` says why in words for people.
    virtual void onLost(std::uint64_t channel, const std::string& reason) = 0;

    /// A Record has come. Returns false when it is not a USP Record, or carries nothing: a WebSocket session is then
    /// closed with 1003, by the transport.
    [[nodiscard]] virtual bool onRecord(std::string_view bytes, const Source& source) = 0;

    /// A payload was dropped by the transport (larger than kMaxRecord, wrong content type, a text frame).
    virtual void onDropped(std::size_t size, const Source& source, const std::string& reason) = 0;

    /// A read-only parameter of a transport's row has a new value, such as "Device.MQTT.Client.1.", "Status",
    /// "Connected"; the rows are those of the settings.
    virtual void onStatus(const std::string& object, const std::string& parameter, const std::string& value) = 0;
};

/// The largest Record; a transport drops larger ones without keeping them.
constexpr std::size_t kMaxRecord = 4U << 20U;

/// One row of Device.MQTT.Client.{i}.Subscription.
struct MqttSubscriptionSettings {
    std::string row;
    std::string topic;
    std::uint8_t qos = 0;
    friend bool operator==(const MqttSubscriptionSettings&, const MqttSubscriptionSettings&) = default;
};

/// An enabled MQTT client with an enabled MTP that refers to it.
struct MqttSettings {
    std::string mtpRow;     ///< "Device.LocalAgent.MTP.1."
    std::string clientRow;  ///< "Device.MQTT.Client.1."
    std::string protocolVersion;
    std::string address;
    std::uint16_t port = 1883;
    bool tls = false;
    bool cleanSession = true;
    bool cleanStart = true;
    std::uint32_t keepAlive = 60;
    std::string clientId;
    std::string username;
    std::string password;
    std::uint32_t retryTime = 5;           ///< s
    std::uint32_t retryMultiplier = 2000;  ///< per mille
    std::uint32_t retryMaxInterval = 30720;
    std::uint32_t messageRetryTime = 5;
    std::vector<MqttSubscriptionSettings> subscriptions;  ///< the enabled ones
    std::string responseTopicConfigured;
    std::uint8_t publishQos = 0;
    friend bool operator==(const MqttSettings&, const MqttSettings&) = default;
};

/// An enabled MTP that accepts controllers over WebSocket.
struct WebSocketServerSettings {
    std::string mtpRow;
    std::string address;
    std::uint16_t port = 8443;
    std::string path;
    bool tls = true;
    std::uint32_t keepAlive = 60;
    friend bool operator==(const WebSocketServerSettings&, const WebSocketServerSettings&) = default;
};

/// An enabled controller that the agent connects to over WebSocket.
struct WebSocketClientSettings {
    std::string row;         ///< "Device.LocalAgent.Controller.1.MTP.1.WebSocket."
    std::string controller;  ///< its Endpoint ID
    std::string host;
    std::uint16_t port = 8443;
    std::string path;
    bool tls = true;
    std::uint32_t keepAlive = 60;
    std::uint32_t retryMinimumWait = 5;    ///< s
    std::uint32_t retryMultiplier = 2000;  ///< per mille
    friend bool operator==(const WebSocketClientSettings&, const WebSocketClientSettings&) = default;
};

/// The connections that the data model asks for at the moment.
struct MtpSettings {
    std::string endpointId;  ///< the agent's own
    std::vector<MqttSettings> mqtt;
    std::vector<WebSocketServerSettings> servers;
    std::vector<WebSocketClientSettings> clients;
    /// Endpoint IDs of the enabled controllers: a WebSocket server refuses peers that name another one.
    std::vector<std::string> controllers;
    friend bool operator==(const MtpSettings&, const MtpSettings&) = default;
};

/// All transports of the agent.
class Transports {
  public:
    Transports() = default;
    Transports(const Transports&) = delete;
    Transports& operator=(const Transports&) = delete;
    virtual ~Transports() = default;

    /// Starts, changes and stops transports until they are those of the settings. A transport whose settings are as
    /// before keeps its connection; a change that needs none (a subscription, a topic, the QoS) is made without a new
    /// one. Called again whenever a controller changes a row.
    virtual void configure(const MtpSettings& settings) = 0;

    /// Hands over a Record; returns at once. False when the channel is gone or holds too much that its peer has not
    /// read yet.
    [[nodiscard]] virtual bool send(std::string record, const Destination& destination) = 0;

    /// Closes a channel after what was sent on it. A client connects again with its back-off.
    virtual void closeChannel(std::uint64_t channel, const std::string& reason) = 0;

    /// Resets the retry count of a WebSocket client and connects at once (Controller.{i}.MTP.{i}.WebSocket.Reset()).
    virtual void resetRetries(const std::string& row) = 0;

    /// Sends what is under way and closes everything.
    virtual void stop(const std::string& reason) = 0;
};

}  // namespace quorvel::agent
