// Notifications and commands, by the numbers of TP-469.
#include <nlohmann/json.hpp>

#include "tests/agent/core/AgentWorld.h"

namespace quorvel::agent_test {
namespace {

using namespace std::chrono_literals;

class ConformanceNotify : public AgentWorld {
  protected:
    ConformanceNotify() {
        start();
        connect();
        (void)notifies();
    }
};

TEST_F(ConformanceNotify, 1_52_AChangedValueIsNotified) {
    subscribe("vc", "ValueChange", "Device.LocalAgent.Controller.1.ProvisioningCode");
    (void)notifies();
    set("Device.LocalAgent.Controller.1.", {{"ProvisioningCode", "new"}});
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].subscription_id(), "vc");
    EXPECT_FALSE(told[0].send_resp());
    EXPECT_EQ(told[0].value_change().param_path(), "Device.LocalAgent.Controller.1.ProvisioningCode");
    EXPECT_EQ(told[0].value_change().param_value(), "new");
    // The answer comes first, and a value that stays tells nothing.
    set("Device.LocalAgent.Controller.1.", {{"ProvisioningCode", "new"}});
    EXPECT_TRUE(notifies().empty());
}

TEST_F(ConformanceNotify, 1_53_ADeletedSubscriptionNotifiesNothing) {
    const std::string row = subscribe("vc", "ValueChange", "Device.LocalAgent.Controller.1.ProvisioningCode");
    remove({row});
    (void)notifies();
    set("Device.LocalAgent.Controller.1.", {{"ProvisioningCode", "new"}});
    EXPECT_TRUE(notifies().empty());
}

TEST_F(ConformanceNotify, 1_54_WithoutANotifyRespTheNotifyIsRepeated) {
    subscribe("vc", "ValueChange", "Device.LocalAgent.Controller.1.ProvisioningCode", {{"NotifRetry", "true"}});
    set("Device.LocalAgent.Controller.1.", {{"ProvisioningCode", "new"}});
    ASSERT_EQ(notifies().size(), 1U);
    const std::string id = lastNotifyId;
    // Half way between 5 and 10 s, as the scripted random number has it; then between 10 and 20 s.
    pass(7499ms);
    EXPECT_TRUE(notifies().empty());
    pass(1ms);
    ASSERT_EQ(notifies().size(), 1U);
    EXPECT_EQ(lastNotifyId, id);
    pass(14999ms);
    EXPECT_TRUE(notifies().empty());
    pass(1ms);
    ASSERT_EQ(notifies().size(), 1U);
    respondToNotify("vc", id);
    pass(3h);
    EXPECT_TRUE(notifies().empty());
}

TEST_F(ConformanceNotify, 1_54_TheRetriesAreInTheirRangesToTheTenth) {
    random = 0;
    subscribe("vc", "ValueChange", "Device.LocalAgent.Controller.1.ProvisioningCode", {{"NotifRetry", "true"}});
    set("Device.LocalAgent.Controller.1.", {{"ProvisioningCode", "new"}});
    (void)notifies();
    for (int seconds = 5; seconds <= 2560; seconds *= 2) {
        pass(std::chrono::seconds(seconds) - 1ms);
        EXPECT_TRUE(notifies().empty()) << seconds;
        pass(1ms);
        EXPECT_EQ(notifies().size(), 1U) << seconds;
    }
    pass(2560s);
    EXPECT_EQ(notifies().size(), 1U);
}

TEST_F(ConformanceNotify, 1_55_ASubscriptionEndsWithItsTimeToLive) {
    const std::string row =
        subscribe("vc", "ValueChange", "Device.LocalAgent.Controller.1.ProvisioningCode", {{"TimeToLive", "20"}});
    pass(19s);
    EXPECT_EQ(value(row + "ID"), "vc");
    pass(1s);
    EXPECT_EQ(value(row + "ID"), "?");
}

