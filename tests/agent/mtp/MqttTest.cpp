#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "agent/mtp/TransportSet.h"
#include "tests/agent/mtp/RecordingListener.h"
#include "tests/agent/mtp/ScriptedBroker.h"

namespace quorvel::agent_test {
namespace {

using agent::MqttSettings;
using agent::MtpSettings;

class MqttTransport : public testing::Test {
  protected:
    MqttTransport() {
        transports_.listen(listener_);
        settings_.endpointId = "os::025176-1";
        MqttSettings client;
        client.mtpRow = "Device.LocalAgent.MTP.1.";
        client.clientRow = "Device.MQTT.Client.1.";
        client.protocolVersion = "5.0";
        client.address = "127.0.0.1";
        client.port = broker_.port();
        client.responseTopicConfigured = "/usp/endpoint";
        client.retryTime = 0;  // attempts follow each other at once
        settings_.mqtt.push_back(client);
    }
    ~MqttTransport() override {
        transports_.stop("the test is over");
    }

    MqttSettings& client() {
        return settings_.mqtt.front();
    }
    void connect() {
        transports_.configure(settings_);
        ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.connected.empty(); }));
    }
    [[nodiscard]] std::string status(const std::string& path) {
        return listener_.status[path];
    }
    [[nodiscard]] agent::Destination to(const std::string& topic) const {
        return {listener_.connected.back().id, topic};
    }

    agent::EventLoop loop_;
    ScriptedBroker broker_{loop_};
    RecordingListener listener_;
    agent::TransportSet transports_{loop_, {}};
    MtpSettings settings_;
};

TEST_F(MqttTransport, ConnectNamesTheEndpointAndAsksForResponseInformation) {
    client().username = "lab";
    client().password = "open sesame";
    client().clientId = "gateway";
    client().keepAlive = 30;
    connect();
    const ScriptedBroker::Connect& seen = broker_.connects.at(0);
    EXPECT_EQ(seen.level, 5U);
    EXPECT_EQ(seen.clientId, "gateway");
    EXPECT_EQ(seen.userName, "lab");
    EXPECT_EQ(seen.password, "open sesame");
    EXPECT_EQ(seen.keepAlive, 30U);
    EXPECT_TRUE(seen.cleanStart);
    EXPECT_EQ(seen.properties.numbers.at(kRequestResponseInformation), 1U);
    const std::vector<std::pair<std::string, std::string>> user = {{"usp-endpoint-id", "os::025176-1"}};
    EXPECT_EQ(seen.properties.user, user);
}

TEST_F(MqttTransport, ConfiguredTopicIsSubscribedAndIsTheReplyTopic) {
    connect();
    EXPECT_EQ(broker_.subscribed, std::vector<std::string>{"/usp/endpoint"});
    EXPECT_EQ(listener_.connected.at(0).replyTopic, "/usp/endpoint");
    EXPECT_EQ(listener_.connected.at(0).mqttVersion, "5.0");
    EXPECT_EQ(status("Device.MQTT.Client.1.Status"), "Connected");
    EXPECT_EQ(status("Device.LocalAgent.MTP.1.Status"), "Up");
}

TEST_F(MqttTransport, ResponseInformationReplacesTheConfiguredTopic) {
    broker_.script.responseInformation = "given/by/broker";
    connect();
    EXPECT_EQ(broker_.subscribed, std::vector<std::string>{"given/by/broker"});
    EXPECT_EQ(listener_.connected.at(0).replyTopic, "given/by/broker");
    EXPECT_EQ(status("Device.MQTT.Client.1.ResponseInformation"), "given/by/broker");
    EXPECT_EQ(status("Device.LocalAgent.MTP.1.MQTT.ResponseTopicDiscovered"), "given/by/broker");
}

