// Commands of the library and of the board.
#include <variant>

#include "tests/agent/core/AgentWorld.h"

namespace quorvel::agent_test {
namespace {

using namespace std::chrono_literals;

class CommandOf : public AgentWorld {
  protected:
    CommandOf() {
        start();
        connect();
        subscribe("op", "OperationComplete", "Device.");
        (void)notifies();
    }

    usp::OperateResp::OperationResult run(const std::string& command,
                                          const std::map<std::string, std::string>& arguments = {}) {
        const usp::OperateResp answer = operate(command, arguments).body().response().operate_resp();
        EXPECT_EQ(answer.operation_results_size(), 1);
        return answer.operation_results(0);
    }

    std::string outcome(const std::string& name = "Status") {
        const auto told = notifies();
        if (told.size() != 1) return "told " + std::to_string(told.size());
        const auto& outputs = told[0].oper_complete().req_output_args().output_args();
        return outputs.contains(name) ? outputs.at(name) : "?";
    }
};

TEST_F(CommandOf, UnknownPathsFailsWithItsCode) {
    EXPECT_EQ(run("Device.Nothing()").cmd_failure().err_code(), 7026U);
    EXPECT_EQ(run("Device.WiFi.AccessPoint.9.Security.Reset()").cmd_failure().err_code(), 7016U);
    EXPECT_EQ(run("Device.LocalAgent.EndpointID").cmd_failure().err_code(), 7026U);
    EXPECT_EQ(operate("Device.LocalAgent.Request.*.Cancel()").body().response().operate_resp().operation_results_size(),
              0);
}

TEST_F(CommandOf, NeighboursScansEveryRadioThatIsUp) {
    EXPECT_EQ(run("Device.WiFi.NeighboringWiFiDiagnostic()").req_obj_path(), "Device.LocalAgent.Request.1.");
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    const auto& outputs = told[0].oper_complete().req_output_args().output_args();
    EXPECT_EQ(outputs.at("Status"), "Complete");
    EXPECT_EQ(outputs.at("Result.1.SSID"), "next door");
    EXPECT_EQ(outputs.at("Result.2.Radio"), "wl2");
    gateway.values["Device.WiFi.Radio.2.Status"] = "Down";
    gateway.calls.clear();
    run("Device.WiFi.NeighboringWiFiDiagnostic()");
    EXPECT_EQ(gateway.count("scan"), 1U);
    EXPECT_EQ(outcome(), "Complete");
}

TEST_F(CommandOf, NeighboursSaysWhenNothingCouldBeScanned) {
    gateway.scanFails = "busy";
    run("Device.WiFi.NeighboringWiFiDiagnostic()");
    EXPECT_EQ(outcome(), "Error");
}

TEST_F(CommandOf, NeighboursHoldsUpNothingElse) {
    gateway.holding = true;
    EXPECT_TRUE(operate("Device.WiFi.NeighboringWiFiDiagnostic()").has_body());
    EXPECT_EQ(value("Device.LocalAgent.RequestNumberOfEntries"), "1");
    EXPECT_EQ(value("Device.LocalAgent.EndpointID"), kAgent);
    EXPECT_TRUE(add(kSubscriptionTable, {{"ID", "meanwhile"}}).body().has_response());
    gateway.release();
    EXPECT_EQ(value("Device.LocalAgent.RequestNumberOfEntries"), "0");
}

TEST_F(CommandOf, ResetRestartsTheRadios) {
    EXPECT_TRUE(run("Device.WiFi.Reset()").has_req_output_args());
    EXPECT_EQ(gateway.count("set CommitSettings=true"), 1U);
    EXPECT_TRUE(run("Device.WiFi.AccessPoint.2.Security.Reset()").has_req_output_args());
    EXPECT_EQ(gateway.count("set AccessPoint.2.Security.Reset=true"), 1U);
    gateway.saveFails = "full";
    EXPECT_EQ(run("Device.WiFi.Reset()").cmd_failure().err_code(), 7022U);
    gateway.refused["Device.WiFi.CommitSettings"] = "no";
    EXPECT_EQ(run("Device.WiFi.Reset()").cmd_failure().err_code(), 7022U);
}

TEST_F(CommandOf, PushButtonFollowsTheExchange) {
    const std::string status = "Device.WiFi.AccessPoint.1.WPS.Status";
    const std::pair<const char*, const char*> ends[] = {{"2", "Success"}, {"3", "Error_Timeout"}, {"0", "Error_Other"}};
    for (const auto& [code, name] : ends) {
        run("Device.WiFi.AccessPoint.1.WPS.InitiateWPSPBC()");
        pass(2s);
        EXPECT_TRUE(notifies().empty());
        gateway.values[status] = code;
        pass(1s);
        EXPECT_EQ(outcome(), name);
    }
    run("Device.WiFi.AccessPoint.1.WPS.InitiateWPSPBC()");
    pass(151s);
    EXPECT_EQ(outcome(), "Error_Timeout");
    gateway.values["Device.WiFi.AccessPoint.1.WPS.Enable"] = "false";
    run("Device.WiFi.AccessPoint.1.WPS.InitiateWPSPBC()");
    EXPECT_EQ(outcome(), "Error_Not_Ready");
}

TEST_F(CommandOf, CancelEndsATimer) {
    run("Device.ScheduleTimer()", {{"DelaySeconds", "100"}});
    EXPECT_TRUE(run("Device.LocalAgent.Request.1.Cancel()").has_req_output_args());
    pass(0s);
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].oper_complete().cmd_failure().err_code(), 7023U);
    pass(100s);
    EXPECT_TRUE(notifies().empty());
    EXPECT_EQ(run("Device.LocalAgent.Request.1.Cancel()").cmd_failure().err_code(), 7016U);
}

