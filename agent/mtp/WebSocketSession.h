#pragma once

// One WebSocket connection to a peer, seen from the library's calls.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "agent/EventLoop.h"

struct lws;

namespace quorvel::agent {

/// Close codes of RFC 6455.
enum class CloseCode : std::uint16_t { kNormal = 1000, kGoingAway = 1001, kUnsupportedData = 1003, kTooBig = 1009 };

/// The state of one connection. The library's callback works on it; nothing else of the agent sees it.
struct WebSocketSession {
    std::uint64_t id = 0;
    std::string row;         ///< of the settings that it belongs to
    std::string endpointId;  ///< the peer's, when it has named itself
    std::string peer;        ///< address and port
    bool isClient = false;   ///< the agent opened it
    bool open = false;       ///< the handshake is over
    std::uint32_t keepAlive = 60;
    lws* wire = nullptr;

    std::deque<std::string> outgoing;  ///< each with the library's room in front
    std::size_t outgoingBytes = 0;
    std::string incoming;
    bool skipsMessage = false;  ///< the message under way is too large
    std::size_t skipped = 0;

    bool closing = false;
    bool closeSent = false;
    CloseCode closeCode = CloseCode::kNormal;
    std::string closeReason;

    bool pingDue = false;
    bool heardSincePing = true;
    EventLoop::TimerId pingTimer = 0;
};

}  // namespace quorvel::agent