TEST_F(MqttTransport, SubscribeTopicsOfTheBrokerAreSubscribed) {
    broker_.script.subscribeTopics = {"first/topic", "second/topic"};
    connect();
    const std::vector<std::string> expected = {"first/topic", "second/topic", "/usp/endpoint"};
    EXPECT_EQ(broker_.subscribed, expected);
}

TEST_F(MqttTransport, TopicThatASubscriptionCoversIsNotSubscribedAgain) {
    client().subscriptions = {{"Device.MQTT.Client.1.Subscription.1.", "/usp/#", 0}};
    connect();
    EXPECT_EQ(broker_.subscribed, std::vector<std::string>{"/usp/#"});
    EXPECT_EQ(listener_.connected.at(0).replyTopic, "/usp/endpoint");
    EXPECT_EQ(status("Device.MQTT.Client.1.Subscription.1.Status"), "Subscribed");
}

TEST_F(MqttTransport, FirstPlainSubscriptionIsTheReplyTopicWithoutAnother) {
    client().responseTopicConfigured.clear();
    client().subscriptions = {{"1.", "wild/#", 0}, {"2.", "plain/one", 0}, {"3.", "plain/two", 0}};
    connect();
    EXPECT_EQ(listener_.connected.at(0).replyTopic, "plain/one");
}

TEST_F(MqttTransport, WithoutATopicTheAgentDisconnects) {
    client().responseTopicConfigured.clear();
    client().retryTime = 600;
    transports_.configure(settings_);
    ASSERT_TRUE(serveUntil(loop_, [this] { return broker_.disconnects == 1; }));
    EXPECT_TRUE(listener_.connected.empty());
    EXPECT_EQ(status("Device.MQTT.Client.1.Status"), "Error_Misconfigured");
    EXPECT_EQ(status("Device.LocalAgent.MTP.1.Status"), "Error");
}

TEST_F(MqttTransport, WhenEverySubscriptionIsRefusedTheAgentDisconnects) {
    broker_.script.refusesAll = true;
    client().retryTime = 600;
    transports_.configure(settings_);
    ASSERT_TRUE(serveUntil(loop_, [this] { return broker_.disconnects == 1; }));
    EXPECT_TRUE(listener_.connected.empty());
    EXPECT_TRUE(broker_.published.empty());
}

TEST_F(MqttTransport, OneRefusedSubscriptionLeavesTheOthers) {
    broker_.script.refused = {"secret"};
    client().subscriptions = {{"row.1.", "secret", 0}, {"row.2.", "open", 0}};
    connect();
    EXPECT_EQ(status("row.1.Status"), "Error");
    EXPECT_EQ(status("row.2.Status"), "Subscribed");
}

TEST_F(MqttTransport, RefusedCredentialsLeaveTheBrokerUnreachable) {
    broker_.script.connectCode = 0x86;
    client().retryTime = 600;
    transports_.configure(settings_);
    ASSERT_TRUE(
        serveUntil(loop_, [this] { return status("Device.MQTT.Client.1.Status") == "Error_BrokerUnreachable"; }));
    EXPECT_TRUE(listener_.connected.empty());
}

TEST_F(MqttTransport, AssignedClientIdIsReportedAndUsedAgain) {
    broker_.script.assignedClientId = "chosen-by-broker";
    connect();
    EXPECT_EQ(broker_.connects.at(0).clientId, "");
    EXPECT_EQ(status("Device.MQTT.Client.1.ClientID"), "chosen-by-broker");
    broker_.breakConnections();
    ASSERT_TRUE(serveUntil(loop_, [this] { return listener_.connected.size() == 2; }));
    EXPECT_EQ(broker_.connects.at(1).clientId, "chosen-by-broker");
}

TEST_F(MqttTransport, KeepAliveOfTheBrokerGoesBefore) {
    broker_.script.keepAlive = 1;
    client().keepAlive = 600;
    connect();
    EXPECT_TRUE(serveUntil(loop_, [this] { return broker_.pings > 0; }));
}

