#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>
#include <string>

#include "agent/mtp/TransportSet.h"
#include "agent/mtp/WebSocketNames.h"
#include "tests/agent/mtp/RawWebSocket.h"
#include "tests/agent/mtp/RecordingListener.h"

namespace quorvel::agent_test {
namespace {

constexpr const char* kPlace = "Device.LocalAgent.MTP.1.";
constexpr const char* kUsp = "Sec-WebSocket-Protocol: v1.usp\r\n";

// The agent accepts; the test's peer connects.
class WebSocketServer : public testing::Test {
  protected:
    WebSocketServer() {
        transports_.listen(listener_);
        settings_.endpointId = "os::025176-1";
        settings_.controllers = {"proto::one", "proto::two"};
        agent::WebSocketServerSettings place;
        place.mtpRow = kPlace;
        place.address = "127.0.0.1";
        place.port = 0;
        place.path = "/usp";
        place.tls = false;
        settings_.servers.push_back(place);
    }
    ~WebSocketServer() override {
        transports_.stop("the test is over");
    }

    void start() {
        transports_.configure(settings_);
        ASSERT_TRUE(serveUntil(loop_, [this] { return transports_.portOf(kPlace) != 0; }));
    }
    std::unique_ptr<RawWebSocket> peer(const std::string& path, const std::string& headers = kUsp) {
        auto raw = std::make_unique<RawWebSocket>(loop_, RawWebSocket::connectTo(transports_.portOf(kPlace)), true);
        raw->shakeHands(path, headers);
        (void)serveUntil(loop_, [&raw] { return !raw->head().empty() || raw->isClosed(); });
        return raw;
    }
    [[nodiscard]] bool isRefused(const RawWebSocket& raw) {
        return raw.head().find("101 Switching") == std::string::npos;
    }
    [[nodiscard]] bool gets(RawWebSocket& raw, unsigned opcode) {
        return serveUntil(loop_, [&raw, opcode] { return !raw.frames.empty() && raw.frames.back().opcode == opcode; });
    }

    agent::EventLoop loop_;
    RecordingListener listener_;
    agent::TransportSet transports_{loop_, {}};
    agent::MtpSettings settings_;
};

TEST_F(WebSocketServer, OpensASessionThatNamesThePeer) {
    start();
    const auto raw = peer("/usp?eid=proto::one");
    EXPECT_FALSE(isRefused(*raw)) << raw->head();
    EXPECT_NE(raw->head().find("v1.usp"), std::string::npos);
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.connected.empty(); }));
    EXPECT_EQ(listener_.connected.at(0).endpointId, "proto::one");
    EXPECT_EQ(listener_.connected.at(0).mtp, kPlace);
    EXPECT_EQ(listener_.status[std::string(kPlace) + "Status"], "Up");
}

TEST_F(WebSocketServer, RefusesOtherPathsSubprotocolsAndControllers) {
    start();
    EXPECT_TRUE(isRefused(*peer("/elsewhere?eid=proto::one")));
    EXPECT_TRUE(isRefused(*peer("/usp?eid=proto::one", "")));
    EXPECT_TRUE(isRefused(*peer("/usp?eid=proto::one", "Sec-WebSocket-Protocol: chat\r\n")));
    EXPECT_TRUE(isRefused(*peer("/usp?eid=proto::stranger")));
    EXPECT_TRUE(listener_.connected.empty());
}

TEST_F(WebSocketServer, EchoesItsOwnIdInTheOldExtension) {
    start();
    const auto raw =
        peer("/usp", std::string(kUsp) + "Sec-WebSocket-Extensions: bbf-usp-protocol; eid=\"proto::two\"\r\n");
    ASSERT_FALSE(isRefused(*raw));
    EXPECT_NE(raw->head().find("bbf-usp-protocol; eid=\"os::025176-1\""), std::string::npos) << raw->head();
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.connected.empty(); }));
    EXPECT_EQ(listener_.connected.at(0).endpointId, "proto::two");
}

TEST_F(WebSocketServer, RecordsGoBothWaysWholeAndInFragments) {
    start();
    const auto raw = peer("/usp?eid=proto::one");
    raw->send(RawWebSocket::kBinary, "one ", false);
    raw->send(RawWebSocket::kContinuation, "record", true);
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.received.empty(); }));
    EXPECT_EQ(listener_.received.at(0).bytes, "one record");
    EXPECT_TRUE(transports_.send(std::string(200000, 'r'), {listener_.connected.at(0).id, ""}));
    ASSERT_TRUE(gets(*raw, RawWebSocket::kBinary));
    EXPECT_EQ(raw->frames.size(), 1U);
    EXPECT_EQ(raw->frames.at(0).payload.size(), 200000U);
    EXPECT_TRUE(raw->frames.at(0).isFinal);
}

