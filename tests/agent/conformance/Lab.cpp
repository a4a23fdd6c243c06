#include "tests/agent/conformance/Lab.h"

namespace quorvel::agent_test {
namespace {

std::unique_ptr<Lab>& held() {
    static std::unique_ptr<Lab> lab;
    return lab;
}

// Ends the board while the test program still runs.
class EndOfLab final : public testing::Environment {
  public:
    void TearDown() override {
        Lab::end();
    }
};

[[maybe_unused]] testing::Environment* const kEnd = testing::AddGlobalTestEnvironment(new EndOfLab);

}  // namespace

Lab::Lab() : webSocketPort(freePort()) {
    board.mustRun(
        {"up", "--usp", broker.url(), "--usp", "ws-listen://127.0.0.1:" + std::to_string(webSocketPort) + "/usp"});
}

Lab& Lab::instance() {
    if (held() == nullptr) held() = std::make_unique<Lab>();
    return *held();
}

void Lab::end() {
    held().reset();
}

Tp469::Tp469()
    : controller_(mqttCarrier(lab_.broker.port(), "/usp/endpoint", "/usp/controller"), {kControllerId, kAgentId}) {}

Tp469::~Tp469() {
    (void)controller_.ask(del(true, {std::string(kSubscriptions) + "*."}));
}

std::string Tp469::subscribe(const std::string& id, const std::string& type, const std::string& references,
                             const std::vector<Param>& more) {
    const usp::Msg answer = ask(add(false, {subscription(id, type, references, more)}));
    const std::string row = createdRow(answer);
    EXPECT_NE(row, "") << answer.DebugString();
    return row;
}

std::string Tp469::value(const std::string& path) {
    const auto values = valuesOf(ask(get({path})));
    const auto found = values.find(path);
    return found == values.end() ? "(none)" : found->second;
}

}  // namespace quorvel::agent_test
