#include "agent/program/Runner.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace quorvel::agent {
namespace {

constexpr std::chrono::milliseconds kStatusInterval(1000);
constexpr std::chrono::milliseconds kSleep(60000);
// A controller that is started next should find its agent listening, but a broker may be away for long.
constexpr std::chrono::seconds kFirstConnection(2);
constexpr std::chrono::milliseconds kLook(50);
// How long a board that is up may take to say so.
constexpr std::chrono::seconds kPatience(10);

// Tells whether every transport is up.
bool isReachable(const nlohmann::ordered_json& status) {
    const auto& mtps = status.at("mtps");
    return !mtps.empty() && std::all_of(mtps.begin(), mtps.end(),
                                        [](const nlohmann::ordered_json& mtp) { return mtp.at("status") == "Up"; });
}

void logLine(const std::string& line) {
    std::cerr << line << '\n';
}

}  // namespace

Runner::Runner(const Config& config)
    : gateway_(loop_, config.stateFolder, logLine),
      transports_(loop_, config.tls),
      trace_(loop_, [this](auto entries) { gateway_.reportTrace(std::move(entries)); }),
      agent_(config, gateway_, transports_,
             {.random = {}, .trace = [this](const TraceEntry& entry) { trace_.add(entry); }, .log = logLine}) {
    transports_.listen(agent_);
    gateway_.onEnd = [this] {
        ended_ = "the board is down";
        stopped_ = true;
    };
}

void Runner::start() {
    bool ready = false;
    gateway_.onReady = [&ready] { ready = true; };
    if (!gateway_.connect()) throw std::runtime_error("no board is up there; start it first");
    const auto deadline = EventLoop::Clock::now() + kPatience;
    while (!ready && EventLoop::Clock::now() < deadline)
        (void)loop_.once(kStatusInterval);
    gateway_.onReady = {};
    if (!ready) throw std::runtime_error("the board does not answer; is its host process stopped?");
    agent_.start();
    const auto connected = EventLoop::Clock::now() + kFirstConnection;
    while (!isReachable(agent_.status()) && EventLoop::Clock::now() < connected)
        (void)loop_.once(kLook);
    reportStatus();
}

void Runner::stop() {
    stopped_ = true;
    loop_.stop();
}

std::string Runner::run() {
    bool served = true;
    while (!stopped_) {
        // The status changes with what is served; without anything to do the agent sleeps.
        const auto untilStatus = std::chrono::ceil<std::chrono::milliseconds>(nextStatus_ - EventLoop::Clock::now());
        served = loop_.once(served ? std::max(untilStatus, std::chrono::milliseconds(0)) : kSleep) || served;
        if (served && lookAfterwards()) served = false;
    }
    if (ended_.empty()) ended_ = "the agent was ended";
    agent_.stop(ended_);
    trace_.flush();
    return ended_;
}

// Returns whether it was time for it.
bool Runner::lookAfterwards() {
    const auto now = EventLoop::Clock::now();
    if (now < nextStatus_) return false;
    nextStatus_ = now + kStatusInterval;
    reportStatus();
    return true;
}

void Runner::reportStatus() {
    const nlohmann::ordered_json status = agent_.status();
    std::string text = status.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    if (text == lastStatus_) return;
    lastStatus_ = std::move(text);
    gateway_.reportStatus(status);
}

}  // namespace quorvel::agent
