#pragma once

#include <chrono>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace quorvel::agent {

/// Board time, in whole milliseconds since the epoch.
using BoardInstant = std::chrono::sys_time<std::chrono::milliseconds>;

/// One Record, sent or received, for `usp trace`.
struct TraceEntry {
    enum class Direction : std::uint8_t { kReceived, kSent };
    BoardInstant time;
    Direction direction = Direction::kReceived;
    std::string protocol;  ///< "MQTT", "WebSocket"
    std::string peer;      ///< address of the broker or of the peer
    std::string topic;     ///< MQTT: where it was published
    std::string from;      ///< Endpoint IDs; empty when the Record could not be read
    std::string to;
    std::string bytes;  ///< the Record as it was on the wire; empty when a transport dropped it unread
    std::size_t size = 0;
    std::string dropped;  ///< why it was dropped, in words for people; empty when it was not
};

/// Decodes an entry into one JSON object: its members, "record" (the Record without its payload) and "message" (the
/// Message), secrets replaced by "****". Decoding costs more than answering, so it is left to the reader of the trace.
[[nodiscard]] nlohmann::ordered_json toJson(const TraceEntry& entry);

}  // namespace quorvel::agent
