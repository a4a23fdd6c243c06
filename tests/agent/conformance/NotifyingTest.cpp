// Notifications, their retries and their ends.
#include <chrono>

#include "tests/agent/conformance/Lab.h"

namespace quorvel::agent_test {
namespace {

using Clock = std::chrono::steady_clock;

class Notifying : public Tp469 {
  protected:
    void provision(const std::string& code) {
        const usp::Msg answer = ask(set(false, {{"Device.DeviceInfo.", {{"ProvisioningCode", code}}}}));
        EXPECT_FALSE(answer.body().has_error()) << answer.DebugString();
    }
    static double secondsSince(Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    }
};

const std::string kCode = "Device.DeviceInfo.ProvisioningCode";

TEST_F(Notifying, T1_52_ValueChange) {
    (void)subscribe("vc", "ValueChange", kCode);
    provision("T1_52");
    const auto notify = controller_.awaitNotify("vc");
    ASSERT_TRUE(notify);
    EXPECT_EQ(notify->value_change().param_path(), kCode);
    EXPECT_EQ(notify->value_change().param_value(), "T1_52");
    EXPECT_FALSE(notify->send_resp());
}

TEST_F(Notifying, T1_53_DeletedSubscriptionIsSilent) {
    const std::string row = subscribe("vc", "ValueChange", kCode);
    (void)subscribe("other", "ValueChange", kCode);
    (void)ask(del(false, {row}));
    provision("T1_53");
    EXPECT_TRUE(controller_.awaitNotify("other"));
    EXPECT_FALSE(controller_.awaitNotify("vc", 500));
}

TEST_F(Notifying, T1_54_RetriesUntilTheAnswer) {
    (void)subscribe("vc", "ValueChange", kCode, {{"NotifRetry", "true"}});
    provision("T1_54");
    ASSERT_TRUE(controller_.awaitNotify("vc", 10000, false));
    const auto first = Clock::now();
    ASSERT_TRUE(controller_.awaitNotify("vc", 12000, false));
    EXPECT_GE(secondsSince(first), 4.5);
    EXPECT_LE(secondsSince(first), 11.5);
    const auto second = Clock::now();
    ASSERT_TRUE(controller_.awaitNotify("vc", 22000, true));
    EXPECT_GE(secondsSince(second), 9.5);
    EXPECT_FALSE(controller_.awaitNotify("vc", 3000));
}

TEST_F(Notifying, T1_56_RetriesEndWithNotifExpiration) {
    (void)subscribe("vc", "ValueChange", kCode, {{"NotifRetry", "true"}, {"NotifExpiration", "7"}});
    provision("T1_56");
    ASSERT_TRUE(controller_.awaitNotify("vc", 10000, false));
    // A retry may come after 5 to 7 seconds; none comes after that.
    (void)controller_.awaitNotify("vc", 7500, false);
    EXPECT_FALSE(controller_.awaitNotify("vc", 12000, false));
}

TEST_F(Notifying, T1_55_SubscriptionEndsWithTimeToLive) {
    const std::string row = subscribe("vc", "ValueChange", kCode, {{"TimeToLive", "3"}});
    const auto end = Clock::now() + std::chrono::seconds(10);
    while (!instancesOf(ask(instances({kSubscriptions}))).empty() && Clock::now() < end)
        (void)controller_.await([](const Arrival&) { return false; }, 200);
    EXPECT_TRUE(instancesOf(ask(instances({kSubscriptions}))).empty());
    provision("T1_55");
    EXPECT_FALSE(controller_.awaitNotify("vc", 500));
}

TEST_F(Notifying, T1_57_ObjectCreation) {
    (void)subscribe("made", "ObjectCreation", kSubscriptions);
    const std::string row = subscribe("another", "ValueChange", kCode);
    const auto notify = controller_.awaitNotify("made");
    ASSERT_TRUE(notify);
    EXPECT_EQ(notify->obj_creation().obj_path(), row);
    EXPECT_EQ(notify->obj_creation().unique_keys().at("ID"), "another");
    EXPECT_EQ(notify->obj_creation().unique_keys().count("Recipient"), 1U);
}

TEST_F(Notifying, T1_58_ObjectDeletion) {
    (void)subscribe("gone", "ObjectDeletion", kSubscriptions);
    const std::string row = subscribe("another", "ValueChange", kCode);
    (void)ask(del(false, {row}));
    const auto notify = controller_.awaitNotify("gone");
    ASSERT_TRUE(notify);
    EXPECT_EQ(notify->obj_deletion().obj_path(), row);
}

TEST_F(Notifying, T1_59_Periodic) {
    (void)subscribe("clock", "Event", "Device.LocalAgent.Periodic!");
    const usp::Msg answer = ask(set(false, {{kOwnController, {{"PeriodicNotifInterval", "60"}}}}));
    ASSERT_FALSE(answer.body().has_error()) << answer.DebugString();
    ASSERT_TRUE(controller_.awaitNotify("clock", 70000));
    const auto first = Clock::now();
    const auto notify = controller_.awaitNotify("clock", 70000);
    ASSERT_TRUE(notify);
    EXPECT_EQ(notify->event().event_name(), "Periodic!");
    EXPECT_NEAR(secondsSince(first), 60, 4);
}

TEST_F(Notifying, T1_60_OnBoardRequest) {
    const usp::Msg answer = ask(operate(std::string(kOwnController) + "SendOnBoardRequest()", "on-board"));
    EXPECT_TRUE(answer.body().response().operate_resp().operation_results(0).has_req_output_args())
        << answer.DebugString();
    const auto notify = controller_.awaitNotify("");
    ASSERT_TRUE(notify && notify->has_on_board_req());
    EXPECT_TRUE(notify->send_resp());
    EXPECT_EQ(notify->on_board_req().oui(), "025176");
    EXPECT_EQ(notify->on_board_req().serial_number(), "QW3-000001");
    EXPECT_NE(notify->on_board_req().product_class(), "");
    EXPECT_NE(notify->on_board_req().agent_supported_protocol_versions().find("1.4"), std::string::npos);
}

TEST_F(Notifying, T1_84_ReferenceListWithWildcard) {
    const std::string boot =
        createdRow(ask(add(false, {{std::string(kOwnController) + "BootParameter.",
                                    {{"Enable", "false"}, {"ParameterName", "Device.DeviceInfo.UpTime"}}}})));
    ASSERT_NE(boot, "");
    (void)subscribe("any", "ValueChange", "Device.LocalAgent.Controller.*.BootParameter.*.Enable");
    (void)ask(set(false, {{boot, {{"Enable", "true"}}}}));
    const auto notify = controller_.awaitNotify("any");
    (void)ask(del(false, {boot}));
    ASSERT_TRUE(notify);
    EXPECT_EQ(notify->value_change().param_path(), boot + "Enable");
}

TEST_F(Notifying, T1_101_OnBoardingIsNotCompleteAfterARequest) {
    (void)ask(set(false, {{kOwnController, {{"OnBoardingComplete", "true"}}}}));
    (void)ask(operate(std::string(kOwnController) + "SendOnBoardRequest()", "on-board"));
    EXPECT_TRUE(controller_.awaitNotify(""));
    EXPECT_EQ(value(std::string(kOwnController) + "OnBoardingComplete"), "false");
}

TEST_F(Notifying, T1_102_OnBoardRequestIsRepeatedUntilItIsComplete) {
    (void)ask(set(false, {{kOwnController, {{"OnBoardingRestartTime", "2"}}}}));
    (void)ask(operate(std::string(kOwnController) + "SendOnBoardRequest()", "on-board"));
    EXPECT_TRUE(controller_.awaitNotify(""));
    EXPECT_TRUE(controller_.awaitNotify(""));
    (void)ask(set(false, {{kOwnController, {{"OnBoardingComplete", "true"}, {"OnBoardingRestartTime", "0"}}}}));
    while (controller_.awaitNotify("", 100)) {
    }
    EXPECT_FALSE(controller_.awaitNotify("", 4000));
}

TEST_F(Notifying, T1_103_OnBoardRequestIsNotRepeatedAtZero) {
    (void)ask(set(false, {{kOwnController, {{"OnBoardingRestartTime", "0"}}}}));
    (void)ask(operate(std::string(kOwnController) + "SendOnBoardRequest()", "on-board"));
    EXPECT_TRUE(controller_.awaitNotify(""));
    EXPECT_FALSE(controller_.awaitNotify("", 4000));
}

TEST_F(Notifying, T9_9_AddedControllerIsNotified) {
    const std::string row = createdRow(
        ask(add(false, {{"Device.LocalAgent.Controller.", {{"EndpointID", "proto::added"}, {"Enable", "true"}}}})));
    ASSERT_NE(row, "");
    const usp::Msg way = ask(add(false, {{row + "MTP.",
                                          {{"Protocol", "MQTT"},
                                           {"Enable", "true"},
                                           {"MQTT.Topic", "/usp/added"},
                                           {"MQTT.AgentMTPReference", "Device.LocalAgent.MTP.1"}}}}));
    ASSERT_NE(createdRow(way), "") << way.DebugString();
    Controller added(mqttCarrier(lab_.broker.port(), "/usp/endpoint", "/usp/added"), {"proto::added", kAgentId});
    (void)ask(operate(row + "SendOnBoardRequest()", "on-board"));
    const auto notify = added.awaitNotify("");
    EXPECT_TRUE(notify && notify->has_on_board_req());
    (void)ask(del(false, {row}));
}

TEST_F(Notifying, T9_10_BootWithParameters) {
    const std::string boot =
        createdRow(ask(add(false, {{std::string(kOwnController) + "BootParameter.",
                                    {{"Enable", "true"}, {"ParameterName", "Device.LocalAgent.EndpointID"}}}})));
    ASSERT_NE(boot, "");
    (void)subscribe("boot", "Event", "Device.Boot!", {{"Persistent", "true"}});
    (void)ask(operate("Device.Reboot()", "why-not"));
    const auto notify = controller_.awaitNotify("boot", 30000);
    ASSERT_TRUE(notify);
    EXPECT_EQ(notify->event().params().at("Cause"), "RemoteReboot");
    EXPECT_EQ(notify->event().params().at("CommandKey"), "why-not");
    EXPECT_EQ(notify->event().params().count("FirmwareUpdated"), 1U);
    EXPECT_NE(notify->event().params().at("ParameterMap").find(kAgentId), std::string::npos);
    (void)ask(del(false, {boot}));
}

}  // namespace
}  // namespace quorvel::agent_test