TEST_F(ConformanceNotify, 1_56_RetriesEndWithNotifExpiration) {
    random = 0;
    subscribe("vc", "ValueChange", "Device.LocalAgent.Controller.1.ProvisioningCode",
              {{"NotifRetry", "true"}, {"NotifExpiration", "20"}});
    set("Device.LocalAgent.Controller.1.", {{"ProvisioningCode", "new"}});
    pass(20s);
    EXPECT_EQ(notifies().size(), 3U);  // at once, after 5 s and after 15 s
    pass(3h);
    EXPECT_TRUE(notifies().empty());
}

TEST_F(ConformanceNotify, 1_57_ACreatedObjectIsNotifiedWithItsKeys) {
    subscribe("oc", "ObjectCreation", kSubscriptionTable);
    EXPECT_TRUE(notifies().empty());
    add(kSubscriptionTable, {{"ID", "other"}});
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].obj_creation().obj_path(), "Device.LocalAgent.Subscription.2.");
    EXPECT_EQ(told[0].obj_creation().unique_keys().at("ID"), "other");
    EXPECT_EQ(told[0].obj_creation().unique_keys().at("Recipient"), "Device.LocalAgent.Controller.1");
}

TEST_F(ConformanceNotify, 1_58_ADeletedObjectIsNotified) {
    subscribe("od1", "ObjectDeletion", kSubscriptionTable);
    subscribe("od2", "ObjectDeletion", "Device.LocalAgent.Subscription.*.");
    const std::string row = subscribe("victim", "Event", "Device.Boot!");
    subscribe("od3", "ObjectDeletion", row);
    (void)notifies();
    remove({row});
    const auto told = notifies();
    ASSERT_EQ(told.size(), 3U);
    for (const auto& each : told)
        EXPECT_EQ(each.obj_deletion().obj_path(), row);
}

TEST_F(ConformanceNotify, 1_59_PeriodicComesAtItsInterval) {
    set("Device.LocalAgent.Controller.1.", {{"PeriodicNotifInterval", "60"}});
    subscribe("per", "Event", "Device.LocalAgent.Periodic!");
    pass(60s);
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].event().obj_path(), "Device.LocalAgent.");
    EXPECT_EQ(told[0].event().event_name(), "Periodic!");
    pass(59s);
    EXPECT_TRUE(notifies().empty());
    pass(1s);
    EXPECT_EQ(notifies().size(), 1U);
    // A jump over three intervals owes three.
    pass(180s);
    EXPECT_EQ(notifies().size(), 3U);
}

TEST_F(ConformanceNotify, 1_59_PeriodicKeepsThePhaseOfItsTime) {
    set("Device.LocalAgent.Controller.1.",
        {{"PeriodicNotifInterval", "3600"}, {"PeriodicNotifTime", "2026-01-31T11:30:00Z"}});
    subscribe("per", "Event", "Device.LocalAgent.");
    pass(30min - 1s);
    EXPECT_TRUE(notifies().empty());
    pass(1s);
    EXPECT_EQ(notifies().size(), 1U);
}

TEST_F(ConformanceNotify, 1_60_OnBoardRequestSaysWhoTheDeviceIs) {
    const usp::Msg answer = operate("Device.LocalAgent.Controller.1.SendOnBoardRequest()");
    EXPECT_TRUE(answer.body().response().operate_resp().operation_results(0).has_req_output_args());
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].subscription_id(), "");
    EXPECT_TRUE(told[0].send_resp());
    EXPECT_EQ(told[0].on_board_req().oui(), "001122");
    EXPECT_EQ(told[0].on_board_req().product_class(), "Simulated gateway");
    EXPECT_EQ(told[0].on_board_req().serial_number(), "42");
    EXPECT_EQ(told[0].on_board_req().agent_supported_protocol_versions(), "1.3,1.4");
    // It never expires.
    pass(24h);
    EXPECT_GT(notifies().size(), 10U);
    respondToNotify("", lastNotifyId);
    pass(24h);
    EXPECT_TRUE(notifies().empty());
}

