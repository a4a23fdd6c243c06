#include "agent/core/Configuration.h"

#include <algorithm>

#include "agent/model/OwnRules.h"

namespace quorvel::agent {
namespace {

std::string filled(std::string topic, const std::string& endpointId) {
    constexpr std::string_view kPlace = "{endpoint}";
    for (std::size_t at = topic.find(kPlace); at != std::string::npos; at = topic.find(kPlace, at + endpointId.size()))
        topic.replace(at, kPlace.size(), endpointId);
    return topic;
}

std::string findRow(const Store& store, const std::string& table, const std::string& parameter,
                    const std::string& value) {
    for (const std::string& row : store.rows(table)) {
        if (store.value(row, parameter) == value) return row;
    }
    return "";
}

std::string addRow(Store& store, const std::string& table) {
    const std::string row = store.add(table);
    const std::string number = row.substr(table.size(), row.size() - table.size() - 1);
    store.set(row, "Alias", "cpe-" + number);
    return row;
}

void setFlag(Store& store, const std::string& object, const char* name, bool value) {
    store.set(object, name, value ? "true" : "false");
}

void applyClient(const MqttClientConfig& client, const std::string& endpointId, Store& store) {
    std::string row = findRow(store, kMqttClients, "Name", client.name);
    if (row.empty()) row = addRow(store, kMqttClients);
    store.set(row, "Name", client.name);
    store.set(row, "ProtocolVersion", client.protocolVersion);
    store.set(row, "BrokerAddress", client.address);
    store.set(row, "BrokerPort", std::to_string(client.port));
    store.set(row, "TransportProtocol", client.tls ? "TLS" : "TCP/IP");
    store.set(row, "KeepAliveTime", std::to_string(client.keepAlive));
    // An ID that a broker has assigned is kept.
    if (!client.clientId.empty()) store.set(row, "ClientID", client.clientId);
    store.set(row, "Username", client.username);
    store.set(row, "Password", client.password);
    store.set(row, "Enable", "true");
    std::string mtp;
    for (const std::string& each : store.rows(kAgentMtps)) {
        if (store.value(each + "MQTT.", "Reference") == referenceTo(row)) mtp = each;
    }
    if (mtp.empty()) mtp = addRow(store, kAgentMtps);
    store.set(mtp, "Protocol", "MQTT");
    store.set(mtp + "MQTT.", "Reference", referenceTo(row));
    store.set(mtp + "MQTT.", "ResponseTopicConfigured", filled(client.topic, endpointId));
    store.set(mtp + "MQTT.", "PublishQoS", std::to_string(client.qos));
    store.set(mtp, "Enable", "true");
}

void applyServer(const WebSocketServerConfig& server, Store& store) {
    std::string row = findRow(store, kAgentMtps, "Alias", server.name);
    if (row.empty()) row = addRow(store, kAgentMtps);
    store.set(row, "Alias", server.name);
    store.set(row, "Protocol", "WebSocket");
    store.set(row + "WebSocket.", "Interfaces", server.address);
    store.set(row + "WebSocket.", "Port", std::to_string(server.port));
    store.set(row + "WebSocket.", "Path", server.path);
    setFlag(store, row + "WebSocket.", "EnableEncryption", server.tls);
    store.set(row + "WebSocket.", "KeepAliveInterval", std::to_string(server.keepAlive));
    store.set(row, "Enable", "true");
}

// A controller has one row for each protocol; a second broker serves it without a row of its own.
void applyWay(const ControllerMtpConfig& way, const std::string& controller, const std::string& endpointId,
              Store& store, std::vector<std::string>& done) {
    const std::string protocol = way.kind == ControllerMtpConfig::Kind::kMqtt ? "MQTT" : "WebSocket";
    if (std::find(done.begin(), done.end(), protocol) != done.end()) return;
    done.push_back(protocol);
    std::string row = findRow(store, controller + "MTP.", "Protocol", protocol);
    if (row.empty()) row = addRow(store, controller + "MTP.");
    store.set(row, "Protocol", protocol);
    store.set(row, "Order", std::to_string(done.size()));
    if (way.kind == ControllerMtpConfig::Kind::kMqtt) {
        const std::string client = referenceTo(findRow(store, kMqttClients, "Name", way.client));
        store.set(row + "MQTT.", "Topic", filled(way.topic, endpointId));
        for (const std::string& mtp : store.rows(kAgentMtps)) {
            if (store.value(mtp + "MQTT.", "Reference") != client) continue;
            store.set(row + "MQTT.", "AgentMTPReference", referenceTo(mtp));
        }
    } else {
        store.set(row + "WebSocket.", "Host", way.host);
        store.set(row + "WebSocket.", "Port", std::to_string(way.port));
        store.set(row + "WebSocket.", "Path", way.path);
        setFlag(store, row + "WebSocket.", "EnableEncryption", way.tls);
        store.set(row + "WebSocket.", "KeepAliveInterval", std::to_string(way.keepAlive));
    }
    store.set(row, "Enable", "true");
}

}  // namespace

std::string endpointIdOf(const Config& config) {
    return config.endpointId.empty() ? "os::" + config.device.oui + "-" + config.device.serial : config.endpointId;
}

void applyConfiguration(const Config& config, const std::string& endpointId, Store& store) {
    for (const MqttClientConfig& client : config.mqttClients)
        applyClient(client, endpointId, store);
    for (const WebSocketServerConfig& server : config.webSocketServers)
        applyServer(server, store);
    for (const ControllerConfig& controller : config.controllers) {
        std::string row = findRow(store, kControllers, "EndpointID", controller.endpointId);
        if (row.empty()) row = addRow(store, kControllers);
        store.set(row, "EndpointID", controller.endpointId);
        setFlag(store, row, "Enable", controller.enable);
        std::vector<std::string> done;
        for (const ControllerMtpConfig& way : controller.mtps)
            applyWay(way, row, endpointId, store, done);
    }
}

}  // namespace quorvel::agent
