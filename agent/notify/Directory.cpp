#include "agent/notify/Directory.h"

#include <algorithm>

#include "agent/model/OwnRules.h"
#include "agent/model/Values.h"

namespace quorvel::agent {
namespace {

std::uint16_t portOf(const Store& store, const std::string& object, const char* parameter) {
    return static_cast<std::uint16_t>(store.number(object, parameter));
}

MqttSettings mqttSettings(const Store& store, const std::string& mtp, const std::string& client) {
    MqttSettings settings;
    settings.mtpRow = mtp;
    settings.clientRow = client;
    settings.protocolVersion = store.value(client, "ProtocolVersion");
    settings.address = store.value(client, "BrokerAddress");
    settings.port = portOf(store, client, "BrokerPort");
    settings.tls = store.value(client, "TransportProtocol") == "TLS";
    settings.cleanSession = store.flag(client, "CleanSession");
    settings.cleanStart = store.flag(client, "CleanStart");
    settings.keepAlive = store.number(client, "KeepAliveTime");
    settings.clientId = store.value(client, "ClientID");
    settings.username = store.value(client, "Username");
    settings.password = store.value(client, "Password");
    settings.retryTime = store.number(client, "ConnectRetryTime");
    settings.retryMultiplier = store.number(client, "ConnectRetryIntervalMultiplier");
    settings.retryMaxInterval = store.number(client, "ConnectRetryMaxInterval");
    settings.messageRetryTime = store.number(client, "MessageRetryTime");
    for (const std::string& row : store.rows(client + "Subscription.")) {
        if (!store.flag(row, "Enable")) continue;
        settings.subscriptions.push_back(
            {row, store.value(row, "Topic"), static_cast<std::uint8_t>(store.number(row, "QoS"))});
    }
    settings.responseTopicConfigured = store.value(mtp + "MQTT.", "ResponseTopicConfigured");
    settings.publishQos = static_cast<std::uint8_t>(store.number(mtp + "MQTT.", "PublishQoS"));
    return settings;
}

// The address of an interface is not in the model; Interfaces holds it, as nothing else names one here.
WebSocketServerSettings serverSettings(const Store& store, const std::string& mtp) {
    const std::string row = mtp + "WebSocket.";
    const std::vector<std::string> interfaces = listItems(store.value(row, "Interfaces"));
    return {mtp,
            interfaces.empty() ? "127.0.0.1" : interfaces.front(),
            portOf(store, row, "Port"),
            store.value(row, "Path"),
            store.flag(row, "EnableEncryption"),
            store.number(row, "KeepAliveInterval")};
}

WebSocketClientSettings clientSettings(const Store& store, const std::string& mtp, const std::string& controller) {
    const std::string row = mtp + "WebSocket.";
    return {row,
            controller,
            store.value(row, "Host"),
            portOf(store, row, "Port"),
            store.value(row, "Path"),
            store.flag(row, "EnableEncryption"),
            store.number(row, "KeepAliveInterval"),
            store.number(row, "SessionRetryMinimumWaitInterval"),
            store.number(row, "SessionRetryIntervalMultiplier")};
}

void readWays(const Store& store, const std::string& row, ControllerEntry& entry) {
    for (const std::string& mtp : store.rows(row + "MTP.")) {
        if (!store.flag(mtp, "Enable")) continue;
        ControllerWay way;
        way.protocol = store.value(mtp, "Protocol") == "MQTT" ? Protocol::kMqtt : Protocol::kWebSocket;
        way.order = store.number(mtp, "Order");
        way.topic = store.value(mtp + "MQTT.", "Topic");
        const std::string reference = store.value(mtp + "MQTT.", "AgentMTPReference");
        if (!reference.empty()) way.mtpRow = reference + ".";
        entry.ways.push_back(std::move(way));
    }
    std::stable_sort(entry.ways.begin(), entry.ways.end(),
                     [](const ControllerWay& left, const ControllerWay& right) { return left.order < right.order; });
}

}  // namespace

void Directory::refresh(const Store& store) {
    controllers_.clear();
    enabled_.clear();
    for (const std::string& row : store.rows(kControllers)) {
        ControllerEntry entry;
        entry.row = row;
        entry.endpointId = store.value(row, "EndpointID");
        entry.enabled = store.flag(row, "Enable");
        entry.retryMinimumWait = store.number(row, "USPNotifRetryMinimumWaitInterval");
        entry.retryMultiplier = store.number(row, "USPNotifRetryIntervalMultiplier");
        readWays(store, row, entry);
        if (entry.enabled) enabled_[entry.endpointId] = row;
        controllers_[row] = std::move(entry);
    }
}

const ControllerEntry* Directory::enabled(std::string_view endpointId) const {
    const auto row = enabled_.find(endpointId);
    return row == enabled_.end() ? nullptr : byRow(row->second);
}

const ControllerEntry* Directory::byRow(std::string_view row) const {
    const auto found = controllers_.find(row);
    return found == controllers_.end() ? nullptr : &found->second;
}

MtpSettings transportSettings(const Store& store, const std::string& endpointId) {
    MtpSettings settings;
    settings.endpointId = endpointId;
    for (const std::string& mtp : store.rows(kAgentMtps)) {
        if (!store.flag(mtp, "Enable")) continue;
        if (store.value(mtp, "Protocol") == "WebSocket") {
            settings.servers.push_back(serverSettings(store, mtp));
            continue;
        }
        const std::string client = store.value(mtp + "MQTT.", "Reference") + ".";
        if (store.has(client) && store.flag(client, "Enable"))
            settings.mqtt.push_back(mqttSettings(store, mtp, client));
    }
    for (const std::string& controller : store.rows(kControllers)) {
        if (!store.flag(controller, "Enable")) continue;
        const std::string id = store.value(controller, "EndpointID");
        settings.controllers.push_back(id);
        for (const std::string& mtp : store.rows(controller + "MTP.")) {
            const bool connects = store.flag(mtp, "Enable") && store.value(mtp, "Protocol") == "WebSocket" &&
                                  !store.value(mtp + "WebSocket.", "Host").empty();
            if (connects) settings.clients.push_back(clientSettings(store, mtp, id));
        }
    }
    return settings;
}

}  // namespace quorvel::agent
