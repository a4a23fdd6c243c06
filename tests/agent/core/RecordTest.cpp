// Records: which are taken, which dropped, and what goes out with them.
#include <nlohmann/json.hpp>

#include "tests/agent/core/AgentWorld.h"

namespace quorvel::agent_test {
namespace {

class ConformanceRecord : public AgentWorld {
  protected:
    ConformanceRecord() {
        start();
        connect();
        greeting = transports.sent;
        transports.sent.clear();
        traced.clear();
    }

    static usp::Msg getMessage() {
        usp::Msg message = request(usp::Header::GET);
        message.mutable_header()->set_msg_id("m1");
        message.mutable_body()->mutable_request()->mutable_get()->add_param_paths("Device.LocalAgent.EndpointID");
        return message;
    }
    void expectSilence(const usp_record::Record& record, const std::string& reason) {
        transports.sent.clear();
        (void)agent->onRecord(record.SerializeAsString(), {1, "t", "reply"});
        EXPECT_TRUE(transports.sent.empty()) << reason;
        ASSERT_FALSE(traced.empty());
        EXPECT_NE(traced.back().dropped.find(reason), std::string::npos) << traced.back().dropped;
    }
    usp::Error errorTo(const usp_record::Record& record) {
        transports.sent.clear();
        deliver(record);
        usp::Msg message;
        if (transports.sent.size() == 1) {
            EXPECT_TRUE(message.ParseFromString(transports.sent[0].record.no_session_context().payload()));
        }
        return message.body().error();
    }

