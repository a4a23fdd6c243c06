// Operate, and what comes back later.
#include "tests/agent/conformance/Lab.h"

namespace quorvel::agent_test {
namespace {

class Operating : public Tp469 {
  protected:
    static const auto& result(const usp::Msg& answer) {
        return answer.body().response().operate_resp().operation_results(0);
    }
    void expectSilence(const std::string& request) {
        controller_.drain();
        const std::string id = controller_.post(request);
        (void)ask("get_supported_protocol { controller_supported_protocol_versions: '1.4' }");
        for (const Arrival& arrival : controller_.arrivals)
            EXPECT_FALSE(arrival.message && arrival.message->header().msg_id() == id) << arrival.message->DebugString();
    }
    // Waits until the agent has come back with a Connect Record.
    bool awaitConnect(int milliseconds) {
        return controller_.await([](const Arrival& arrival) { return arrival.record.has_mqtt_connect(); }, milliseconds)
            .has_value();
    }
};

const std::vector<Param> kSoon = {{"DelaySeconds", "1"}};

TEST_F(Operating, T1_61_SynchronousCommandWithAnswer) {
    const usp::Msg answer = ask(operate("Device.Reboot()", "reboot-1"));
    ASSERT_TRUE(result(answer).has_req_output_args()) << answer.DebugString();
    EXPECT_EQ(result(answer).req_output_args().output_args_size(), 0);
    EXPECT_EQ(result(answer).executed_command(), "Device.Reboot()");
    EXPECT_TRUE(awaitConnect(30000));
    EXPECT_NE(value("Device.LocalAgent.EndpointID"), "(none)");
}

TEST_F(Operating, T1_62_SynchronousCommandWithoutAnswer) {
    const std::string id = controller_.post(operate("Device.Reboot()", "reboot-2", false));
    EXPECT_TRUE(awaitConnect(30000));
    (void)ask("get_supported_protocol { controller_supported_protocol_versions: '1.4' }");
    for (const Arrival& arrival : controller_.arrivals)
        EXPECT_FALSE(arrival.message && arrival.message->header().msg_id() == id);
}

TEST_F(Operating, T1_64_AsynchronousCommandWithAnswer) {
    (void)subscribe("done", "OperationComplete", "Device.ScheduleTimer()");
    const usp::Msg answer = ask(operate("Device.ScheduleTimer()", "timer-1", true, kSoon));
    EXPECT_TRUE(result(answer).req_obj_path().starts_with("Device.LocalAgent.Request.")) << answer.DebugString();
    const auto notify = controller_.awaitNotify("done");
    ASSERT_TRUE(notify);
    EXPECT_EQ(notify->oper_complete().command_key(), "timer-1");
}

TEST_F(Operating, T1_65_AsynchronousCommandWithoutAnswer) {
    (void)subscribe("done", "OperationComplete", "Device.ScheduleTimer()");
    expectSilence(operate("Device.ScheduleTimer()", "timer-2", false, kSoon));
    EXPECT_TRUE(controller_.awaitNotify("done"));
}

TEST_F(Operating, T1_79_OperationCompletes) {
    (void)subscribe("done", "OperationComplete", "Device.ScheduleTimer()");
    (void)ask(operate("Device.ScheduleTimer()", "timer-3", true, kSoon));
    const auto notify = controller_.awaitNotify("done");
    ASSERT_TRUE(notify);
    EXPECT_EQ(notify->oper_complete().obj_path(), "Device.");
    EXPECT_EQ(notify->oper_complete().command_name(), "ScheduleTimer()");
    EXPECT_TRUE(notify->oper_complete().has_req_output_args());
}

TEST_F(Operating, T1_91_UnknownArgumentIsIgnored) {
    (void)subscribe("done", "OperationComplete", "Device.ScheduleTimer()");
    const usp::Msg answer =
        ask(operate("Device.ScheduleTimer()", "timer-4", true, {{"DelaySeconds", "1"}, {"Invalid", "1"}}));
    EXPECT_TRUE(result(answer).has_req_obj_path()) << answer.DebugString();
    EXPECT_TRUE(controller_.awaitNotify("done"));
}

TEST_F(Operating, T1_100_MissingArgumentIsRefused) {
    (void)subscribe("done", "OperationComplete", "Device.ScheduleTimer()");
    const usp::Msg answer = ask(operate("Device.ScheduleTimer()", "timer-5"));
    ASSERT_TRUE(result(answer).has_cmd_failure()) << answer.DebugString();
    EXPECT_EQ(result(answer).cmd_failure().err_code(), 7027U);
    EXPECT_FALSE(controller_.awaitNotify("done", 2000));
}

TEST_F(Operating, T9_11_TimerOfOneSecond) {
    (void)subscribe("done", "OperationComplete", "Device.ScheduleTimer()");
    (void)ask(operate("Device.ScheduleTimer()", "timer-6", true, kSoon));
    EXPECT_TRUE(controller_.awaitNotify("done"));
}

}  // namespace
}  // namespace quorvel::agent_test
