#pragma once

// Keeps what transports report.

#include <chrono>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/EventLoop.h"
#include "agent/mtp/Mtp.h"

namespace quorvel::agent_test {

struct RecordingListener final : agent::MtpListener {
    struct Received {
        std::string bytes;
        agent::Source source;
    };
    struct Dropped {
        std::size_t size = 0;
        agent::Source source;
        std::string reason;
    };

    void onConnected(const agent::Channel& channel) override {
        connected.push_back(channel);
    }
    void onLost(std::uint64_t channel, const std::string& reason) override {
        lost.emplace_back(channel, reason);
    }
    [[nodiscard]] bool onRecord(std::string_view bytes, const agent::Source& source) override {
        received.push_back({std::string(bytes), source});
        if (answer) answer(source);
        return bytes != "junk";
    }
    void onDropped(std::size_t size, const agent::Source& source, const std::string& reason) override {
        dropped.push_back({size, source, reason});
    }
    void onStatus(const std::string& object, const std::string& parameter, const std::string& value) override {
        status[object + parameter] = value;
        statuses.insert(object + parameter + "=" + value);
    }

    std::vector<agent::Channel> connected;
    std::vector<std::pair<std::uint64_t, std::string>> lost;
    std::vector<Received> received;
    std::vector<Dropped> dropped;
    std::map<std::string, std::string> status;
    std::set<std::string> statuses;  ///< every "path=value" that there ever was
    std::function<void(const agent::Source&)> answer;
};

/// Serves the loop until `done`, at most ten seconds. Returns whether it came true.
template <typename Condition>
[[nodiscard]] bool serveUntil(agent::EventLoop& loop, Condition done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!done()) {
        if (std::chrono::steady_clock::now() > end) return false;
        (void)loop.once(std::chrono::milliseconds(50));
    }
    return true;
}

}  // namespace quorvel::agent_test
