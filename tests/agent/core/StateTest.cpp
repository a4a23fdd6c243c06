// State that outlives the agent, state that does not, and the effects of rows.
#include <sys/stat.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "agent/core/Configuration.h"
#include "agent/model/StateFile.h"
#include "tests/agent/core/AgentWorld.h"

namespace quorvel::agent_test {
namespace {

using namespace std::chrono_literals;

class SavedState : public AgentWorld {
  protected:
    SavedState() {
        start();
        connect();
    }
    [[nodiscard]] std::string file() const {
        return config.stateFolder + "/usp-agent.json";
    }
    [[nodiscard]] std::string text() const {
        std::ifstream in(file());
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }
};

TEST_F(SavedState, KeepsPersistentRowsAndTheirNumbers) {
    subscribe("volatile", "Event", "Device.Boot!");
    subscribe("kept", "ValueChange", "Device.DeviceInfo.FriendlyName", {{"Persistent", "true"}});
    set("Device.DeviceInfo.", {{"FriendlyName", "box"}});
    restart();
    EXPECT_EQ(value("Device.DeviceInfo.FriendlyName"), "box");
    EXPECT_EQ(value("Device.LocalAgent.SubscriptionNumberOfEntries"), "1");
    EXPECT_EQ(value("Device.LocalAgent.Subscription.2.ID"), "kept");
    (void)notifies();
    set("Device.DeviceInfo.", {{"FriendlyName", "crate"}});
    EXPECT_EQ(notifies().size(), 1U);
    // Numbers are not used again.
    remove({"Device.LocalAgent.Subscription.2."});
    restart();
    EXPECT_EQ(subscribe("next", "Event", "Device."), "Device.LocalAgent.Subscription.3.");
}

TEST_F(SavedState, IsForItsOwnerAloneAndReplacedAsAWhole) {
    struct stat facts {};
    ASSERT_EQ(stat(file().c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777U, 0600U);
    const std::string before = text();
    // An agent that is killed while it writes leaves another file.
    std::ofstream(file() + ".new") << "{ half";
    restart();
    EXPECT_EQ(text(), before);
}

TEST_F(SavedState, ThatIsDamagedIsRefusedWithTheRemedy) {
    agent.reset();
    for (const char* const damaged : {"", "{", "[]", "{}", R"({"version":2})"}) {
        std::ofstream(file(), std::ios::trunc) << damaged;
        try {
            start();
            FAIL() << damaged;
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find("remove the file"), std::string::npos);
        }
    }
}

TEST_F(SavedState, PassesOverWhatTheModelDoesNotKnow) {
    agent.reset();
    auto state = nlohmann::ordered_json::parse(text());
    state["rows"]["Device.Nothing."] = {{"X", "1"}};
    state["rows"]["Device.WiFi.SSID.1."] = {{"SSID", "1"}};
    state["rows"]["Device.LocalAgent.Controller.77.MTP.1."] = {{"Enable", "true"}};
    state["rows"]["Device.LocalAgent.Controller.0."] = {{"Enable", "true"}};
    state["rows"]["Device.LocalAgent.Controller.1."]["Enable"] = 7;
    state["rows"]["Device.LocalAgent.Controller.1."]["PeriodicNotifInterval"] = "often";
    state["rows"]["nonsense"] = {{"X", "1"}};
    state["highest"]["Device.LocalAgent.Controller."] = "many";
    std::ofstream(file(), std::ios::trunc) << state.dump();
    start();
    connect();
    EXPECT_EQ(value("Device.LocalAgent.ControllerNumberOfEntries"), "1");
    EXPECT_EQ(value("Device.LocalAgent.Controller.1.PeriodicNotifInterval"), "86400");
}

TEST_F(SavedState, YieldsToTheConfigurationInTheRowsThatItNames) {
    set("Device.MQTT.Client.1.", {{"BrokerPort", "1884"}});
    set("Device.LocalAgent.Controller.1.", {{"ProvisioningCode", "kept"}});
    restart();
    EXPECT_EQ(value("Device.MQTT.Client.1.BrokerPort"), "1883");
    EXPECT_EQ(value("Device.MQTT.ClientNumberOfEntries"), "1");
    EXPECT_EQ(value("Device.LocalAgent.MTPNumberOfEntries"), "1");
    EXPECT_EQ(value("Device.LocalAgent.Controller.1.ProvisioningCode"), "kept");
}

TEST_F(SavedState, RemembersWhyTheBoardStarts) {
    subscribe("boot", "Event", "Device.Boot!", {{"Persistent", "true"}, {"NotifRetry", "true"}});
    operate("Device.Reboot()", {}, "the key");
    restart();
    pass(10s);
    const auto told = notifies();
    ASSERT_FALSE(told.empty());
    EXPECT_EQ(told[0].event().params().at("Cause"), "RemoteReboot");
    EXPECT_EQ(told[0].event().params().at("CommandKey"), "the key");
    restart();
    pass(10s);
    const auto again = notifies();
    ASSERT_FALSE(again.empty());
    EXPECT_EQ(again[0].event().params().at("Cause"), "LocalReboot");
}

TEST_F(SavedState, ThatCannotBeWrittenIsLogged) {
    agent.reset();
    config.stateFolder = "/nonexistent/folder";
    start();
    ASSERT_FALSE(logged.empty());
    EXPECT_NE(logged.back().find("could not be saved"), std::string::npos);
}

TEST_F(SavedState, NothingIsKeptWithoutAFolder) {
    agent.reset();
    config.stateFolder.clear();
    start();
    connect();
    set("Device.DeviceInfo.", {{"FriendlyName", "box"}});
    restart();
    EXPECT_EQ(value("Device.DeviceInfo.FriendlyName"), "");
}

TEST_F(SavedState, StoresTheClientIdThatABrokerAssigns) {
    const std::size_t before = transports.configured.size();
    agent->onStatus("Device.MQTT.Client.1.", "ClientID", "assigned-1");
    EXPECT_EQ(transports.configured.size(), before);
    restart();
    EXPECT_EQ(transports.configured.back().mqtt.at(0).clientId, "assigned-1");
}

TEST_F(SavedState, TransportsFollowTheRows) {
    ASSERT_EQ(transports.configured.size(), 1U);
    const MtpSettings& first = transports.configured[0];
    ASSERT_EQ(first.mqtt.size(), 1U);
    EXPECT_EQ(first.endpointId, kAgent);
    EXPECT_EQ(first.mqtt[0].address, "127.0.0.1");
    EXPECT_EQ(first.mqtt[0].responseTopicConfigured, "/usp/endpoint");
    EXPECT_EQ(first.controllers, std::vector<std::string>{kController});
    add("Device.MQTT.Client.1.Subscription.", {{"Topic", "more"}, {"QoS", "1"}, {"Enable", "true"}});
    EXPECT_EQ(transports.configured.back().mqtt[0].subscriptions.at(0).topic, "more");
    add("Device.LocalAgent.MTP.", {{"Protocol", "WebSocket"}, {"Enable", "true"}, {"WebSocket.Path", "/usp"}});
    EXPECT_EQ(transports.configured.back().servers.at(0).path, "/usp");
    EXPECT_EQ(transports.configured.back().servers.at(0).address, "127.0.0.1");
    add("Device.LocalAgent.Controller.1.MTP.",
        {{"Protocol", "WebSocket"}, {"Enable", "true"}, {"WebSocket.Host", "ctl.example"}});
    EXPECT_EQ(transports.configured.back().clients.at(0).host, "ctl.example");
    EXPECT_EQ(transports.configured.back().clients.at(0).controller, kController);
    // A request that ends its own way is answered first.
    const usp::Msg answer = set("Device.LocalAgent.MTP.1.", {{"Enable", "false"}});
    EXPECT_TRUE(answer.body().has_response());
    EXPECT_TRUE(transports.configured.back().mqtt.empty());
}

TEST_F(SavedState, ReferencesLoseRowsThatGo) {
    remove({"Device.LocalAgent.MTP.1."});
    EXPECT_EQ(value("Device.LocalAgent.Controller.1.MTP.1.MQTT.AgentMTPReference"), "");
    const usp::Msg wrong =
        set("Device.LocalAgent.Controller.1.MTP.1.MQTT.", {{"AgentMTPReference", "Device.LocalAgent.MTP.9"}});
    EXPECT_EQ(wrong.body().error().param_errs(0).err_code(), 7012U);
    add("Device.LocalAgent.MTP.", {{"MQTT.Reference", "Device.MQTT.Client.1."}});
    EXPECT_EQ(value("Device.LocalAgent.MTP.2.MQTT.Reference"), "Device.MQTT.Client.1");
    remove({"Device.MQTT.Client.1."});
    EXPECT_EQ(value("Device.LocalAgent.MTP.2.MQTT.Reference"), "");
}

TEST_F(SavedState, KeysStayUnique) {
    const auto code = [](const usp::Msg& answer) { return answer.body().error().param_errs(0).err_code(); };
    EXPECT_EQ(code(add("Device.LocalAgent.Controller.", {{"EndpointID", kController}})), 7025U);
    EXPECT_EQ(code(add("Device.LocalAgent.Controller.1.MTP.", {{"Protocol", "MQTT"}})), 7025U);
    EXPECT_EQ(code(add("Device.LocalAgent.Controller.", {{"EndpointID", "nonsense"}})), 7012U);
    add("Device.LocalAgent.Controller.", {{"EndpointID", "os::1-2"}});
    EXPECT_EQ(code(set("Device.LocalAgent.Controller.2.", {{"EndpointID", kController}})), 7025U);
    EXPECT_EQ(value("Device.LocalAgent.Controller.2.EndpointID"), "os::1-2");
    // The one protocol that is left is chosen.
    add("Device.LocalAgent.Controller.1.MTP.", {});
    EXPECT_EQ(value("Device.LocalAgent.Controller.1.MTP.2.Protocol"), "WebSocket");
    EXPECT_EQ(code(add("Device.LocalAgent.Controller.1.BootParameter.", {{"ParameterName", "no path"}})), 7012U);
    EXPECT_EQ(code(add(kSubscriptionTable, {{"ReferenceList", "Device.X.,nonsense"}})), 7012U);
    EXPECT_EQ(code(add(kSubscriptionTable, {{"NotifType", "Everything"}})), 7012U);
    EXPECT_EQ(code(add(kSubscriptionTable, {{"Recipient", "x"}})), 7013U);
    // An optional one that does not fit is left out.
    const usp::Msg partly = add("Device.LocalAgent.MTP.", {{"MQTT.Reference", "Device.MQTT.Client.9"}}, false, false);
    EXPECT_EQ(partly.body().response().add_resp().created_obj_results(0).oper_status().oper_success().param_errs_size(),
              1);
}

TEST_F(SavedState, StatusesOfTransportsAreReadAndNotified) {
    subscribe("vc", "ValueChange", "Device.MQTT.Client.1.Status");
    (void)notifies();
    agent->onStatus("Device.MQTT.Client.1.", "Status", "Connected");
    agent->onStatus("Device.MQTT.Client.1.", "Status", "Connected");
    agent->onStatus("Device.MQTT.Client.9.", "Status", "Connected");
    agent->onStatus("Device.MQTT.Client.1.", "Nothing", "x");
    EXPECT_EQ(value("Device.MQTT.Client.1.Status"), "Connected");
    EXPECT_EQ(notifies().size(), 1U);
    const auto status = agent->status();
    EXPECT_EQ(status.at("endpoint"), kAgent);
    EXPECT_EQ(status.at("mtps").at(0).at("client"), "Connected");
    EXPECT_EQ(status.at("controllers").at(0).at("reachable"), true);
    EXPECT_EQ(status.at("subscriptions"), 1);
}

TEST_F(SavedState, NotifiesWaitForTheFirstConnection) {
    subscribe("boot", "Event", "Device.Boot!", {{"Persistent", "true"}});
    agent.reset();
    const std::size_t before = transports.sent.size();
    (void)notifies();
    start();
    EXPECT_EQ(transports.sent.size(), before);
    connect();
    EXPECT_EQ(notifies().size(), 1U);
}

TEST_F(SavedState, EndpointIdsFollowTheBoard) {
    Config plain;
    plain.device.oui = "ABCDEF";
    plain.device.serial = "7";
    EXPECT_EQ(endpointIdOf(plain), "os::ABCDEF-7");
    plain.endpointId = "proto::x";
    EXPECT_EQ(endpointIdOf(plain), "proto::x");
}

TEST_F(SavedState, SeveralBrokersServeOneController) {
    agent.reset();
    MqttClientConfig second = config.mqttClients.front();
    second.name = "second";
    second.topic = "in/{endpoint}";
    config.mqttClients.push_back(second);
    WebSocketServerConfig server;
    server.name = "listen";
    config.webSocketServers.push_back(server);
    ControllerMtpConfig way;
    way.client = "second";
    config.controllers.front().mtps.push_back(way);
    way.kind = ControllerMtpConfig::Kind::kWebSocket;
    way.host = "ctl.example";
    config.controllers.front().mtps.push_back(way);
    start();
    const MtpSettings& settings = transports.configured.back();
    ASSERT_EQ(settings.mqtt.size(), 2U);
    EXPECT_EQ(settings.mqtt[1].responseTopicConfigured, std::string("in/") + kAgent);
    EXPECT_EQ(settings.servers.size(), 1U);
    EXPECT_EQ(settings.clients.at(0).host, "ctl.example");
    // Only the second broker is there: it takes what the controller is told.
    Channel channel;
    channel.id = 3;
    channel.mtp = settings.mqtt[1].mtpRow;
    agent->onConnected(channel);
    EXPECT_EQ(transports.sent.back().destination.channel, 3U);
    EXPECT_EQ(transports.sent.back().destination.topic, "/usp/controller");
}

}  // namespace
}  // namespace quorvel::agent_test