TEST_F(ConformanceNotify, 1_101_OnBoardingCompleteIsFalseAfterARequest) {
    set("Device.LocalAgent.Controller.1.", {{"OnBoardingComplete", "true"}});
    operate("Device.LocalAgent.Controller.1.SendOnBoardRequest()");
    EXPECT_EQ(value("Device.LocalAgent.Controller.1.OnBoardingComplete"), "false");
}

TEST_F(ConformanceNotify, 1_102_OnBoardingRepeatsAfterItsRestartTime) {
    set("Device.LocalAgent.Controller.1.", {{"OnBoardingRestartTime", "120"}});
    operate("Device.LocalAgent.Controller.1.SendOnBoardRequest()");
    (void)notifies();
    respondToNotify("", lastNotifyId);
    pass(120s);
    ASSERT_EQ(notifies().size(), 1U);
    respondToNotify("", lastNotifyId);
    set("Device.LocalAgent.Controller.1.", {{"OnBoardingComplete", "true"}});
    pass(240s);
    EXPECT_TRUE(notifies().empty());
}

TEST_F(ConformanceNotify, 1_103_OnBoardingDoesNotRepeatWithARestartTimeOf0) {
    operate("Device.LocalAgent.Controller.1.SendOnBoardRequest()");
    (void)notifies();
    respondToNotify("", lastNotifyId);
    pass(24h);
    EXPECT_TRUE(notifies().empty());
}

TEST_F(ConformanceNotify, 1_61_RebootAnswersFirst) {
    bool answered = false;
    transports.sent.clear();
    gateway.onPower = [&] { answered = !transports.sent.empty(); };
    const usp::Msg answer = operate("Device.Reboot()");
    const auto& result = answer.body().response().operate_resp().operation_results(0);
    EXPECT_EQ(result.executed_command(), "Device.Reboot()");
    EXPECT_TRUE(result.has_req_output_args());
    EXPECT_TRUE(result.req_output_args().output_args().empty());
    EXPECT_TRUE(answered);
    EXPECT_EQ(gateway.count("power"), 1U);
}

TEST_F(ConformanceNotify, 1_62_RebootWithoutSendRespIsSilent) {
    const std::size_t before = transports.sent.size();
    operate("Device.Reboot()", {}, "", false);
    EXPECT_EQ(transports.sent.size(), before);
    EXPECT_EQ(gateway.count("power"), 1U);
}

TEST_F(ConformanceNotify, 1_64_AnAsynchronousCommandNamesItsRequestAndCompletes) {
    subscribe("op", "OperationComplete", "Device.ScheduleTimer()");
    const usp::Msg answer = operate("Device.ScheduleTimer()", {{"DelaySeconds", "10"}}, "key");
    const auto& result = answer.body().response().operate_resp().operation_results(0);
    EXPECT_EQ(result.req_obj_path(), "Device.LocalAgent.Request.1.");
    EXPECT_EQ(value("Device.LocalAgent.Request.1.Command"), "Device.ScheduleTimer()");
    EXPECT_EQ(value("Device.LocalAgent.Request.1.Originator"), kController);
    EXPECT_EQ(value("Device.LocalAgent.Request.1.CommandKey"), "key");
    pass(10s);
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].oper_complete().obj_path(), "Device.");
    EXPECT_EQ(told[0].oper_complete().command_name(), "ScheduleTimer()");
    EXPECT_EQ(told[0].oper_complete().command_key(), "key");
    EXPECT_TRUE(told[0].oper_complete().has_req_output_args());
    EXPECT_EQ(value("Device.LocalAgent.RequestNumberOfEntries"), "0");
}

