// The members of the configuration file.
#include <filesystem>
#include <nlohmann/json.hpp>

#include "agent/config/ConfigFile.h"
#include "agent/config/ConfigReader.h"
#include "common/JsonDepth.h"
#include "common/JsonPosition.h"

namespace quorvel::agent {
namespace {

using Json = ConfigReader::Json;

constexpr std::uint32_t kLongestKeepAlive = 65535;

std::string fileIn(const std::string& folder, const std::string& name) {
    return name.empty() ? "" : (std::filesystem::path(folder) / name).string();
}

std::string itemPlace(const char* list, std::size_t index) {
    return std::string(list) + "[" + std::to_string(index) + "]";
}

// A secret stands in the file itself or, better, in one of its own.
std::string secretOf(const ConfigReader& object, const char* name, const char* fileName, const std::string& folder) {
    if (object.has(name)) return object.text(name, "");
    const std::string file = object.text(fileName, "");
    return file.empty() ? "" : readSecret(fileIn(folder, file));
}

Url urlOf(const ConfigReader& object, Url::Kind kind, const char* expected) {
    if (!object.has("url")) throw ConfigError("\"" + object.placeOf("url") + "\" is missing");
    const Url url = parseUrl(object.text("url", ""));
    if (url.kind != kind) object.refuse("url", expected);
    return url;
}

MqttClientConfig readClient(const Json& item, const std::string& place, const std::string& folder) {
    const ConfigReader object(
        item, place,
        {"name", "url", "topic", "protocolVersion", "clientId", "password", "passwordFile", "keepAlive", "qos"});
    const Url url = urlOf(object, Url::Kind::kMqtt, "an mqtt:// or mqtts:// URL");
    MqttClientConfig client;
    client.name = object.text("name", place);
    client.address = url.host;
    client.port = url.port;
    client.tls = url.tls;
    client.username = url.user;
    client.password = secretOf(object, "password", "passwordFile", folder);
    client.topic = object.text("topic", client.topic);
    client.protocolVersion = object.text("protocolVersion", client.protocolVersion);
    if (client.protocolVersion != "5.0" && client.protocolVersion != "3.1.1") {
        object.refuse("protocolVersion", "\"5.0\" or \"3.1.1\"");
    }
    client.clientId = object.text("clientId", "");
    client.keepAlive = static_cast<std::uint16_t>(object.number("keepAlive", client.keepAlive, kLongestKeepAlive));
    client.qos = static_cast<std::uint8_t>(object.number("qos", client.qos, 2));
    return client;
}

WebSocketServerConfig readPlace(const Json& item, const std::string& place) {
    const ConfigReader object(item, place, {"name", "url", "keepAlive"});
    const Url url = urlOf(object, Url::Kind::kWebSocketListen, "a ws-listen:// or wss-listen:// URL");
    WebSocketServerConfig server;
    server.name = object.text("name", place);
    server.address = url.host == "localhost" ? "127.0.0.1" : url.host;
    server.port = url.port;
    server.path = url.path;
    server.tls = url.tls;
    server.keepAlive = object.number("keepAlive", server.keepAlive, kLongestKeepAlive);
    return server;
}

ControllerMtpConfig readWay(const Json& item, const std::string& place) {
    ControllerMtpConfig way;
    if (item.is_object() && item.contains("mqtt")) {
        const ConfigReader object(item, place, {"mqtt", "topic"});
        way.client = object.text("mqtt", "");
        way.topic = object.text("topic", way.topic);
        return way;
    }
    const ConfigReader object(item, place, {"url", "keepAlive"});
    const Url url = urlOf(object, Url::Kind::kWebSocket, "a ws:// or wss:// URL");
    way.kind = ControllerMtpConfig::Kind::kWebSocket;
    way.host = url.host;
    way.port = url.port;
    way.path = url.path;
    way.tls = url.tls;
    way.keepAlive = object.number("keepAlive", way.keepAlive, kLongestKeepAlive);
    return way;
}

ControllerConfig readController(const Json& item, const std::string& place) {
    const ConfigReader object(item, place, {"endpointId", "enable", "mtps"});
    ControllerConfig controller;
    controller.endpointId = object.text("endpointId", controller.endpointId);
    if (controller.endpointId.empty()) object.refuse("endpointId", "an Endpoint ID such as \"proto::lab\"");
    controller.enable = object.flag("enable", true);
    const Json& ways = object.list("mtps");
    for (std::size_t index = 0; index < ways.size(); ++index)
        controller.mtps.push_back(readWay(ways[index], place + "." + itemPlace("mtps", index)));
    return controller;
}

DeviceFacts readDevice(const Json& item) {
    const ConfigReader object(
        item, "device",
        {"manufacturer", "oui", "productClass", "serial", "modelName", "hardwareVersion", "softwareVersion"});
    DeviceFacts device;
    device.manufacturer = object.text("manufacturer", device.manufacturer);
    device.oui = object.text("oui", device.oui);
    device.productClass = object.text("productClass", device.productClass);
    device.serial = object.text("serial", device.serial);
    device.modelName = object.text("modelName", device.modelName);
    device.hardwareVersion = object.text("hardwareVersion", device.hardwareVersion);
    device.softwareVersion = object.text("softwareVersion", device.softwareVersion);
    return device;
}

TlsConfig readTls(const Json& item, const std::string& folder) {
    const ConfigReader object(
        item, "tls", {"authorities", "certificate", "key", "clientAuthorities", "bearerToken", "bearerTokenFile"});
    TlsConfig tls;
    tls.authorities = fileIn(folder, object.text("authorities", ""));
    tls.certificate = fileIn(folder, object.text("certificate", ""));
    tls.key = fileIn(folder, object.text("key", ""));
    tls.clientAuthorities = fileIn(folder, object.text("clientAuthorities", ""));
    tls.bearerToken = secretOf(object, "bearerToken", "bearerTokenFile", folder);
    return tls;
}

}  // namespace

Config parseConfig(const std::string& text, const std::string& name, const std::string& folder) {
    if (common::findTooDeep(text)) throw ConfigError(name + ": " + common::tooDeepText());
    Json whole;
    try {
        whole = Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw ConfigError(name + ":" + common::placeOfByte(text, error.byte == 0 ? 0 : error.byte - 1) +
                          ": this is not JSON");
    }
    try {
        const ConfigReader object(whole, "", {"endpointId", "device", "mqtt", "listen", "controllers", "tls"});
        Config config;
        config.endpointId = object.text("endpointId", "");
        config.device = readDevice(object.object("device"));
        const Json& clients = object.list("mqtt");
        for (std::size_t index = 0; index < clients.size(); ++index)
            config.mqttClients.push_back(readClient(clients[index], itemPlace("mqtt", index), folder));
        const Json& places = object.list("listen");
        for (std::size_t index = 0; index < places.size(); ++index)
            config.webSocketServers.push_back(readPlace(places[index], itemPlace("listen", index)));
        const Json& controllers = object.list("controllers");
        for (std::size_t index = 0; index < controllers.size(); ++index)
            config.controllers.push_back(readController(controllers[index], itemPlace("controllers", index)));
        config.tls = readTls(object.object("tls"), folder);
        return config;
    } catch (const ConfigError& error) {
        throw ConfigError(name + ": " + error.what());
    }
}

}  // namespace quorvel::agent
