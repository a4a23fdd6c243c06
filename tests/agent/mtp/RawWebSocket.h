#pragma once

// A WebSocket peer made of bytes, which can do what a well-behaved library never would.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/EventLoop.h"

namespace quorvel::agent_test {

class RawWebSocket {
  public:
    enum Opcode : unsigned { kContinuation = 0, kText = 1, kBinary = 2, kClose = 8, kPing = 9, kPong = 10 };
    struct Frame {
        unsigned opcode = 0;
        bool isFinal = true;
        std::string payload;
        /// Returns the code of a Close frame, or 0.
        [[nodiscard]] unsigned closeCode() const {
            if (opcode != kClose || payload.size() < 2) return 0;
            return static_cast<unsigned>(static_cast<unsigned char>(payload[0])) << 8U |
                   static_cast<unsigned char>(payload[1]);
        }
    };

    /// Serves a connection that is open already; `masks`: as a client must.
    RawWebSocket(agent::EventLoop& loop, int descriptor, bool masks);
    RawWebSocket(const RawWebSocket&) = delete;
    RawWebSocket& operator=(const RawWebSocket&) = delete;
    ~RawWebSocket();

    /// Connects to a port of loopback.
    [[nodiscard]] static int connectTo(int port);

    /// Sends the opening handshake of a client; `headers` are further lines, each with its end.
    void shakeHands(const std::string& path, const std::string& headers);

    /// Answers the handshake of a client that connected to us.
    void acceptHandshake(const std::string& subprotocol);

    void send(unsigned opcode, std::string_view payload, bool isFinal = true);
    void stopReading();

    /// The peer's lines until the empty one; empty: they have not come yet.
    [[nodiscard]] const std::string& head() const {
        return head_;
    }
    [[nodiscard]] bool isClosed() const {
        return closed_;
    }
    std::vector<Frame> frames;

  private:
    void read();
    void parse();

    agent::EventLoop& loop_;
    int descriptor_;
    bool masks_;
    bool closed_ = false;
    std::string incoming_;
    std::string head_;
};

}  // namespace quorvel::agent_test
