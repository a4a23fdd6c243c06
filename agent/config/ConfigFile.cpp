#include "agent/config/ConfigFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>

#include "agent/config/ConfigReader.h"

namespace quorvel::agent {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kLargestFile = 1U << 20U;

bool isHexadecimal(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char letter) {
        return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'F');
    });
}

Url urlOf(const MqttClientConfig& client) {
    return {Url::Kind::kMqtt, client.tls, client.username, client.address, client.port, ""};
}

Url urlOf(const WebSocketServerConfig& place) {
    return {Url::Kind::kWebSocketListen, place.tls, "", place.address, place.port, place.path};
}

Json toJson(const MqttClientConfig& client) {
    return {{"name", client.name},           {"url", textOf(urlOf(client))},
            {"topic", client.topic},         {"protocolVersion", client.protocolVersion},
            {"clientId", client.clientId},   {"password", client.password},
            {"keepAlive", client.keepAlive}, {"qos", client.qos}};
}

Json toJson(const ControllerConfig& controller) {
    Json ways = Json::array();
    for (const ControllerMtpConfig& way : controller.mtps) {
        if (way.kind == ControllerMtpConfig::Kind::kMqtt) {
            ways.push_back({{"mqtt", way.client}, {"topic", way.topic}});
        } else {
            const Url url{Url::Kind::kWebSocket, way.tls, "", way.host, way.port, way.path};
            ways.push_back({{"url", textOf(url)}, {"keepAlive", way.keepAlive}});
        }
    }
    return {{"endpointId", controller.endpointId}, {"enable", controller.enable}, {"mtps", ways}};
}

}  // namespace

Config readConfig(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw ConfigError("cannot read the configuration " + path + ": " + std::strerror(errno));
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (text.size() > kLargestFile) throw ConfigError("the configuration " + path + " is larger than 1 MiB");
    return parseConfig(text, path, std::filesystem::absolute(path).parent_path().string());
}

