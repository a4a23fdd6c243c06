#include "common/MacAddress.h"

#include <cstdio>

namespace quorvel::common {
namespace {

int digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

std::optional<MacAddress> parseMac(std::string_view text) {
    if (text.size() != 17) return std::nullopt;
    MacAddress mac;
    for (std::size_t i = 0; i < 6; ++i) {
        const int high = digit(text[i * 3]);
        const int low = digit(text[i * 3 + 1]);
        if (high < 0 || low < 0 || (i < 5 && text[i * 3 + 2] != ':')) return std::nullopt;
        mac.bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return mac;
}

std::string formatMac(const MacAddress& mac) {
    char text[18];
    (void)std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac.bytes[0], mac.bytes[1], mac.bytes[2],
                        mac.bytes[3], mac.bytes[4], mac.bytes[5]);  // cannot be longer than 17 characters
    return text;
}

std::uint64_t numberOf(const MacAddress& mac) {
    std::uint64_t number = 0;
    for (const std::uint8_t byte : mac.bytes)
        number = (number << 8U) | byte;
    return number;
}

MacAddress following(const MacAddress& mac, std::uint64_t by) {
    std::uint64_t number = numberOf(mac) + by;
    MacAddress result;
    for (std::size_t i = sizeof result.bytes; i-- > 0; number >>= 8U)
        result.bytes[i] = static_cast<std::uint8_t>(number & 0xffU);
    return result;
}

}  // namespace quorvel::common