TEST_F(ConformanceNotify, 1_65_AnAsynchronousCommandWithoutSendRespIsSilentAndCompletes) {
    subscribe("op", "OperationComplete", "Device.");
    (void)notifies();
    const std::size_t before = transports.sent.size();
    operate("Device.ScheduleTimer()", {{"DelaySeconds", "1"}}, "", false);
    EXPECT_EQ(transports.sent.size(), before);
    pass(1s);
    EXPECT_EQ(notifies().size(), 1U);
}

TEST_F(ConformanceNotify, 1_78_ADeletedControllersSubscriptionsGo) {
    add("Device.LocalAgent.Controller.", {{"EndpointID", "proto::ctl-2"}, {"Enable", "true"}});
    usp::Msg message = request(usp::Header::ADD);
    auto& object = *message.mutable_body()->mutable_request()->mutable_add()->add_create_objs();
    object.set_obj_path(kSubscriptionTable);
    ask(message, "proto::ctl-2");
    EXPECT_EQ(value("Device.LocalAgent.Subscription.1.Recipient"), "Device.LocalAgent.Controller.2");
    subscribe("od", "ObjectDeletion", "Device.LocalAgent.Controller.,Device.LocalAgent.Subscription.");
    (void)notifies();
    const usp::Msg answer = remove({"Device.LocalAgent.Controller.2."});
    EXPECT_TRUE(answer.body().has_response());
    EXPECT_EQ(notifies().size(), 2U);
    EXPECT_EQ(value("Device.LocalAgent.SubscriptionNumberOfEntries"), "1");
}

TEST_F(ConformanceNotify, 1_79_ScheduleTimerCompletes) {
    subscribe("op", "OperationComplete", "Device.LocalAgent.");
    subscribe("op2", "OperationComplete", "Device.ScheduleTimer()");
    operate("Device.ScheduleTimer()", {{"DelaySeconds", "2"}});
    pass(2s);
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].subscription_id(), "op2");
}

TEST_F(ConformanceNotify, 1_84_AReferenceListWithAWildcardNotifies) {
    add("Device.LocalAgent.Controller.1.BootParameter.", {{"ParameterName", "Device.DeviceInfo.SerialNumber"}});
    subscribe("vc", "ValueChange", "Device.LocalAgent.Controller.*.BootParameter.*.Enable");
    subscribe("search", "ValueChange",
              "Device.LocalAgent.Controller.[EndpointID==\"proto::ctl-1\"].BootParameter.1.Enable");
    subscribe("object", "ValueChange", "Device.LocalAgent.Controller.1");
    (void)notifies();
    set("Device.LocalAgent.Controller.1.BootParameter.1.", {{"Enable", "true"}});
    EXPECT_EQ(notifies().size(), 3U);
}

TEST_F(ConformanceNotify, 1_91_AnExtraArgumentIsIgnored) {
    const usp::Msg answer = operate("Device.ScheduleTimer()", {{"DelaySeconds", "2"}, {"Extra", "x"}});
    EXPECT_FALSE(answer.body().response().operate_resp().operation_results(0).has_cmd_failure());
}

TEST_F(ConformanceNotify, 1_100_AMissingArgumentFailsWithoutRequestOrNotify) {
    subscribe("op", "OperationComplete", "Device.ScheduleTimer()");
    const usp::Msg answer = operate("Device.ScheduleTimer()");
    EXPECT_EQ(answer.body().response().operate_resp().operation_results(0).cmd_failure().err_code(), 7027U);
    EXPECT_EQ(operate("Device.ScheduleTimer()", {{"DelaySeconds", "0"}})
                  .body()
                  .response()
                  .operate_resp()
                  .operation_results(0)
                  .cmd_failure()
                  .err_code(),
              7027U);
    EXPECT_EQ(value("Device.LocalAgent.RequestNumberOfEntries"), "0");
    pass(1h);
    EXPECT_TRUE(notifies().empty());
}

