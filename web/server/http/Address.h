#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvel::web {

/// Where the server listens.
struct Address {
    std::string host;  ///< a numeric address without brackets
    std::uint16_t port = 0;

    /// Tells whether only this machine can reach it.
    [[nodiscard]] bool isLoopback() const;
    /// Returns "127.0.0.1:8181", "[::1]:8181".
    [[nodiscard]] std::string text() const;
};

/// Reads "HOST:PORT": a numeric IPv4 address, an IPv6 address in brackets, or "localhost", and a port from 0 to 65535
/// (0: any free one). Returns nothing for any other text.
[[nodiscard]] std::optional<Address> parseAddress(std::string_view text);

}  // namespace quorvel::web
