// The MQTT transport against a broker that does as the test says.
#include <algorithm>
#include <fstream>

#include "agent/EventLoop.h"
#include "tests/agent/conformance/Lab.h"
#include "tests/agent/mtp/RecordingListener.h"
#include "tests/agent/mtp/ScriptedBroker.h"

namespace quorvel::agent_test {
namespace {

// Each test has a board of its own, whose agent connects to the scripted broker.
class Mqtt : public testing::Test {
  protected:
    void start() {
        board_.mustRun({"up", "--usp", "mqtt://127.0.0.1:" + std::to_string(broker_.port())});
    }
    template <typename Condition>
    [[nodiscard]] bool until(Condition condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            (void)loop_.once(std::chrono::milliseconds(50));
        }
        return true;
    }
    static usp_record::Record recordOf(const ScriptedBroker::Publish& publish) {
        usp_record::Record record;
        EXPECT_TRUE(record.ParseFromString(publish.payload));
        return record;
    }
    // Publishes a request as this content type and tells whether an answer came to `answerTopic`.
    bool isAnswered(const std::string& topic, const std::string& contentType, const std::string& answerTopic) {
        usp::Msg message;
        message.mutable_header()->set_msg_id("mqtt-" + std::to_string(++requests_));
        message.mutable_header()->set_msg_type(usp::Header::GET);
        message.mutable_body()->mutable_request()->mutable_get()->add_param_paths("Device.LocalAgent.EndpointID");
        usp_record::Record record;
        record.set_version("1.4");
        record.set_to_id(kAgentId);
        record.set_from_id(kControllerId);
        record.mutable_no_session_context()->set_payload(message.SerializeAsString());
        Properties properties;
        if (!contentType.empty()) properties.texts[kContentType] = contentType;
        properties.texts[kResponseTopic] = answerTopic;
        const std::size_t before = broker_.published.size();
        broker_.publish(topic, record.SerializeAsString(), properties);
        return until([&] {
            return std::any_of(broker_.published.begin() + static_cast<std::ptrdiff_t>(before), broker_.published.end(),
                               [&](const ScriptedBroker::Publish& each) { return each.topic == answerTopic; });
        });
    }

    agent::EventLoop loop_;
    ScriptedBroker broker_{loop_};
    Board board_;
    int requests_ = 0;
};

TEST_F(Mqtt, T11_2_ConnectAndSubscribe) {
    start();
    ASSERT_TRUE(until([this] { return !broker_.subscribed.empty(); }));
    EXPECT_EQ(broker_.connects.at(0).level, 5U);
    EXPECT_EQ(broker_.connects.at(0).properties.numbers.at(kRequestResponseInformation), 1U);
    EXPECT_EQ(broker_.connects.at(0).properties.user.at(0).second, kAgentId);
}

TEST_F(Mqtt, T11_4_AssignedClientIdIsUsedAgain) {
    broker_.script.assignedClientId = "given";
    start();
    ASSERT_TRUE(until([this] { return !broker_.published.empty(); }));
    broker_.breakConnections();
    ASSERT_TRUE(until([this] { return broker_.connects.size() >= 2; }));
    EXPECT_EQ(broker_.connects.at(1).clientId, "given");
}

TEST_F(Mqtt, T11_5_ClientIdIsStored) {
    broker_.script.assignedClientId = "given";
    start();
    ASSERT_TRUE(until([this] { return !broker_.published.empty(); }));
    board_.mustRun({"down"});
    start();
    ASSERT_TRUE(until([this] { return broker_.connects.size() >= 2; }));
    EXPECT_EQ(broker_.connects.back().clientId, "given");
}

TEST_F(Mqtt, T11_6_ReconnectsAfterALoss) {
    start();
    ASSERT_TRUE(until([this] { return !broker_.published.empty(); }));
    const auto lost = std::chrono::steady_clock::now();
    broker_.breakConnections();
    ASSERT_TRUE(until([this] { return broker_.connects.size() >= 2; }));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - lost).count();
    EXPECT_GE(seconds, 4.5);
    EXPECT_LE(seconds, 11.5);
}

TEST_F(Mqtt, T11_7_KeepAliveIsKept) {
    broker_.script.keepAlive = 5;
    start();
    ASSERT_TRUE(until([this] { return broker_.connects.size() == 1; }));
    EXPECT_TRUE(until([this] { return broker_.pings > 0; }));
}

TEST_F(Mqtt, T11_8_SubscribeTopicsOfTheBroker) {
    broker_.script.subscribeTopics = {"from/the/broker"};
    start();
    EXPECT_TRUE(until(
        [this] { return std::count(broker_.subscribed.begin(), broker_.subscribed.end(), "from/the/broker") == 1; }));
}

