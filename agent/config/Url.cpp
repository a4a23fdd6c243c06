#include "agent/config/Url.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace quorvel::agent {
namespace {

struct Scheme {
    std::string_view name;
    Url::Kind kind;
    bool tls;
    std::uint16_t port;  // 0: must be given
};

constexpr std::array<Scheme, 6> kSchemes = {{{"mqtt", Url::Kind::kMqtt, false, 1883},
                                             {"mqtts", Url::Kind::kMqtt, true, 8883},
                                             {"ws", Url::Kind::kWebSocket, false, 80},
                                             {"wss", Url::Kind::kWebSocket, true, 443},
                                             {"ws-listen", Url::Kind::kWebSocketListen, false, 0},
                                             {"wss-listen", Url::Kind::kWebSocketListen, true, 0}}};

constexpr const char* kForms =
    "use mqtt://[USER@]HOST[:PORT], mqtts://[USER@]HOST[:PORT], ws://HOST[:PORT]/PATH, wss://HOST[:PORT]/PATH, "
    "ws-listen://HOST:PORT/PATH or wss-listen://HOST:PORT/PATH";

[[noreturn]] void refuse(const std::string& text, const std::string& reason) {
    throw ConfigError("\"" + text + "\" is not a place to meet a controller: " + reason + "; " + kForms);
}

std::uint16_t portIn(const std::string& text, std::string_view digits) {
    unsigned port = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    if (error != std::errc() || end != digits.data() + digits.size() || port == 0 || port > 65535) {
        refuse(text, "the port must be a whole number from 1 to 65535");
    }
    return static_cast<std::uint16_t>(port);
}

const Scheme& schemeOf(const std::string& text, std::string_view& rest) {
    const std::size_t end = text.find("://");
    if (end == std::string::npos) refuse(text, "there is no scheme");
    rest = std::string_view(text).substr(end + 3);
    const std::string_view name = std::string_view(text).substr(0, end);
    const auto* const scheme =
        std::find_if(kSchemes.begin(), kSchemes.end(), [name](const Scheme& each) { return each.name == name; });
    if (scheme == kSchemes.end()) refuse(text, "the scheme \"" + std::string(name) + "\" is unknown");
    return *scheme;
}

}  // namespace

Url parseUrl(const std::string& text) {
    std::string_view rest;
    const Scheme& scheme = schemeOf(text, rest);
    Url url;
    url.kind = scheme.kind;
    url.tls = scheme.tls;
    url.port = scheme.port;
    const std::size_t slash = rest.find('/');
    std::string_view place = rest.substr(0, slash);
    const std::string_view path = slash == std::string_view::npos ? "" : rest.substr(slash);
    const std::size_t at = place.rfind('@');
    if (at != std::string_view::npos) {
        url.user = place.substr(0, at);
        place.remove_prefix(at + 1);
        if (url.kind != Url::Kind::kMqtt) refuse(text, "only MQTT brokers take a user name");
        if (url.user.find(':') != std::string::npos) {
            refuse(text, "a password must not be an argument: use --usp-password-file or QUORVEL_USP_PASSWORD");
        }
    }
    std::size_t colon = place.rfind(':');
    if (place.starts_with('[')) {
        const std::size_t close = place.find(']');
        if (close == std::string_view::npos) refuse(text, "the address has no closing bracket");
        url.host = place.substr(1, close - 1);
        colon = close + 1 < place.size() ? close + 1 : std::string_view::npos;
        if (colon != std::string_view::npos && place[colon] != ':') refuse(text, "a port follows after a colon");
    } else {
        url.host = place.substr(0, colon);
    }
    if (colon != std::string_view::npos) url.port = portIn(text, place.substr(colon + 1));
    if (url.host.empty()) refuse(text, "there is no host");
    if (url.port == 0) refuse(text, "a listening place needs a port");
    if (url.kind == Url::Kind::kMqtt && path.size() > 1) refuse(text, "an MQTT broker has no path");
    if (url.kind != Url::Kind::kMqtt) url.path = path.empty() ? "/" : std::string(path);
    return url;
}

std::string textOf(const Url& url) {
    const auto* const scheme = std::find_if(kSchemes.begin(), kSchemes.end(), [&url](const Scheme& each) {
        return each.kind == url.kind && each.tls == url.tls;
    });
    const std::string host = url.host.find(':') == std::string::npos ? url.host : "[" + url.host + "]";
    return std::string(scheme->name) + "://" + (url.user.empty() ? "" : url.user + "@") + host + ":" +
           std::to_string(url.port) + url.path;
}

bool isLoopback(const std::string& host) {
    if (host == "localhost") return true;
    in_addr four{};
    if (inet_pton(AF_INET, host.c_str(), &four) == 1) return (ntohl(four.s_addr) >> 24U) == 127;
    in6_addr six{};
    return inet_pton(AF_INET6, host.c_str(), &six) == 1 && IN6_IS_ADDR_LOOPBACK(&six);
}

}  // namespace quorvel::agent