std::string formatConfig(const Config& config) {
    Json clients = Json::array();
    for (const MqttClientConfig& client : config.mqttClients)
        clients.push_back(toJson(client));
    Json places = Json::array();
    for (const WebSocketServerConfig& place : config.webSocketServers) {
        places.push_back({{"name", place.name}, {"url", textOf(urlOf(place))}, {"keepAlive", place.keepAlive}});
    }
    Json controllers = Json::array();
    for (const ControllerConfig& controller : config.controllers)
        controllers.push_back(toJson(controller));
    const DeviceFacts& device = config.device;
    const TlsConfig& tls = config.tls;
    const Json whole = {{"endpointId", config.endpointId},
                        {"device",
                         {{"manufacturer", device.manufacturer},
                          {"oui", device.oui},
                          {"productClass", device.productClass},
                          {"serial", device.serial},
                          {"modelName", device.modelName},
                          {"hardwareVersion", device.hardwareVersion},
                          {"softwareVersion", device.softwareVersion}}},
                        {"mqtt", clients},
                        {"listen", places},
                        {"controllers", controllers},
                        {"tls",
                         {{"authorities", tls.authorities},
                          {"certificate", tls.certificate},
                          {"key", tls.key},
                          {"clientAuthorities", tls.clientAuthorities},
                          {"bearerToken", tls.bearerToken}}}};
    return whole.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

void writeConfig(const Config& config, const std::string& path) {
    const std::string text = formatConfig(config);
    const std::string fresh = path + ".new";
    (void)unlink(fresh.c_str());  // an earlier attempt may have been cut off
    const int file = open(fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    const bool written =
        file >= 0 && write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) && fsync(file) == 0;
    const int number = errno;
    if (file >= 0) (void)close(file);
    if (!written || std::rename(fresh.c_str(), path.c_str()) != 0) {
        throw ConfigError("cannot write the configuration " + path + ": " + std::strerror(written ? errno : number));
    }
}

void addPlace(Config& config, const Url& url, ControllerConfig& controller, const std::string& topic,
              const std::string& controllerTopic, const std::string& password) {
    const std::string number = std::to_string(config.mqttClients.size() + config.webSocketServers.size() + 1);
    switch (url.kind) {
        case Url::Kind::kMqtt: {
            MqttClientConfig client;
            client.name = "broker-" + number;
            client.address = url.host;
            client.port = url.port;
            client.tls = url.tls;
            client.username = url.user;
            client.password = url.user.empty() ? "" : password;
            client.topic = topic;
            ControllerMtpConfig way;
            way.client = client.name;
            way.topic = controllerTopic;
            config.mqttClients.push_back(client);
            controller.mtps.push_back(way);
            return;
        }
        case Url::Kind::kWebSocket: {
            ControllerMtpConfig way;
            way.kind = ControllerMtpConfig::Kind::kWebSocket;
            way.host = url.host;
            way.port = url.port;
            way.path = url.path;
            way.tls = url.tls;
            controller.mtps.push_back(way);
            return;
        }
        case Url::Kind::kWebSocketListen: {
            WebSocketServerConfig place;
            place.name = "listen-" + number;
            place.address = url.host == "localhost" ? "127.0.0.1" : url.host;
            place.port = url.port;
            place.path = url.path;
            place.tls = url.tls;
            config.webSocketServers.push_back(place);
            return;
        }
    }
}

void checkConfig(const Config& config) {
    if (config.device.oui.size() != 6 || !isHexadecimal(config.device.oui)) {
        throw ConfigError("the OUI \"" + config.device.oui + "\" is not six upper-case hexadecimal digits");
    }
    std::set<std::string> names;
    for (const MqttClientConfig& client : config.mqttClients) {
        if (!names.insert(client.name).second) {
            throw ConfigError("two MQTT clients have the name \"" + client.name + "\": names must differ");
        }
        if (client.topic.empty()) throw ConfigError("the topic of " + client.name + " must not be empty");
    }
    for (const WebSocketServerConfig& place : config.webSocketServers) {
        const std::string text = textOf(urlOf(place));
        if (!place.tls && !isLoopback(place.address)) {
            throw ConfigError(text +
                              " would let anybody on the network in: use wss-listen with a certificate and a "
                              "client certificate or bearer token, or a loopback address");
        }
        if (!place.tls) continue;
        if (config.tls.certificate.empty() || config.tls.key.empty()) {
            throw ConfigError(text + " needs a certificate and a key: set tls.certificate and tls.key in --usp-config");
        }
        if (!isLoopback(place.address) && config.tls.clientAuthorities.empty() && config.tls.bearerToken.empty()) {
            throw ConfigError(text +
                              " needs controllers that prove themselves: set tls.clientAuthorities or "
                              "tls.bearerTokenFile in --usp-config");
        }
    }
    std::set<std::string> endpoints;
    for (const ControllerConfig& controller : config.controllers) {
        if (!endpoints.insert(controller.endpointId).second) {
            throw ConfigError("two controllers have the Endpoint ID \"" + controller.endpointId + "\"");
        }
        for (const ControllerMtpConfig& way : controller.mtps) {
            if (way.kind == ControllerMtpConfig::Kind::kMqtt && !names.contains(way.client)) {
                throw ConfigError("controller " + controller.endpointId + " refers to the MQTT client \"" + way.client +
                                  "\", which is not in \"mqtt\"");
            }
        }
    }
}

std::vector<std::string> warningsFor(const Config& config) {
    std::vector<std::string> warnings;
    for (const MqttClientConfig& client : config.mqttClients) {
        if (isLoopback(client.address)) continue;
        const std::string text = textOf(urlOf(client));
        if (!client.tls) {
            warnings.push_back(text +
                               " is not protected by TLS: everybody on the way can read and change what "
                               "passes; use mqtts://");
        }
        if (client.username.empty() && config.tls.certificate.empty()) {
            warnings.push_back(text +
                               " is used without credentials: everybody who reaches the broker can manage "
                               "this gateway; use mqtts://USER@HOST");
        }
    }
    return warnings;
}

std::string readSecret(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    if (!file || !std::getline(file, line)) {
        throw ConfigError("cannot read a secret from the first line of " + path + ": " + std::strerror(errno));
    }
    return line;
}

}  // namespace quorvel::agent
