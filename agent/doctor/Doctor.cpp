#include "agent/doctor/Doctor.h"

#include <unistd.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <utility>

#include "agent/EventLoop.h"
#include "agent/mtp/MqttLink.h"
#include "gateway/hostd/client/BoardSocket.h"
#include "gateway/hostd/client/Client.h"

namespace quorvel::agent {
namespace {

using Clock = EventLoop::Clock;

constexpr const char* kEverything = "#";
constexpr std::chrono::seconds kConnecting(10);
constexpr std::chrono::milliseconds kLook(50);

std::string withEndpoint(std::string topic, const std::string& endpoint) {
    static const std::string kMark = "{endpoint}";
    for (std::size_t at = 0; (at = topic.find(kMark, at)) != std::string::npos; at += endpoint.size())
        topic.replace(at, kMark.size(), endpoint);
    return topic;
}

Circumstances circumstancesOf(const Config& config, const MqttClientConfig& client) {
    Circumstances agent;
    agent.endpointId =
        config.endpointId.empty() ? "os::" + config.device.oui + "-" + config.device.serial : config.endpointId;
    agent.agentTopic = withEndpoint(client.topic, agent.endpointId);
    for (const ControllerConfig& controller : config.controllers) {
        if (controller.enable) agent.controllers.push_back(controller.endpointId);
        for (const ControllerMtpConfig& way : controller.mtps) {
            if (way.kind == ControllerMtpConfig::Kind::kMqtt && way.client == client.name) {
                agent.controllerTopics.push_back(withEndpoint(way.topic, agent.endpointId));
            }
        }
    }
    return agent;
}

// Hears everything that passes a broker.
class Ear final : public MqttListener {
  public:
    Ear(Circumstances agent, std::vector<Finding>& findings) : agent_(std::move(agent)), findings_(findings) {}

    void mqttReady(const std::string& /*replyTopic*/, const std::string& /*responseInformation*/) override {
        isReady = true;
    }
    void mqttLost(const std::string& reason) override {
        findings_.push_back({false, "broker", reason});
    }
    void mqttReceived(MqttMessage message) override {
        Finding finding = judge(agent_, message.topic, message.payload);
        if (finding.subject.empty() || !said_.insert(finding.text).second) return;
        heard = true;
        findings_.push_back(std::move(finding));
    }
    void mqttAssigned(const std::string& /*clientId*/) override {}
    void mqttChanged() override {}

    bool isReady = false;
    bool heard = false;

  private:
    Circumstances agent_;
    std::vector<Finding>& findings_;
    std::set<std::string> said_;
};

// The trouble of a broker that was not reached, as one of the usual things.
Finding brokerTrouble(const MqttLink& link) {
    const std::string& text = link.lastTrouble();
    // A handshake that fails looks like a connection that ends.
    const bool ended = link.settings().tls && text.find("ended") != std::string::npos;
    if (ended || text.find("TLS") != std::string::npos) {
        return {false, "TLS", text + "; check tls.authorities of --usp-config and the name in the URL"};
    }
    if (text.find("refused the connection") != std::string::npos) {
        return {false, "credentials", text + "; check USER in the URL and --usp-password-file"};
    }
    if (text.find("refused every subscription") != std::string::npos) {
        return {false, "no subscription", text + "; let the broker's access list allow the agent's topic"};
    }
    return {false, "no broker", text.empty() ? "the broker does not answer" : text + "; is it started?"};
}

void examineBroker(const Config& config, const MqttClientConfig& client, std::chrono::seconds patience,
                   std::vector<Finding>& findings) {
    const Circumstances agent = circumstancesOf(config, client);
    MqttSettings settings;
    settings.protocolVersion = client.protocolVersion;
    settings.address = client.address;
    settings.port = client.port;
    settings.tls = client.tls;
    settings.username = client.username;
    settings.password = client.password;
    settings.clientId = "quorvel-doctor-" + std::to_string(getpid());
    settings.subscriptions = {{"agent", agent.agentTopic, 0}, {"all", kEverything, 0}};
    EventLoop loop;
    Ear ear(agent, findings);
    MqttLink link(loop, {settings, config.tls, "doctor"}, ear);
    link.start();
    const auto failed = [&link] {
        return link.state() == MqttState::kUnreachable || link.state() == MqttState::kMisconfigured;
    };
    const std::string place = client.address + ":" + std::to_string(client.port);
    auto end = Clock::now() + kConnecting;
    while (!ear.isReady && !failed() && Clock::now() < end)
        (void)loop.once(kLook);
    if (!ear.isReady) {
        findings.push_back(brokerTrouble(link));
        return;
    }
    findings.push_back({true, "broker", place + " accepts the agent's credentials"});
    if (link.wasRefused(agent.agentTopic)) {
        findings.push_back({false, "no subscription",
                            "the broker refuses a subscription to " + agent.agentTopic +
                                ": let its access list allow it, or choose another --usp-topic"});
    }
    end = Clock::now() + patience;
    while (Clock::now() < end)
        (void)loop.once(kLook);
    if (ear.heard) return;
    findings.push_back({false, "silence",
                        "nothing for the agent passed " + place + " within " + std::to_string(patience.count()) +
                            " s: have the controller publish to " + agent.agentTopic + " now, and look again"});
}

void examineAgent(const Config& config, std::vector<Finding>& findings) {
    common::Descriptor descriptor = hostd::connectToBoard(config.stateFolder);
    if (!descriptor) {
        findings.push_back({false, "board", "no board is up: start it with up --usp URL"});
        return;
    }
    hostd::Client client(descriptor.release(), "quorvel-wifi-agent doctor");
    bool connected = false;
    try {
        client.ask(hostd::protocol::ReadStatus{"usp"}, [&connected](const hostd::protocol::Part& part) {
            for (const hostd::protocol::ServiceStatus& status : part.status)
                connected = connected || status.connected;
        });
    } catch (const hostd::ConnectionError& error) {
        findings.push_back({false, "board", error.what()});
        return;
    }
    findings.push_back({connected, "agent",
                        connected
                            ? "the agent serves the board"
                            : "the agent has ended; usp/log in the state folder may say why, up --usp starts it"});
}

}  // namespace

std::vector<Finding> examine(const Config& config, std::chrono::seconds patience) {
    std::vector<Finding> findings;
    examineAgent(config, findings);
    for (const MqttClientConfig& client : config.mqttClients)
        examineBroker(config, client, patience, findings);
    return findings;
}

}  // namespace quorvel::agent
