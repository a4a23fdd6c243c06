// Limits: rows, requests in work, answers that are too large.
#include "tests/agent/core/AgentWorld.h"

namespace quorvel::agent_test {
namespace {

class LimitOf : public AgentWorld {
  protected:
    LimitOf() {
        start();
        connect();
    }
};

TEST_F(LimitOf, SubscriptionsIsAThousand) {
    usp::Msg message = request(usp::Header::ADD);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_add();
    asked.set_allow_partial(true);
    for (int i = 0; i < 1001; ++i)
        asked.add_create_objs()->set_obj_path(kSubscriptionTable);
    const usp::AddResp answer = ask(message).body().response().add_resp();
    EXPECT_TRUE(answer.created_obj_results(999).oper_status().has_oper_success());
    EXPECT_EQ(answer.created_obj_results(1000).oper_status().oper_failure().err_code(), 7005U);
    EXPECT_EQ(value("Device.LocalAgent.SubscriptionNumberOfEntries"), "1000");
    // Refused as a whole, nothing stays; a row that goes makes room.
    EXPECT_EQ(add(kSubscriptionTable, {}).body().error().param_errs(0).err_code(), 7005U);
    remove({"Device.LocalAgent.Subscription.500."});
    const usp::Msg again = add(kSubscriptionTable, {});
    EXPECT_EQ(
        again.body().response().add_resp().created_obj_results(0).oper_status().oper_success().instantiated_path(),
        "Device.LocalAgent.Subscription.1001.");
}

TEST_F(LimitOf, ControllersIsAHundred) {
    for (int i = 2; i <= 100; ++i)
        EXPECT_TRUE(add("Device.LocalAgent.Controller.", {}).body().has_response()) << i;
    EXPECT_EQ(add("Device.LocalAgent.Controller.", {}).body().error().param_errs(0).err_code(), 7005U);
}

TEST_F(LimitOf, RequestsInWorkIsAThousandOfOneController) {
    gateway.holding = true;
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(get({"Device.WiFi.SSID.1.SSID"}).req_path_results_size(), 0);
    usp::Msg message = request(usp::Header::GET);
    message.mutable_body()->mutable_request()->mutable_get()->add_param_paths("Device.WiFi.SSID.1.SSID");
    EXPECT_EQ(ask(message).body().error().err_code(), 7005U);
    const std::size_t before = transports.sent.size();
    gateway.release();
    EXPECT_EQ(transports.sent.size(), before + 1000);
    EXPECT_TRUE(ask(message).body().has_response());
}

TEST_F(LimitOf, QueuedWritesDoNotNest) {
    gateway.holding = true;
    for (int i = 0; i < 900; ++i)
        set("Device.WiFi.SSID.1.", {{"SSID", std::to_string(i)}});
    gateway.release();
    EXPECT_EQ(gateway.values["Device.WiFi.SSID.1.SSID"], "899");
}

TEST_F(LimitOf, AnAnswerThatNoRecordHoldsIsAnError) {
    for (int i = 0; i < 5; ++i)
        gateway.values["Device.WiFi.SSID." + std::to_string(10 + i) + ".SSID"] = std::string(1U << 20U, 'x');
    usp::Msg message = request(usp::Header::GET);
    message.mutable_body()->mutable_request()->mutable_get()->add_param_paths("Device.WiFi.SSID.*.SSID");
    EXPECT_EQ(ask(message).body().error().err_code(), 7005U);
}

TEST_F(LimitOf, ALongPathIsRefused) {
    const std::string path = "Device." + std::string(5000, 'x');
    EXPECT_EQ(get({path}).req_path_results(0).err_code(), 7008U);
}

}  // namespace
}  // namespace quorvel::agent_test