TEST_F(WebSocketServer, RecordOfFourMegabytesComesAndALargerOneIsDropped) {
    start();
    const auto raw = peer("/usp?eid=proto::one");
    raw->send(RawWebSocket::kBinary, std::string(agent::kMaxRecord, 'x'));
    raw->send(RawWebSocket::kBinary, std::string(agent::kMaxRecord + 1, 'y'));
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.dropped.empty(); }));
    ASSERT_EQ(listener_.received.size(), 1U);
    EXPECT_EQ(listener_.received.at(0).bytes.size(), agent::kMaxRecord);
    EXPECT_EQ(listener_.dropped.at(0).size, agent::kMaxRecord + 1);
}

TEST_F(WebSocketServer, TextFrameAndJunkCloseWith1003) {
    start();
    const auto text = peer("/usp?eid=proto::one");
    text->send(RawWebSocket::kText, "hello");
    ASSERT_TRUE(gets(*text, RawWebSocket::kClose));
    EXPECT_EQ(text->frames.back().closeCode(), 1003U);
    const auto junk = peer("/usp?eid=proto::two");
    junk->send(RawWebSocket::kBinary, "junk");
    ASSERT_TRUE(gets(*junk, RawWebSocket::kClose));
    EXPECT_EQ(junk->frames.back().closeCode(), 1003U);
}

TEST_F(WebSocketServer, AnswersPingAndCloseAndIgnoresAStrayPong) {
    start();
    const auto raw = peer("/usp?eid=proto::one");
    raw->send(RawWebSocket::kPong, "stray");
    raw->send(RawWebSocket::kPing, "are you there");
    ASSERT_TRUE(gets(*raw, RawWebSocket::kPong));
    EXPECT_EQ(raw->frames.back().payload, "are you there");
    raw->send(RawWebSocket::kClose, std::string("\x03\xe8", 2));
    ASSERT_TRUE(gets(*raw, RawWebSocket::kClose));
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.lost.empty(); }));
}

TEST_F(WebSocketServer, PingsItsPeerAndGivesUpOneThatIsSilent) {
    settings_.servers.at(0).keepAlive = 1;
    start();
    const auto raw = peer("/usp?eid=proto::one");
    ASSERT_TRUE(gets(*raw, RawWebSocket::kPing));
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.lost.empty(); }));
    EXPECT_EQ(listener_.lost.at(0).second, "the peer did not answer a Ping");
}

TEST_F(WebSocketServer, NewConnectionOfAPeerReplacesItsOld) {
    start();
    const auto first = peer("/usp?eid=proto::one");
    const auto second = peer("/usp?eid=proto::one");
    ASSERT_TRUE(gets(*first, RawWebSocket::kClose));
    EXPECT_TRUE(serveUntil(loop_, [this] { return listener_.connected.size() == 2; }));
    EXPECT_TRUE(transports_.send("still here", {listener_.connected.at(1).id, ""}));
    EXPECT_TRUE(gets(*second, RawWebSocket::kBinary));
}

TEST_F(WebSocketServer, DisabledControllerIsClosed) {
    start();
    const auto raw = peer("/usp?eid=proto::one");
    settings_.controllers = {"proto::two"};
    transports_.configure(settings_);
    EXPECT_TRUE(gets(*raw, RawWebSocket::kClose));
}

TEST_F(WebSocketServer, PeerThatStopsReadingIsRefusedMore) {
    start();
    const auto raw = peer("/usp?eid=proto::one");
    raw->stopReading();
    int accepted = 0;
    while (accepted < 100 && transports_.send(std::string(1U << 20U, 'x'), {listener_.connected.at(0).id, ""}))
        ++accepted;
    EXPECT_LT(accepted, 100);
    const auto other = peer("/usp?eid=proto::two");
    EXPECT_FALSE(isRefused(*other));
}

TEST_F(WebSocketServer, TakenPortIsReportedAsAnError) {
    start();
    agent::EventLoop loop;
    RecordingListener listener;
    agent::TransportSet second(loop, {});
    second.listen(listener);
    agent::MtpSettings settings = settings_;
    settings.servers.at(0).port = static_cast<std::uint16_t>(transports_.portOf(kPlace));
    second.configure(settings);
    ASSERT_TRUE(serveUntil(loop, [&] { return listener.status.contains(std::string(kPlace) + "Status"); }));
    EXPECT_EQ(listener.status[std::string(kPlace) + "Status"], "Error");
}