    std::vector<ScriptedTransports::Sent> greeting;
};

TEST_F(ConformanceRecord, 2_1_ARecordFromTheAgentsOwnIdIsDropped) {
    expectSilence(record(getMessage(), kAgent), "agent's own");
}

TEST_F(ConformanceRecord, 2_2_ARecordToAnotherIsDropped) {
    expectSilence(record(getMessage(), kController, "os::other"), "to_id is \"os::other\"");
}

TEST_F(ConformanceRecord, 3_1_JunkIsDropped) {
    EXPECT_FALSE(agent->onRecord("\xff\xff junk", {1, "t", "reply"}));
    EXPECT_EQ(traced.back().dropped, "not a USP Record");
    usp_record::Record empty;
    empty.set_version("1.4");
    EXPECT_FALSE(agent->onRecord(empty.SerializeAsString(), {1, "t", "reply"}));
    EXPECT_TRUE(transports.sent.empty());
}

TEST_F(ConformanceRecord, 7_1_AWebSocketSessionBeginsWithAConnectRecord) {
    Channel session;
    session.protocol = Protocol::kWebSocket;
    session.id = 7;
    session.endpointId = kController;
    agent->onConnected(session);
    ASSERT_EQ(transports.sent.size(), 1U);
    EXPECT_TRUE(transports.sent[0].record.has_websocket_connect());
    EXPECT_EQ(transports.sent[0].destination.channel, 7U);
}

TEST_F(ConformanceRecord, 11_3_AnMqttConnectionBeginsWithAConnectRecord) {
    ASSERT_EQ(greeting.size(), 1U);
    EXPECT_TRUE(greeting[0].record.has_mqtt_connect());
    EXPECT_EQ(greeting[0].record.version(), "1.4");
    EXPECT_EQ(greeting[0].record.mqtt_connect().version(), usp_record::MQTTConnectRecord::V5);
    EXPECT_EQ(greeting[0].record.mqtt_connect().subscribed_topic(), "/usp/endpoint");
    EXPECT_EQ(greeting[0].destination.topic, "/usp/controller");
    EXPECT_EQ(greeting[0].record.from_id(), kAgent);
    EXPECT_EQ(greeting[0].record.to_id(), kController);
}

TEST_F(ConformanceRecord, UnknownControllersAreDropped) {
    expectSilence(record(getMessage(), "proto::stranger"), "not an enabled controller");
}

TEST_F(ConformanceRecord, ASessionContextIsRefusedWithADisconnectRecord) {
    usp_record::Record session = record(getMessage());
    session.mutable_session_context()->set_session_id(1);
    deliver(session);
    ASSERT_EQ(transports.sent.size(), 1U);
    EXPECT_EQ(transports.sent[0].record.disconnect().reason_code(), 7106U);
    EXPECT_EQ(transports.sent[0].destination.topic, "reply");
    // The next Record is a Connect again.
    deliver(record(getMessage()));
    ASSERT_EQ(transports.sent.size(), 3U);
    EXPECT_TRUE(transports.sent[1].record.has_mqtt_connect());
    EXPECT_TRUE(transports.sent[2].record.has_no_session_context());
}

TEST_F(ConformanceRecord, ADisconnectRecordIsNotAnsweredAndAsksForAConnect) {
    usp_record::Record goodbye = record(getMessage());
    goodbye.mutable_disconnect()->set_reason("bye");
    deliver(goodbye);
    EXPECT_TRUE(transports.sent.empty());
    usp_record::Record hello = record(getMessage());
    (void)hello.mutable_mqtt_connect();
    deliver(hello);
    ASSERT_EQ(transports.sent.size(), 1U);
    EXPECT_TRUE(transports.sent[0].record.has_mqtt_connect());
    deliver(hello);
    EXPECT_EQ(transports.sent.size(), 1U);
}

TEST_F(ConformanceRecord, AnswersCarryTheVersionOfThePeersLastRecord) {
    usp_record::Record old = record(getMessage());
    old.set_version("1.2");
    deliver(old);
    EXPECT_EQ(transports.sent.back().record.version(), "1.2");
    old.set_version("abc");
    old.mutable_no_session_context()->set_payload(getMessage().SerializeAsString());
    deliver(old);
    EXPECT_EQ(transports.sent.back().record.version(), "1.2");
}

TEST_F(ConformanceRecord, WhatIsNotPlainTextIsAnError) {
    usp_record::Record secure = record(getMessage());
    secure.set_payload_security(usp_record::Record::TLS12);
    EXPECT_EQ(errorTo(secure).err_code(), 7102U);
    secure.set_payload_security(static_cast<usp_record::Record::PayloadSecurity>(9));
    EXPECT_EQ(errorTo(secure).err_code(), 7104U);
    secure.mutable_no_session_context()->set_payload("\xff");
    EXPECT_EQ(errorTo(secure).err_code(), 0U);
}

TEST_F(ConformanceRecord, MessagesThatSayNothingAreErrors) {
    usp::Msg empty;
    empty.mutable_header()->set_msg_id("x");
    EXPECT_EQ(errorTo(record(empty)).err_code(), 7004U);
    (void)empty.mutable_body()->mutable_request();
    EXPECT_EQ(errorTo(record(empty)).err_code(), 7004U);
    usp::Msg odd = getMessage();
    odd.mutable_header()->set_msg_type(static_cast<usp::Header::MsgType>(99));
    EXPECT_EQ(errorTo(record(odd)).err_code(), 7004U);
    // A request of a later version.
    usp_record::Record later = record(empty);
    later.mutable_no_session_context()->set_payload(std::string("\x0a\x03\x0a\x01x\x12\x05\x0a\x03\xa2\x01\x00", 12));
    EXPECT_EQ(errorTo(later).err_code(), 7001U);
}

TEST_F(ConformanceRecord, RequestsThatAnAgentDoesNotTakeAreErrors) {
    usp::Msg message = request(usp::Header::NOTIFY);
    message.mutable_header()->set_msg_id("n");
    (void)message.mutable_body()->mutable_request()->mutable_notify();
    EXPECT_EQ(errorTo(record(message)).err_code(), 7001U);
    (void)message.mutable_body()->mutable_request()->mutable_register_();
    EXPECT_EQ(errorTo(record(message)).err_code(), 7001U);
    (void)message.mutable_body()->mutable_request()->mutable_deregister();
    EXPECT_EQ(errorTo(record(message)).err_code(), 7001U);
}

TEST_F(ConformanceRecord, MessagesWithoutAnIdAndResponsesAreNeverAnswered) {
    usp::Msg nameless = getMessage();
    nameless.mutable_header()->clear_msg_id();
    deliver(record(nameless));
    respondToNotify("x", "nobody asked");
    usp::Msg error;
    error.mutable_header()->set_msg_id("e");
    error.mutable_body()->mutable_error()->set_err_code(7000);
    deliver(record(error));
    EXPECT_TRUE(transports.sent.empty());
}

TEST_F(ConformanceRecord, TheTypeInTheHeaderOnlyInforms) {
    usp::Msg message = getMessage();
    message.mutable_header()->set_msg_type(usp::Header::DELETE);
    deliver(record(message));
    usp::Msg answer;
    ASSERT_TRUE(answer.ParseFromString(transports.sent.back().record.no_session_context().payload()));
    EXPECT_TRUE(answer.body().response().has_get_resp());
}

TEST_F(ConformanceRecord, ARequestWithoutAResponseTopicIsAnsweredAtTheConfiguredTopic) {
    deliver(record(getMessage()), "");
    EXPECT_EQ(transports.sent.back().destination.topic, "/usp/controller");
    deliver(record(getMessage()), "my/topic");
    EXPECT_EQ(transports.sent.back().destination.topic, "my/topic");
    set("Device.LocalAgent.Controller.1.MTP.1.MQTT.", {{"Topic", ""}});
    transports.sent.clear();
    deliver(record(getMessage()), "");
    EXPECT_TRUE(transports.sent.empty());
    EXPECT_NE(logged.back().find("Response Topic"), std::string::npos);
}

TEST_F(ConformanceRecord, ARequestInWorkIsNotDoneTwice) {
    gateway.holding = true;
    usp::Msg message = request(usp::Header::SET);
    message.mutable_header()->set_msg_id("same");
    auto& update = *message.mutable_body()->mutable_request()->mutable_set()->add_update_objs();
    update.set_obj_path("Device.WiFi.SSID.1.");
    auto& setting = *update.add_param_settings();
    setting.set_param("SSID");
    setting.set_value("x");
    deliver(record(message));
    deliver(record(message));
    gateway.release();
    EXPECT_EQ(gateway.count("set"), 1U);
    deliver(record(message));
    EXPECT_EQ(gateway.count("set"), 2U);
}

TEST_F(ConformanceRecord, AWebSocketPeerIsKnownByItsFirstRecord) {
    Channel session;
    session.protocol = Protocol::kWebSocket;
    session.id = 8;
    agent->onConnected(session);
    EXPECT_TRUE(transports.sent.empty());
    EXPECT_TRUE(agent->onRecord(record(getMessage()).SerializeAsString(), {8, "", ""}));
    ASSERT_EQ(transports.sent.size(), 2U);
    EXPECT_TRUE(transports.sent[0].record.has_websocket_connect());
    EXPECT_EQ(transports.sent[1].destination.channel, 8U);
    agent->onLost(8, "closed");
    EXPECT_FALSE(agent->status().at("sessions").empty());
}

TEST_F(ConformanceRecord, LargeRecordsAreDroppedAndCounted) {
    const std::string large(kMaxRecord + 1, 'x');
    EXPECT_TRUE(agent->onRecord(large, {1, "t", ""}));
    agent->onDropped(large.size(), {1, "t", ""}, "too large");
    EXPECT_EQ(agent->status().at("counters").at("dropped"), 2);
}

TEST_F(ConformanceRecord, TheTraceHidesSecrets) {
    set("Device.MQTT.Client.1.", {{"Password", "psst"}});
    bool seen = false;
    for (const TraceEntry& entry : traced) {
        const std::string text = toJson(entry).dump();
        EXPECT_EQ(text.find("psst"), std::string::npos);
        seen = seen || text.find("****") != std::string::npos;
    }
    EXPECT_TRUE(seen);
    const auto last = toJson(traced.back());
    EXPECT_EQ(last.at("direction"), "sent");
    EXPECT_EQ(last.at("topic"), "reply");
    EXPECT_EQ(last.at("to"), kController);
    EXPECT_EQ(last.at("record").at("version"), "1.4");
    EXPECT_TRUE(last.at("message").at("body").contains("response"));
}

TEST_F(ConformanceRecord, GoodbyesAreSaidBeforeTheEnd) {
    agent->stop("the board is going down");
    ASSERT_FALSE(transports.sent.empty());
    EXPECT_TRUE(transports.sent.back().record.has_disconnect());
    EXPECT_EQ(transports.stopped, "the board is going down");
}

TEST_F(ConformanceRecord, ABrokenChannelLosesNothingElse) {
    transports.broken = true;
    EXPECT_FALSE(ask(getMessage()).has_body());
    transports.broken = false;
    usp::Msg again = getMessage();
    again.mutable_header()->set_msg_id("m2");
    EXPECT_TRUE(ask(again).has_body());
}

}  // namespace
}  // namespace quorvel::agent_test
