#include "web/server/http/Address.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>

namespace quorvel::web {
namespace {

bool isNumericAddress(const std::string& host) {
    in6_addr space{};
    return inet_pton(AF_INET, host.c_str(), &space) == 1 || inet_pton(AF_INET6, host.c_str(), &space) == 1;
}

}  // namespace

bool Address::isLoopback() const {
    in_addr four{};
    if (inet_pton(AF_INET, host.c_str(), &four) == 1) return ntohl(four.s_addr) >> 24 == 127;
    in6_addr six{};
    return inet_pton(AF_INET6, host.c_str(), &six) == 1 && IN6_IS_ADDR_LOOPBACK(&six);
}

std::string Address::text() const {
    const bool six = host.find(':') != std::string::npos;
    return (six ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

std::optional<Address> parseAddress(std::string_view text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos) return std::nullopt;
    std::string_view host = text.substr(0, colon);
    const std::string_view port = text.substr(colon + 1);
    const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    if (bracketed) host = host.substr(1, host.size() - 2);
    Address address{host == "localhost" ? "127.0.0.1" : std::string(host), 0};
    if (bracketed != (address.host.find(':') != std::string::npos) || !isNumericAddress(address.host))
        return std::nullopt;
    const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), address.port);
    if (error != std::errc{} || end != port.data() + port.size()) return std::nullopt;
    return address;
}

}  // namespace quorvel::web
