// The WebSocket transport, byte by byte.
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <functional>

#include "agent/EventLoop.h"
#include "tests/agent/conformance/Lab.h"
#include "tests/agent/mtp/RawWebSocket.h"
#include "tests/agent/mtp/RecordingListener.h"

namespace quorvel::agent_test {
namespace {

class WebSocket : public testing::Test {
  protected:
    std::unique_ptr<RawWebSocket> connect(const std::string& headers = "") {
        auto raw = std::make_unique<RawWebSocket>(loop_, RawWebSocket::connectTo(lab_.webSocketPort), true);
        raw->shakeHands(std::string("/usp?eid=") + kControllerId, "Sec-WebSocket-Protocol: v1.usp\r\n" + headers);
        EXPECT_TRUE(serveUntil(loop_, [&raw] { return !raw->head().empty(); }));
        EXPECT_NE(raw->head().find("101"), std::string::npos) << raw->head();
        return raw;
    }
    [[nodiscard]] bool gets(RawWebSocket& raw, unsigned opcode) {
        return serveUntil(loop_, [&raw, opcode] {
            for (const RawWebSocket::Frame& frame : raw.frames) {
                if (frame.opcode == opcode) return true;
            }
            return false;
        });
    }
    static std::string request() {
        usp::Msg message;
        message.mutable_header()->set_msg_id("ws-1");
        message.mutable_header()->set_msg_type(usp::Header::GET);
        message.mutable_body()->mutable_request()->mutable_get()->add_param_paths("Device.LocalAgent.EndpointID");
        usp_record::Record record;
        record.set_version("1.4");
        record.set_to_id(kAgentId);
        record.set_from_id(kControllerId);
        record.mutable_no_session_context()->set_payload(message.SerializeAsString());
        return record.SerializeAsString();
    }
    // Waits for the answer to request() and returns the value that it carries.
    std::string answered(RawWebSocket& raw) {
        std::string value;
        (void)serveUntil(loop_, [&raw, &value] {
            for (const RawWebSocket::Frame& frame : raw.frames) {
                usp_record::Record record;
                usp::Msg message;
                if (frame.opcode != RawWebSocket::kBinary || !record.ParseFromString(frame.payload)) continue;
                if (!message.ParseFromString(record.no_session_context().payload())) continue;
                const auto values = valuesOf(message);
                if (!values.empty()) value = values.begin()->second;
            }
            return !value.empty();
        });
        return value;
    }

    Lab& lab_ = Lab::instance();
    agent::EventLoop loop_;
};

TEST_F(WebSocket, T7_1_ConnectRecordComesFirst) {
    const auto raw = connect();
    ASSERT_TRUE(gets(*raw, RawWebSocket::kBinary));
    usp_record::Record record;
    ASSERT_TRUE(record.ParseFromString(raw->frames.front().payload));
    EXPECT_TRUE(record.has_websocket_connect()) << record.DebugString();
    EXPECT_EQ(record.from_id(), kAgentId);
    EXPECT_EQ(record.to_id(), kControllerId);
}

TEST_F(WebSocket, T7_2_OnlyOneSessionIsLeft) {
    const auto first = connect();
    const auto second = connect();
    ASSERT_TRUE(gets(*first, RawWebSocket::kClose));
    second->send(RawWebSocket::kBinary, request());
    EXPECT_EQ(answered(*second), kAgentId);
}

TEST_F(WebSocket, T7_4_CloseIsAnswered) {
    const auto raw = connect();
    raw->send(RawWebSocket::kClose, std::string("\x03\xe8", 2));
    EXPECT_TRUE(gets(*raw, RawWebSocket::kClose));
}

TEST_F(WebSocket, T7_6_JunkIsClosedWith1003) {
    const auto raw = connect();
    raw->send(RawWebSocket::kBinary, "this is not a Record");
    ASSERT_TRUE(gets(*raw, RawWebSocket::kClose));
    EXPECT_EQ(raw->frames.back().closeCode(), 1003U);
}

TEST_F(WebSocket, T7_7_PingIsAnswered) {
    const auto raw = connect();
    raw->send(RawWebSocket::kPing, "1");
    EXPECT_TRUE(gets(*raw, RawWebSocket::kPong));
}

TEST(WebSocketClient, T7_8_ConnectsAgainAfterTheFirstWait) {
    using Clock = std::chrono::steady_clock;
    agent::EventLoop loop;
    const int listening = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ASSERT_EQ(bind(listening, reinterpret_cast<sockaddr*>(&address), length), 0);
    ASSERT_EQ(listen(listening, 4), 0);
    (void)getsockname(listening, reinterpret_cast<sockaddr*>(&address), &length);
    std::vector<std::unique_ptr<RawWebSocket>> peers;
    loop.watch(listening, POLLIN, [&](short) {
        peers.push_back(std::make_unique<RawWebSocket>(loop, accept(listening, nullptr, nullptr), false));
    });
    const auto until = [&loop](const std::function<bool()>& condition) {
        const auto end = Clock::now() + std::chrono::seconds(60);
        while (!condition() && Clock::now() < end)
            (void)loop.once(std::chrono::milliseconds(50));
        return condition();
    };
    Board board;
    board.mustRun({"up", "--usp", "ws://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/usp"});
    ASSERT_TRUE(until([&] { return !peers.empty() && !peers.back()->head().empty(); }));
    peers.back()->acceptHandshake("v1.usp");
    ASSERT_TRUE(until([&] { return !peers.back()->frames.empty(); }));
    const auto lost = Clock::now();
    peers.clear();
    ASSERT_TRUE(until([&] { return !peers.empty() && !peers.back()->head().empty(); }));
    EXPECT_GE(std::chrono::duration<double>(Clock::now() - lost).count(), 4.5);
    loop.forget(listening);
    peers.clear();
    (void)close(listening);
}

TEST_F(WebSocket, T7_10_ConnectRecordComesFirstAfterTheNextConnection) {
    connect().reset();
    const auto raw = connect();
    ASSERT_TRUE(gets(*raw, RawWebSocket::kBinary));
    usp_record::Record record;
    ASSERT_TRUE(record.ParseFromString(raw->frames.front().payload));
    EXPECT_TRUE(record.has_websocket_connect());
}

TEST_F(WebSocket, T7_11_WithoutTheExtension) {
    const auto raw = connect();
    raw->send(RawWebSocket::kBinary, request());
    EXPECT_EQ(answered(*raw), kAgentId);
}

TEST_F(WebSocket, T7_12_FragmentsAreJoined) {
    const auto raw = connect();
    const std::string record = request();
    raw->send(RawWebSocket::kBinary, record.substr(0, 10), false);
    raw->send(RawWebSocket::kContinuation, record.substr(10), true);
    EXPECT_EQ(answered(*raw), kAgentId);
}

}  // namespace
}  // namespace quorvel::agent_test
