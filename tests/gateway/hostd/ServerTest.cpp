#include "gateway/hostd/Server.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <future>
#include <nlohmann/json.hpp>
#include <thread>

#include "tests/gateway/hostd/fake/FakePlugin.h"

namespace quorvel::hostd {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kPatience = 10000;

// A server with one client. What the WLAN manager's simulation is asked hangs until the test lets it go.
class OneClient : public testing::Test {
  protected:
    OneClient() {
        fake::reset();
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_) != 0) throw std::runtime_error("no sockets");
        server_ = std::make_unique<Server>(
            service_, heartbeat_,
            Server::Settings{ends_[1], -1, [] { return std::string("the manager is stopped"); }, [] { return 0U; }});
        running_ = std::thread([this] { ended_ = server_->run(); });
    }
    ~OneClient() override {
        letGo();
        waitUntilServed();
        (void)close(ends_[0]);
        running_.join();
    }

    void letGo() {
        if (!released_) release_.set_value();
        released_ = true;
    }

    void send(const std::string& text) {
        ASSERT_EQ(write(ends_[0], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    // Until the request that hung has returned: a server that ends before that leaves its worker behind, with which
    // only the end of the process gets on.
    void waitUntilServed() {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatience);
        while (std::chrono::steady_clock::now() < deadline) {
            send("{\"id\":\"served\",\"do\":\"ping\"}\n");
            Json answer = line();
            while (answer.is_object() && answer.value("id", Json()) != "served")
                answer = line();
            if (answer == Json{{"id", "served"}, {"done", true}}) return;
        }
        ADD_FAILURE() << "no request is served any more";
    }

    Json line() {
        for (;;) {
            const std::size_t end = pending_.find('\n');
            if (end != std::string::npos) {
                const Json parsed = Json::parse(pending_.substr(0, end));
                pending_.erase(0, end + 1);
                return parsed;
            }
            pollfd waiting{ends_[0], POLLIN, 0};
            if (poll(&waiting, 1, kPatience) != 1) return "silence";
            char buffer[4096];
            const ssize_t count = read(ends_[0], buffer, sizeof buffer);
            if (count <= 0) return "gone";
            pending_.append(buffer, static_cast<std::size_t>(count));
        }
    }

    Plugin plugin_{QUORVEL_FAKE_PLUGIN};
    Heartbeat heartbeat_;
    std::promise<void> release_;
    std::shared_future<void> released_future_ = release_.get_future().share();
    bool released_ = false;
    Service service_{plugin_,
                     heartbeat_,
                     {[this](const std::string&) {
                          released_future_.wait();
                          return std::string("{\"ok\":true}");
                      },
                      [] { return Json::object(); }}};
    int ends_[2] = {-1, -1};
    std::unique_ptr<Server> server_;
    std::thread running_;
    std::atomic<bool> ended_ = false;
    std::string pending_;
};

TEST_F(OneClient, GetsAnAnswerThatRepeatsTheIdAndEnds) {
    send("{\"id\":7,\"do\":\"get\",\"paths\":[\"Device.WiFi.Radio.1.Channel\"]}\n");
    EXPECT_EQ(line(), (Json{{"id", 7}, {"values", {{{"path", "Device.WiFi.Radio.1.Channel"}, {"value", 36}}}}}));
    EXPECT_EQ(line(), (Json{{"id", 7}, {"done", true}}));
}

TEST_F(OneClient, MaySendARequestInPiecesAndSeveralAtOnce) {
    send("{\"id\":1,\"do\"");
    send(":\"ping\"}\n{\"id\":2,\"do\":\"ping\"}\n");
    EXPECT_EQ(line(), (Json{{"id", 1}, {"done", true}}));
    EXPECT_EQ(line(), (Json{{"id", 2}, {"done", true}}));
}

TEST_F(OneClient, IsToldWhenARequestMakesNoSense) {
    send("what?\n");
    EXPECT_EQ(line().at("faults")[0].at("reason"), "no JSON object of at most 100 levels");
    send("[]\n");
    EXPECT_EQ(line().at("faults")[0].at("reason"), "no JSON object of at most 100 levels");
    std::string deep = R"({"id":)";
    deep.append(200000, '[').append(200000, ']').append(R"(,"do":"ping"})").push_back('\n');
    send(deep);
    EXPECT_EQ(line().at("faults")[0].at("reason"), "no JSON object of at most 100 levels");
    send("{\"id\":3,\"do\":\"get\"}\n");
    const Json answer = line();
    EXPECT_EQ(answer.at("id"), 3);
    EXPECT_EQ(answer.at("faults")[0].at("code"), 7003);
    EXPECT_EQ(line(), (Json{{"id", 3}, {"done", true}}));
}

TEST_F(OneClient, IsToldWhatTheManagerDoesWhenThePlugInDoesNotReturn) {
    send("{\"id\":4,\"do\":\"control\",\"command\":{}}\n");
    const Json answer = line();
    EXPECT_EQ(answer.at("id"), 4);
    EXPECT_EQ(answer.at("faults")[0].at("reason"), "the manager is stopped");
    EXPECT_TRUE(answer.contains("done"));
    // The next request does not wait for the one that hangs, and the server still says that it is there.
    send("{\"id\":5,\"do\":\"ping\"}\n{\"id\":6,\"do\":\"alive\"}\n");
    EXPECT_EQ(line().at("faults")[0].at("reason"), "the manager is stopped");
    EXPECT_EQ(line(), (Json{{"id", 6}, {"done", true}}));
    // Once it returns, requests are served again.
    letGo();
    waitUntilServed();
}

TEST_F(OneClient, HearsOfEventsItAskedFor) {
    server_->publish({{"station", "unheard"}});
    send("{\"id\":8,\"do\":\"events\"}\n");
    EXPECT_EQ(line(), (Json{{"id", 8}, {"listening", true}}));
    server_->publish({{"station", "02:00:00:00:00:01"}});
    EXPECT_EQ(line(), (Json{{"id", 8}, {"event", {{"station", "02:00:00:00:00:01"}}}}));
    send("{\"id\":9,\"do\":\"unsubscribe\"}\n");
    EXPECT_EQ(line(), (Json{{"id", 8}, {"done", true}}));
    EXPECT_EQ(line(), (Json{{"id", 9}, {"done", true}}));
}

}  // namespace
}  // namespace quorvel::hostd
