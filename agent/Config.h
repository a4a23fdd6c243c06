#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvel::agent {

/// A broker that the agent connects to: one row each of Device.MQTT.Client. and Device.LocalAgent.MTP.
struct MqttClientConfig {
    std::string name;  ///< key of the row; must differ from the others'
    std::string address;
    std::uint16_t port = 1883;
    bool tls = false;
    std::string protocolVersion = "5.0";  ///< or "3.1.1"
    std::string clientId;                 ///< may be empty: the broker assigns one
    std::string username;
    std::string password;
    std::string topic = "/usp/endpoint";  ///< ResponseTopicConfigured; {endpoint} is replaced by the agent's ID
    std::uint16_t keepAlive = 60;
    std::uint8_t qos = 0;
};

/// A place where the agent accepts controllers over WebSocket: a row of Device.LocalAgent.MTP.
struct WebSocketServerConfig {
    std::string name;  ///< Alias of the row
    std::string address =
        "127.0.0.1";  ///< an address that is not loopback needs tls, and clients that prove themselves
    std::uint16_t port = 8443;
    std::string path = "/usp";
    bool tls = false;
    std::uint32_t keepAlive = 60;
};

/// One way to a controller: a row of its MTP table.
struct ControllerMtpConfig {
    enum class Kind : std::uint8_t { kMqtt, kWebSocket };
    Kind kind = Kind::kMqtt;
    // MQTT:
    std::string client;                     ///< name of the MqttClientConfig
    std::string topic = "/usp/controller";  ///< where the controller listens; {endpoint} is replaced by the agent's ID
    // WebSocket, when the agent connects; a controller that connects to us needs no row:
    std::string host;
    std::uint16_t port = 8443;
    std::string path;
    bool tls = false;
    std::uint32_t keepAlive = 60;
};

struct ControllerConfig {
    std::string endpointId = "proto::interop-usp-controller";
    bool enable = true;
    std::vector<ControllerMtpConfig> mtps;
};

/// Files and secrets of TLS, for every transport.
struct TlsConfig {
    std::string authorities;        ///< PEM file with the trusted authorities; empty: the system's
    std::string certificate;        ///< PEM file with the agent's own certificate, for wss-listen and mutual TLS
    std::string key;                ///< PEM file with its key
    std::string clientAuthorities;  ///< PEM file: who signs the certificates of controllers that connect to wss-listen
    std::string bearerToken;        ///< secret that such controllers may show instead
};

/// The values of Device.DeviceInfo.
struct DeviceFacts {
    std::string manufacturer = "Quorvel";
    std::string oui;  ///< six upper-case hexadecimal digits
    std::string productClass = "Simulated gateway";
    std::string serial;
    std::string modelName;
    std::string hardwareVersion = "simulated";
    std::string softwareVersion;
};

/// Everything that can be configured from outside. What a controller has changed since lives in the saved state, which
/// yields to the configuration in the rows that the configuration names.
struct Config {
    std::string endpointId;  ///< empty: os::<OUI>-<serial>
    DeviceFacts device;
    std::string stateFolder;  ///< of the board; empty: nothing is kept
    std::vector<MqttClientConfig> mqttClients;
    std::vector<WebSocketServerConfig> webSocketServers;
    std::vector<ControllerConfig> controllers;
    TlsConfig tls;
};

}  // namespace quorvel::agent
