#include "agent/scripted/Performance.h"

#include <algorithm>
#include <iostream>
#include <random>
#include <stdexcept>

namespace quorvel::agent {
namespace {

constexpr std::chrono::seconds kPatience(10);
constexpr std::chrono::milliseconds kLook(50);
// The player's clock begins at 0; dates need a day.
constexpr BoardInstant kBeginning{std::chrono::sys_days{std::chrono::year{2026} / 1 / 1}};

void logLine(const std::string& line) {
    std::cerr << line << '\n';
}

}  // namespace

Performance::Performance(const Config& config, std::uint64_t seed, std::int64_t start)
    : now_(kBeginning + std::chrono::milliseconds(start)),
      board_(loop_, config.stateFolder, logLine),
      gateway_(board_),
      broker_(
          timers_, [this] { return now_; }, seed) {
    bool ready = false;
    board_.onReady = [&ready] { ready = true; };
    if (!board_.connect()) throw std::runtime_error("no board is up in " + config.stateFolder);
    const auto deadline = EventLoop::Clock::now() + kPatience;
    while (!ready && EventLoop::Clock::now() < deadline)
        (void)loop_.once(kLook);
    board_.onReady = {};
    if (!ready) throw std::runtime_error("the board in " + config.stateFolder + " does not answer");
    gateway_.setTime(now_);
    agent_ =
        std::make_unique<Agent>(config, gateway_, broker_,
                                Agent::Surroundings{.random =
                                                        [engine = std::mt19937_64(seed)]() mutable {
                                                            return std::uniform_real_distribution<double>(0, 1)(engine);
                                                        },
                                                    .trace = {},
                                                    .log = logLine});
    broker_.listen(*agent_);
    controller_ = std::make_unique<ScriptedController>(config.controllers.front().endpointId, agent_->endpointId());
    broker_.subscribe([this](const std::string& record, const std::string& topic) { receive(record, topic); });
    agent_->start();
    awaitIdle();
}

Performance::~Performance() = default;

void Performance::receive(const std::string& record, const std::string& topic) {
    if (topic != ControllerMtpConfig{}.topic) return;  // the controller listens elsewhere
    std::optional<Json> arrival = controller_->read(record);
    if (!arrival) return;
    (*arrival)["time"] = (now_ - kBeginning).count();
    arrivals_.push_back(std::move(*arrival));
    const std::optional<std::string> response = controller_->responseTo(record);
    if (response) (void)broker_.publish(*response, MqttClientConfig{}.topic, ControllerMtpConfig{}.topic);
}

void Performance::setTime(BoardInstant now) {
    now_ = std::max(now_, now);
    gateway_.setTime(now_);
}

// A library that a step has made hang answers later.
void Performance::awaitIdle() {
    const auto deadline = EventLoop::Clock::now() + kPatience;
    while (loop_.once(std::chrono::milliseconds(0)) ||
           (!gateway_.isIdle() && EventLoop::Clock::now() < deadline && (loop_.once(kLook), true))) {
    }
}

std::optional<BoardInstant> Performance::nextDue() const {
    const std::optional<BoardInstant> own = timers_.next();
    const std::optional<BoardInstant> agent = agent_->nextDue();
    if (!own || !agent) return own ? own : agent;
    return std::min(*own, *agent);
}

// What needs no board happens at its own time, in its order.
void Performance::workUntil(BoardInstant now) {
    for (auto next = nextDue(); next && *next <= now; next = nextDue()) {
        setTime(*next);
        while (auto due = timers_.take(now_))
            due->second();
        agent_->tick(now_);
    }
}

Json Performance::go(std::int64_t now) {
    const BoardInstant until = kBeginning + std::chrono::milliseconds(now);
    gateway_.hold();
    workUntil(until);
    setTime(until);
    gateway_.release();
    gateway_.probe();
    awaitIdle();
    gateway_.look();
    awaitIdle();
    // Answers that are on their way, and what the controller replies to them.
    workUntil(until);
    awaitIdle();
    workUntil(until);
    Json answer{{"arrivals", std::exchange(arrivals_, Json::array())}};
    if (const auto next = timers_.next()) answer["next"] = (*next - kBeginning).count();
    return answer;
}

Json Performance::steerBroker(const Json& command) {
    const std::string how = command.value("how", "");
    if (how == "down") {
        broker_.goDown();
    } else if (how == "up") {
        broker_.comeUp();
        broker_.setDelay(std::chrono::milliseconds(0));
    } else if (how == "slow") {
        broker_.setDelay(std::chrono::milliseconds(command.value("delay", 0)));
    } else {
        return {{"error", "the broker can be down, up or slow, not \"" + how + "\""}};
    }
    return Json::object();
}

Json Performance::sendRequest(const Json& command) {
    const std::string record = controller_->request(command.value("id", ""), command);
    const bool taken = broker_.publish(record, MqttClientConfig{}.topic, ControllerMtpConfig{}.topic);
    return {{"lost", !taken}};
}

Json Performance::perform(const Json& command) {
    const std::string op = command.value("op", "");
    try {
        if (op == "go") return go(command.value("now", std::int64_t{0}));
        if (op == "broker") return steerBroker(command);
        if (op == "request") return sendRequest(command);
    } catch (const std::invalid_argument& error) {
        return {{"error", error.what()}};
    } catch (const Json::exception& error) {
        return {{"error", std::string("the command has wrong members: ") + error.what()}};
    }
    return {{"error", "there is no command \"" + op + "\"; use go, broker or request"}};
}

int perform(const Config& config, std::uint64_t seed, std::int64_t start) {
    Performance performance(config, seed, start);
    std::cout << Json{{"ready", true}} << std::endl;
    for (std::string line; std::getline(std::cin, line);) {
        const Json command = Json::parse(line, nullptr, false);
        const Json answer = command.is_object() ? performance.perform(command)
                                                : Json{{"error", "a command is a JSON object on one line"}};
        std::cout << answer.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
    }
    return 0;
}

}  // namespace quorvel::agent
