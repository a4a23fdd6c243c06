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
    std::size_t size = 0;
    std::string record;   ///< JSON object: the Record without its payload; empty when it could not be read
    std::string message;  ///< JSON object: the Message, secrets replaced by "****"; empty when there is none
    std::string dropped;  ///< why it was dropped, in words for people; empty when it was not
};

/// Returns an entry as one JSON object.
[[nodiscard]] nlohmann::ordered_json toJson(const TraceEntry& entry);

}  // namespace quorvel::agent