TEST_F(CommandOf, CancelLeavesAnExchangeAlone) {
    run("Device.WiFi.AccessPoint.1.WPS.InitiateWPSPBC()");
    EXPECT_EQ(run("Device.LocalAgent.Request.1.Cancel()").cmd_failure().err_code(), 7022U);
}

TEST_F(CommandOf, WebSocketResetConnectsAnew) {
    add("Device.LocalAgent.Controller.1.MTP.", {{"Protocol", "WebSocket"}});
    EXPECT_TRUE(run("Device.LocalAgent.Controller.1.MTP.2.WebSocket.Reset()").has_req_output_args());
    EXPECT_EQ(transports.resets, std::vector<std::string>{"Device.LocalAgent.Controller.1.MTP.2.WebSocket."});
}

TEST_F(CommandOf, FactoryResetForgetsWhatControllersHaveSet) {
    add("Device.LocalAgent.Controller.", {{"EndpointID", "proto::ctl-2"}});
    set("Device.DeviceInfo.", {{"FriendlyName", "box"}});
    gateway.onPower = [this] { gateway.listener->onRebooted(); };
    EXPECT_TRUE(run("Device.FactoryReset()").has_req_output_args());
    EXPECT_EQ(gateway.count("power factory"), 1U);
    connect(2);
    EXPECT_EQ(value("Device.LocalAgent.SubscriptionNumberOfEntries"), "0");
    EXPECT_EQ(value("Device.LocalAgent.ControllerNumberOfEntries"), "1");
    EXPECT_EQ(value("Device.DeviceInfo.FriendlyName"), "");
}

TEST_F(CommandOf, RebootThatIsRefusedIsLoggedAndForgotten) {
    gateway.powerFails = "the board was not started by up";
    run("Device.Reboot()");
    EXPECT_NE(logged.back().find("could not be restarted"), std::string::npos);
}

TEST_F(CommandOf, RebootEndsRequestsAndVolatileSubscriptions) {
    run("Device.ScheduleTimer()", {{"DelaySeconds", "5"}});
    gateway.onPower = [this] { gateway.listener->onRebooted(); };
    run("Device.Reboot()");
    connect(2);
    EXPECT_EQ(value("Device.LocalAgent.RequestNumberOfEntries"), "0");
    EXPECT_EQ(value("Device.LocalAgent.SubscriptionNumberOfEntries"), "0");
    EXPECT_EQ(value("Device.LocalAgent.UpTime"), "0");
    pass(10s);
    EXPECT_EQ(value("Device.LocalAgent.UpTime"), "10");
    EXPECT_TRUE(notifies().empty());
}

}  // namespace
}  // namespace quorvel::agent_test
