// Peers that ask for too much, and ends that come at any time. Not numbered: these go beyond TP-469.
#include <poll.h>

#include <chrono>
#include <csignal>

#include "tests/agent/conformance/Lab.h"

namespace quorvel::agent_test {
namespace {

class Robust : public testing::Test {
  protected:
    Robust() {
        up();
        controller_ = open();
    }
    void up() {
        board_.mustRun({"up", "--usp", broker_.url()});
    }
    [[nodiscard]] std::unique_ptr<Controller> open() const {
        return std::make_unique<Controller>(mqttCarrier(broker_.port(), "/usp/endpoint", "/usp/controller"),
                                            Controller::Names{kControllerId, kAgentId});
    }
    std::size_t countSubscriptions() {
        return instancesOf(controller_->ask(instances({kSubscriptions}))).size();
    }
    // Kills the agent and waits until another one can take its place.
    void killAgent() const {
        const pid_t agent = Board::agentProcess(board_.stateFolder());
        ASSERT_GT(agent, 0);
        ASSERT_EQ(kill(agent, SIGKILL), 0);
        for (int tries = 0; tries < 1000 && Board::agentProcess(board_.stateFolder()) == agent; ++tries)
            (void)poll(nullptr, 0, 10);
    }

    Broker broker_;
    Board board_;
    std::unique_ptr<Controller> controller_;
};

TEST_F(Robust, TenThousandAddsLeaveAThousandSubscriptions) {
    constexpr int kAdds = 10000;
    constexpr int kInOne = 100;
    int accepted = 0;
    for (int n = 0; n < kAdds; n += kInOne) {
        std::vector<Change> changes;
        for (int i = n; i < n + kInOne; ++i)
            changes.push_back(subscription("flood-" + std::to_string(i), "ValueChange", "Device.LocalAgent."));
        const usp::Msg answer = controller_->ask(add(true, changes));
        for (const auto& result : answer.body().response().add_resp().created_obj_results()) {
            if (result.oper_status().has_oper_success()) {
                ++accepted;
            } else {
                ASSERT_EQ(result.oper_status().oper_failure().err_code(), 7005U);
            }
        }
    }
    EXPECT_EQ(accepted, 1000);
    EXPECT_EQ(countSubscriptions(), 1000U);
    (void)controller_->ask(del(true, {std::string(kSubscriptions) + "*."}));
    EXPECT_EQ(countSubscriptions(), 0U);
}

TEST_F(Robust, FloodingControllerDoesNotKeepAnotherOrTheConsoleWaiting) {
    constexpr int kRequests = 2000;
    const std::unique_ptr<Controller> other = open();
    int answers = 0;
    for (int n = 0; n < kRequests; ++n)
        (void)controller_->post(get({"Device.LocalAgent."}));
    EXPECT_NE(board_.mustRun({"get", "Device.WiFi.RadioNumberOfEntries"}), "");
    EXPECT_FALSE(valuesOf(other->ask(get({"Device.LocalAgent.EndpointID"}))).empty());
    while (controller_->await([](const Arrival& arrival) { return arrival.message.has_value(); }, 5000))
        ++answers;
    EXPECT_GT(answers, 0);
    EXPECT_FALSE(valuesOf(controller_->ask(get({"Device.LocalAgent.EndpointID"}))).empty());
}

TEST_F(Robust, BrokerThatIsKilledAmidstRequestsIsFoundAgain) {
    for (int n = 0; n < 500; ++n)
        (void)controller_->post(get({"Device.LocalAgent."}));
    (void)controller_->await([](const Arrival& arrival) { return arrival.message.has_value(); });
    broker_.kill();
    broker_.start();
    controller_ = open();
    EXPECT_NE(board_.mustRun({"get", "Device.WiFi.RadioNumberOfEntries"}), "");
    // The agent comes back within 5 to 10 seconds, or 10 to 20 more.
    EXPECT_TRUE(controller_->await([](const Arrival& arrival) { return arrival.record.has_mqtt_connect(); }, 60000));
    EXPECT_FALSE(valuesOf(controller_->ask(get({"Device.LocalAgent.EndpointID"}))).empty());
}

TEST_F(Robust, AgentThatIsKilledKeepsTheOldOrTheNewState) {
    constexpr int kRounds = 6;
    constexpr int kAdds = 20;
    const Param persistent{"Persistent", "true"};
    std::size_t before = 0;
    for (int round = 0; round < kRounds; ++round) {
        for (int n = 0; n < kAdds; ++n) {
            const std::string id = "kept-" + std::to_string(round) + "-" + std::to_string(n);
            (void)controller_->post(
                add(false, {subscription(id, "ValueChange", "Device.DeviceInfo.ProvisioningCode", {persistent})}));
        }
        // Somewhere among the twenty.
        std::size_t answered = 0;
        for (int n = 0; n < round * 3; ++n) {
            const auto answer = controller_->await(
                [](const Arrival& each) { return each.message && !createdRow(*each.message).empty(); });
            ASSERT_TRUE(answer);
            ++answered;
        }
        killAgent();
        up();
        controller_ = open();
        const std::size_t now = countSubscriptions();
        // An Add that was answered is there; nothing is there twice, or in part.
        EXPECT_GE(now, before + answered);
        EXPECT_LE(now, before + kAdds);
        const auto ids = valuesOf(controller_->ask(get({std::string(kSubscriptions) + "*.ID"})));
        EXPECT_EQ(ids.size(), now);
        before = now;
    }
}

}  // namespace
}  // namespace quorvel::agent_test
