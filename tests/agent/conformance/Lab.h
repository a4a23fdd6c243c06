#pragma once

// The device under test: one board with its agent and broker for all tests, and a controller for each.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/agent/conformance/Requests.h"
#include "tests/agent/controller/Controller.h"
#include "tests/agent/controller/Rig.h"

namespace quorvel::agent_test {

inline constexpr const char* kSubscriptions = "Device.LocalAgent.Subscription.";
inline constexpr const char* kOwnController = "Device.LocalAgent.Controller.1.";

/// Started by the first test that needs it, ended after the last.
struct Lab {
    Lab();
    [[nodiscard]] static Lab& instance();
    static void end();

    Broker broker;
    int webSocketPort;
    Board board;
};

/// A test of TP-469 over MQTT. Subscriptions that it leaves behind are deleted.
class Tp469 : public testing::Test {
  protected:
    Tp469();
    ~Tp469() override;

    usp::Msg ask(const std::string& request) {
        return controller_.ask(request);
    }
    /// Adds a subscription and returns its row; fails the test when it is refused.
    std::string subscribe(const std::string& id, const std::string& type, const std::string& references,
                          const std::vector<Param>& more = {});
    [[nodiscard]] std::string value(const std::string& path);

    Lab& lab_ = Lab::instance();
    Controller controller_;
};

}  // namespace quorvel::agent_test