// The agent connects; the test's peer accepts.
class WebSocketClient : public testing::Test {
  protected:
    WebSocketClient() {
        listening_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        EXPECT_EQ(bind(listening_, reinterpret_cast<sockaddr*>(&address), length), 0);
        EXPECT_EQ(listen(listening_, 4), 0);
        (void)getsockname(listening_, reinterpret_cast<sockaddr*>(&address), &length);
        loop_.watch(listening_, POLLIN, [this](short) {
            peers_.push_back(std::make_unique<RawWebSocket>(loop_, accept(listening_, nullptr, nullptr), false));
        });
        transports_.listen(listener_);
        settings_.endpointId = "os::025176-%41";
        settings_.controllers = {"proto::one"};
        agent::WebSocketClientSettings client;
        client.row = "Device.LocalAgent.Controller.1.MTP.1.WebSocket.";
        client.controller = "proto::one";
        client.host = "127.0.0.1";
        client.port = ntohs(address.sin_port);
        client.path = "/controller";
        client.tls = false;
        client.retryMinimumWait = 0;
        settings_.clients.push_back(client);
    }
    ~WebSocketClient() override {
        transports_.stop("the test is over");
        peers_.clear();
        loop_.forget(listening_);
        (void)close(listening_);
    }

    void connect(const std::string& subprotocol = "v1.usp") {
        const std::size_t before = peers_.size();
        ASSERT_TRUE(serveUntil(loop_, [&] { return peers_.size() > before && !peers_.back()->head().empty(); }));
        peers_.back()->acceptHandshake(subprotocol);
    }

    agent::EventLoop loop_;
    int listening_ = -1;
    std::vector<std::unique_ptr<RawWebSocket>> peers_;
    RecordingListener listener_;
    agent::TransportSet transports_{loop_, {}};
    agent::MtpSettings settings_;
};

TEST_F(WebSocketClient, NamesItsEndpointInTheAddress) {
    transports_.configure(settings_);
    connect();
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.connected.empty(); }));
    EXPECT_EQ(peers_.at(0)->head().rfind("GET /controller?eid=os::025176-%2541 ", 0), 0U) << peers_.at(0)->head();
    EXPECT_NE(peers_.at(0)->head().find("v1.usp"), std::string::npos);
    EXPECT_EQ(listener_.connected.at(0).endpointId, "proto::one");
}

TEST_F(WebSocketClient, LeavesAServerWithoutTheSubprotocol) {
    transports_.configure(settings_);
    connect("");
    ASSERT_TRUE(serveUntil(loop_, [this] { return peers_.at(0)->isClosed(); }));
    EXPECT_TRUE(listener_.connected.empty());
}

TEST_F(WebSocketClient, ConnectsAgainAndCountsItsAttempts) {
    transports_.configure(settings_);
    connect();
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.connected.empty(); }));
    peers_.clear();
    connect();
    ASSERT_TRUE(serveUntil(loop_, [this] { return listener_.connected.size() == 2; }));
    EXPECT_TRUE(listener_.statuses.contains("Device.LocalAgent.Controller.1.MTP.1.WebSocket.CurrentRetryCount=1"));
    EXPECT_EQ(listener_.status["Device.LocalAgent.Controller.1.MTP.1.WebSocket.CurrentRetryCount"], "0");
}

TEST_F(WebSocketClient, ResetConnectsAtOnce) {
    settings_.clients.at(0).retryMinimumWait = 3600;
    transports_.configure(settings_);
    connect();
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.connected.empty(); }));
    peers_.clear();
    ASSERT_TRUE(serveUntil(loop_, [this] { return !listener_.lost.empty(); }));
    transports_.resetRetries(settings_.clients.at(0).row);
    connect();
    EXPECT_TRUE(serveUntil(loop_, [this] { return listener_.connected.size() == 2; }));
}

TEST(ExtensionHeader, GivesTheEndpointWithOrWithoutQuotes) {
    EXPECT_EQ(agent::endpointInExtension("bbf-usp-protocol; eid=\"proto::a\""), "proto::a");
    EXPECT_EQ(agent::endpointInExtension("x-other, bbf-usp-protocol;eid=proto::b; x=1"), "proto::b");
    EXPECT_EQ(agent::endpointInExtension("permessage-deflate"), "");
}

}  // namespace
}  // namespace quorvel::agent_test
