#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvel::common {

/// A 48-bit address: six bytes in the order in which they are written.
struct MacAddress {
    std::uint8_t bytes[6] = {};

    friend bool operator==(const MacAddress&, const MacAddress&) = default;
    friend auto operator<=>(const MacAddress&, const MacAddress&) = default;
};

/// Reads "02:1a:..." with digits of either case. Returns nothing for a text that is not six colon-separated pairs.
[[nodiscard]] std::optional<MacAddress> parseMac(std::string_view text);

/// Writes the address with lower-case digits and colons: 17 characters.
[[nodiscard]] std::string formatMac(const MacAddress& mac);

/// Returns the address as a number: the first byte is the highest.
[[nodiscard]] std::uint64_t numberOf(const MacAddress& mac);

/// Returns the address that comes `by` after `mac`; after the last one comes the first.
[[nodiscard]] MacAddress following(const MacAddress& mac, std::uint64_t by);

/// Tells whether the address belongs to a group instead of one station.
[[nodiscard]] constexpr bool isGroupAddress(const MacAddress& mac) {
    return (mac.bytes[0] & 1U) != 0;
}

}  // namespace quorvel::common