TEST_F(MqttTransport, RecordIsPublishedWithContentTypeAndResponseTopic) {
    connect();
    EXPECT_TRUE(transports_.send("a record", to("/usp/controller")));
    ASSERT_TRUE(serveUntil(loop_, [this] { return !broker_.published.empty(); }));
    const ScriptedBroker::Publish& seen = broker_.published.at(0);
    EXPECT_EQ(seen.topic, "/usp/controller");
    EXPECT_EQ(seen.payload, "a record");
    EXPECT_EQ(seen.qos, 0U);
    EXPECT_EQ(seen.properties.texts.at(kContentType), "usp.msg");
    EXPECT_EQ(seen.properties.texts.at(kResponseTopic), "/usp/endpoint");
}

TEST_F(MqttTransport, QosOneIsPublishedAsSuch) {
    client().publishQos = 1;
    connect();
    EXPECT_TRUE(transports_.send("a record", to("/usp/controller")));
    ASSERT_TRUE(serveUntil(loop_, [this] { return !broker_.published.empty(); }));
    EXPECT_EQ(broker_.published.at(0).qos, 1U);
}

TEST_F(MqttTransport, KnownContentTypesAndNoneAreAccepted) {
    connect();
    Properties properties;
    properties.texts[kResponseTopic] = "answer/here";
    for (const char* type : {"usp.msg", "application/vnd.bbf.usp.msg", ""}) {
        properties.texts.erase(kContentType);
        if (*type != '\0') properties.texts[kContentType] = type;
        broker_.publish("/usp/endpoint", type, properties);
    }
    ASSERT_TRUE(serveUntil(loop_, [this] { return listener_.received.size() == 3; }));
    EXPECT_EQ(listener_.received.at(2).source.responseTopic, "answer/here");
    EXPECT_EQ(listener_.received.at(2).source.topic, "/usp/endpoint");
    EXPECT_EQ(listener_.received.at(2).source.channel, listener_.connected.at(0).id);
}

TEST_F(MqttTransport, OtherContentTypesAreDropped) {
    connect();
    Properties properties;
    properties.texts[kContentType] = "text/plain";
    broker_.publish("/usp/endpoint", "hello", properties);
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.dropped.empty(); }));
    EXPECT_EQ(listener_.dropped.at(0).reason, "the Content Type is text/plain");
    EXPECT_TRUE(listener_.received.empty());
}

TEST_F(MqttTransport, RecordOfFourMegabytesComesAndALargerOneIsDropped) {
    connect();
    broker_.publish("/usp/endpoint", std::string(agent::kMaxRecord, 'x'));
    broker_.publish("/usp/endpoint", std::string(agent::kMaxRecord + 1, 'y'));
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.dropped.empty(); }));
    ASSERT_EQ(listener_.received.size(), 1U);
    EXPECT_EQ(listener_.received.at(0).bytes.size(), agent::kMaxRecord);
    EXPECT_EQ(listener_.dropped.at(0).size, agent::kMaxRecord + 1);
}

TEST_F(MqttTransport, LostBrokerIsFoundAgainAsANewChannel) {
    connect();
    const std::uint64_t before = listener_.connected.at(0).id;
    broker_.breakConnections();
    ASSERT_TRUE(serveUntil(loop_, [this] { return listener_.connected.size() == 2; }));
    ASSERT_EQ(listener_.lost.size(), 1U);
    EXPECT_EQ(listener_.lost.at(0).first, before);
    EXPECT_NE(listener_.connected.at(1).id, before);
    EXPECT_FALSE(transports_.send("late", {before, "/usp/controller"}));
}

TEST_F(MqttTransport, BrokerThatIsAwayIsReportedAndFoundLater) {
    broker_.down();
    transports_.configure(settings_);
    ASSERT_TRUE(serveUntil(
        loop_, [this] { return listener_.statuses.contains("Device.MQTT.Client.1.Status=Error_BrokerUnreachable"); }));
    broker_.up();
    EXPECT_TRUE(serveUntil(loop_, [this] { return !listener_.connected.empty(); }));
}