TEST_F(Mqtt, T11_9_ResponseInformationIsSubscribedAndUsed) {
    broker_.script.responseInformation = "answers/for/you";
    start();
    ASSERT_TRUE(until([this] { return !broker_.published.empty(); }));
    EXPECT_EQ(std::count(broker_.subscribed.begin(), broker_.subscribed.end(), "answers/for/you"), 1);
    EXPECT_EQ(broker_.published.at(0).properties.texts.at(kResponseTopic), "answers/for/you");
    EXPECT_EQ(recordOf(broker_.published.at(0)).mqtt_connect().subscribed_topic(), "answers/for/you");
}

TEST_F(Mqtt, T11_10_ConfiguredTopicIsSubscribedWithoutResponseInformation) {
    start();
    ASSERT_TRUE(until([this] { return !broker_.published.empty(); }));
    EXPECT_EQ(std::count(broker_.subscribed.begin(), broker_.subscribed.end(), "/usp/endpoint"), 1);
    EXPECT_EQ(broker_.published.at(0).properties.texts.at(kResponseTopic), "/usp/endpoint");
}

TEST_F(Mqtt, T11_11_RefusedSubscriptionsEndTheConnection) {
    broker_.script.refusesAll = true;
    start();
    EXPECT_TRUE(until([this] { return broker_.disconnects > 0; }));
    EXPECT_TRUE(broker_.published.empty());
}

TEST_F(Mqtt, T11_12_OneRefusedSubscriptionLeavesTheOther) {
    broker_.script.subscribeTopics = {"from/the/broker"};
    broker_.script.refused = {"from/the/broker"};
    start();
    ASSERT_TRUE(until([this] { return !broker_.published.empty(); }));
    EXPECT_EQ(broker_.disconnects, 0);
    EXPECT_TRUE(isAnswered("/usp/endpoint", "usp.msg", "answer/one"));
}

TEST_F(Mqtt, T11_13_PublishHasContentTypeAndResponseTopic) {
    start();
    ASSERT_TRUE(until([this] { return !broker_.published.empty(); }));
    EXPECT_EQ(broker_.published.at(0).topic, "/usp/controller");
    EXPECT_EQ(broker_.published.at(0).properties.texts.at(kContentType), "usp.msg");
    EXPECT_EQ(broker_.published.at(0).properties.texts.at(kResponseTopic), "/usp/endpoint");
}

TEST_F(Mqtt, T11_14_ContentTypesAreAccepted) {
    start();
    ASSERT_TRUE(until([this] { return !broker_.published.empty(); }));
    EXPECT_TRUE(isAnswered("/usp/endpoint", "usp.msg", "answer/one"));
    EXPECT_TRUE(isAnswered("/usp/endpoint", "application/vnd.bbf.usp.msg", "answer/two"));
    EXPECT_TRUE(isAnswered("/usp/endpoint", "", "answer/three"));
}

TEST_F(Mqtt, T11_15_QosOneIsPublishedAsSuch) {
    const std::string file = board_.stateFolder() + "/qos.json";
    std::ofstream(file) << R"({"mqtt": [{"name": "lab", "url": "mqtt://127.0.0.1:)" << broker_.port()
                        << R"(", "qos": 1}], "controllers": [{"endpointId": ")" << kControllerId
                        << R"(", "mtps": [{"mqtt": "lab", "topic": "/usp/controller"}]}]})";
    board_.mustRun({"up", "--usp-config", file});
    ASSERT_TRUE(until([this] { return !broker_.published.empty(); }));
    EXPECT_EQ(broker_.published.at(0).qos, 1U);
}

TEST_F(Mqtt, T11_16_WaitsGrowWhileTheBrokerRefuses) {
    using Clock = std::chrono::steady_clock;
    start();
    ASSERT_TRUE(until([this] { return !broker_.published.empty(); }));
    constexpr unsigned kServerUnavailable = 0x88;
    broker_.script.connectCode = kServerUnavailable;
    broker_.breakConnections();
    ASSERT_TRUE(until([this] { return broker_.connects.size() >= 2; }));
    const auto second = Clock::now();
    ASSERT_TRUE(until([this] { return broker_.connects.size() >= 3; }));
    EXPECT_GE(std::chrono::duration<double>(Clock::now() - second).count(), 9.5);
}

TEST_F(Mqtt, T11_17_ConnectRecordComesFirst) {
    start();
    ASSERT_TRUE(until([this] { return !broker_.published.empty(); }));
    const usp_record::Record record = recordOf(broker_.published.at(0));
    ASSERT_TRUE(record.has_mqtt_connect()) << record.DebugString();
    EXPECT_EQ(record.mqtt_connect().version(), usp_record::MQTTConnectRecord::V5);
    EXPECT_EQ(record.mqtt_connect().subscribed_topic(), "/usp/endpoint");
}

}  // namespace
}  // namespace quorvel::agent_test
