#include "agent/config/CommandLine.h"

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "agent/config/ConfigFile.h"
#include "common/JsonDepth.h"

namespace quorvel::agent {
namespace {

constexpr const char* kUnnamedOui = "025176";  // locally administered

void addBoardFacts(DeviceFacts& device, const CommandLine& line) {
    std::ifstream file(line.boardFile);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const nlohmann::ordered_json board = common::parseShallow(text);
    if (!board.is_object()) throw ConfigError("cannot read the board's description " + line.boardFile);
    const auto fact = [&board](const char* name, const char* otherwise) {
        const auto found = board.find(name);
        return found == board.end() || !found->is_string() ? std::string(otherwise) : found->get<std::string>();
    };
    if (device.oui.empty()) device.oui = fact("oui", kUnnamedOui);
    if (device.modelName.empty()) device.modelName = fact("name", "");
    if (device.serial.empty()) device.serial = fact("serial", device.modelName.c_str());
    if (device.softwareVersion.empty()) device.softwareVersion = line.version;
}

void addOptions(Config& config, const CommandLine& line, const std::string& password) {
    if (line.urls.empty()) return;
    ControllerConfig controller;
    if (!line.controller.empty()) controller.endpointId = line.controller;
    const std::string topic = line.topic.empty() ? MqttClientConfig{}.topic : line.topic;
    const std::string controllerTopic =
        line.controllerTopic.empty() ? ControllerMtpConfig{}.topic : line.controllerTopic;
    for (const std::string& url : line.urls)
        addPlace(config, parseUrl(url), controller, topic, controllerTopic, password);
    config.controllers.push_back(controller);
}

}  // namespace

Config configFrom(const CommandLine& line) {
    Config config;
    if (!line.configFile.empty()) config = readConfig(line.configFile);
    const std::string password = line.passwordFile.empty() ? line.password : readSecret(line.passwordFile);
    addOptions(config, line, password);
    if (config.controllers.empty()) {
        throw ConfigError("there is no controller: name one with --usp URL or in the file of --usp-config");
    }
    for (MqttClientConfig& client : config.mqttClients) {
        if (client.password.empty() && !client.username.empty()) client.password = password;
    }
    if (!line.endpoint.empty()) config.endpointId = line.endpoint;
    addBoardFacts(config.device, line);
    config.stateFolder = line.stateFolder;
    checkConfig(config);
    return config;
}

}  // namespace quorvel::agent