TEST_F(ConformanceNotify, 9_9_AnAddedControllerIsAskedOnBoard) {
    add("Device.LocalAgent.Controller.", {{"EndpointID", "proto::ctl-2"}, {"Enable", "true"}});
    add("Device.LocalAgent.Controller.2.MTP.",
        {{"Enable", "true"},
         {"Protocol", "MQTT"},
         {"MQTT.Topic", "ctl/2"},
         {"MQTT.AgentMTPReference", "Device.LocalAgent.MTP.[Protocol==\"MQTT\"]."}});
    EXPECT_EQ(value("Device.LocalAgent.Controller.2.MTP.1.MQTT.AgentMTPReference"), "Device.LocalAgent.MTP.1");
    operate("Device.LocalAgent.Controller.2.SendOnBoardRequest()");
    ASSERT_EQ(notifies().size(), 1U);
    EXPECT_EQ(transports.sent.back().record.to_id(), "proto::ctl-2");
    EXPECT_EQ(transports.sent.back().destination.topic, "ctl/2");
}

TEST_F(ConformanceNotify, 9_10_BootCarriesTheParameterMap) {
    subscribe("boot", "Event", "Device.Boot!", {{"Persistent", "true"}});
    subscribe("volatile", "Event", "Device.Boot!");
    add("Device.LocalAgent.Controller.1.BootParameter.",
        {{"Enable", "true"}, {"ParameterName", "Device.WiFi.SSID.*.SSID"}});
    add("Device.LocalAgent.Controller.1.BootParameter.",
        {{"Enable", "true"}, {"ParameterName", "Device.DeviceInfo.SerialNumber"}});
    gateway.onPower = [this] { gateway.listener->onRebooted(); };
    operate("Device.Reboot()", {{"Cause", "RemoteReboot"}, {"Reason", "a test"}}, "why");
    EXPECT_EQ(transports.closed.size(), 1U);
    EXPECT_TRUE(notifies().empty());  // the connection is about to end
    connect(2);
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].subscription_id(), "boot");
    const auto& params = told[0].event().params();
    EXPECT_EQ(told[0].event().obj_path(), "Device.");
    EXPECT_EQ(params.at("Cause"), "RemoteReboot");
    EXPECT_EQ(params.at("CommandKey"), "why");
    EXPECT_EQ(params.at("Reason"), "a test");
    EXPECT_EQ(params.at("FirmwareUpdated"), "false");
    const auto map = nlohmann::json::parse(params.at("ParameterMap"));
    EXPECT_EQ(map.at("Device.WiFi.SSID.2.SSID"), "net2");
    EXPECT_EQ(map.at("Device.DeviceInfo.SerialNumber"), "42");
    EXPECT_EQ(map.size(), 3U);
}

TEST_F(ConformanceNotify, 9_11_TimersOfSeveralControllersNotifyEachSubscriber) {
    subscribe("op", "OperationComplete", "Device.ScheduleTimer()");
    operate("Device.ScheduleTimer()", {{"DelaySeconds", "5"}}, "a");
    operate("Device.ScheduleTimer()", {{"DelaySeconds", "5"}}, "b");
    pass(5s);
    EXPECT_EQ(notifies().size(), 2U);
}

TEST_F(ConformanceNotify, ADisabledControllerHearsOfItLastAndIsRefused) {
    subscribe("vc", "ValueChange", "Device.LocalAgent.Controller.1.Enable");
    (void)notifies();
    const usp::Msg answer = set("Device.LocalAgent.Controller.1.", {{"Enable", "false"}});
    EXPECT_TRUE(answer.body().has_response());
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].value_change().param_value(), "false");
    EXPECT_EQ(get({"Device.LocalAgent.EndpointID"}).req_path_results_size(), 0);
    EXPECT_EQ(traced.back().dropped, "\"proto::ctl-1\" is not an enabled controller");
}

}  // namespace
}  // namespace quorvel::agent_test