TEST_F(MqttTransport, ChangedSubscriptionsNeedNoNewConnection) {
    client().subscriptions = {{"row.1.", "old", 0}};
    connect();
    client().subscriptions = {{"row.2.", "new", 0}};
    transports_.configure(settings_);
    ASSERT_TRUE(serveUntil(loop_, [this] { return status("row.2.Status") == "Subscribed"; }));
    EXPECT_EQ(broker_.connects.size(), 1U);
    EXPECT_EQ(broker_.unsubscribed, std::vector<std::string>{"old"});
}

TEST_F(MqttTransport, ChangedAddressMakesANewConnection) {
    connect();
    ScriptedBroker other(loop_);
    client().port = other.port();
    transports_.configure(settings_);
    ASSERT_TRUE(serveUntil(loop_, [this] { return listener_.connected.size() == 2; }));
    EXPECT_EQ(other.connects.size(), 1U);
    ASSERT_TRUE(serveUntil(loop_, [this] { return broker_.disconnects == 1; }));
    EXPECT_EQ(listener_.lost.size(), 1U);
}

TEST_F(MqttTransport, AnswerLeavesBeforeTheConnectionThatItDisables) {
    connect();
    listener_.answer = [this](const agent::Source& source) {
        transports_.configure(
            {.endpointId = "os::025176-1", .mqtt = {}, .servers = {}, .clients = {}, .controllers = {}});
        EXPECT_TRUE(transports_.send("the answer", {source.channel, "/usp/controller"}));
    };
    broker_.publish("/usp/endpoint", "disable yourself");
    ASSERT_TRUE(serveUntil(loop_, [this] { return broker_.disconnects == 1; }));
    ASSERT_EQ(broker_.published.size(), 1U);
    EXPECT_EQ(broker_.published.at(0).payload, "the answer");
    EXPECT_EQ(status("Device.MQTT.Client.1.Status"), "Disabled");
}

TEST_F(MqttTransport, OlderProtocolCarriesTheReplyTopicInTheTopic) {
    client().protocolVersion = "3.1.1";
    connect();
    EXPECT_EQ(broker_.connects.at(0).level, 4U);
    EXPECT_EQ(broker_.subscribed, std::vector<std::string>{"/usp/endpoint/#"});
    EXPECT_TRUE(transports_.send("a record", to("/usp/controller")));
    ASSERT_TRUE(serveUntil(loop_, [this] { return !broker_.published.empty(); }));
    EXPECT_EQ(broker_.published.at(0).topic, "/usp/controller/reply-to=%2Fusp%2Fendpoint");
    broker_.publish("/usp/endpoint/reply-to=%2Fusp%2Fcontroller", "a request");
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.received.empty(); }));
    EXPECT_EQ(listener_.received.at(0).source.responseTopic, "/usp/controller");
}

TEST_F(MqttTransport, PeerThatStopsReadingIsRefusedMoreAndHoldsNothingUp) {
    connect();
    const std::string record(1U << 20U, 'x');
    int accepted = 0;
    // The loop does not run, so the broker reads nothing.
    while (accepted < 100 && transports_.send(record, to("/usp/controller")))
        ++accepted;
    EXPECT_LT(accepted, 100);
    EXPECT_TRUE(serveUntil(loop_, [&] { return static_cast<int>(broker_.published.size()) == accepted; }));
}

TEST(ReplyTopic, ComesBackAfterTheLastMark) {
    EXPECT_EQ(agent::replyTopicIn("a/reply-to=b/reply-to=c%2Fd"), "c/d");
    EXPECT_EQ(agent::replyTopicIn("a/b"), "");
    EXPECT_EQ(agent::replyTopicIn(agent::withReplyTopic("x", "/u/v")), "/u/v");
}

}  // namespace
}  // namespace quorvel::agent_test
