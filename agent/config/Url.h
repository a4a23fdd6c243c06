#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace quorvel::agent {

/// A configuration that cannot be used: which value, the rule, and the remedy.
class ConfigError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A place where the agent meets controllers.
struct Url {
    enum class Kind : std::uint8_t { kMqtt, kWebSocket, kWebSocketListen };
    Kind kind = Kind::kMqtt;
    bool tls = false;
    std::string user;  ///< MQTT only; may be empty
    std::string host;  ///< IPv6 addresses without their brackets
    std::uint16_t port = 0;
    std::string path;  ///< WebSocket only, "/" at least
};

/// Reads mqtt://, mqtts://, ws://, wss://, ws-listen:// and wss-listen:// URLs. Throws ConfigError.
[[nodiscard]] Url parseUrl(const std::string& text);

/// Returns the URL as text, with its port.
[[nodiscard]] std::string textOf(const Url& url);

/// Tells whether a host is this machine only: localhost, 127.0.0.0/8, ::1.
[[nodiscard]] bool isLoopback(const std::string& host);

}  // namespace quorvel::agent
