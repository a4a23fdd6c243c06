#include "web/server/http/Guard.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <stdexcept>

namespace quorvel::web {
namespace {

constexpr std::string_view kScheme = "Bearer ";
constexpr std::size_t kShortestToken = 16;
constexpr std::size_t kLongestToken = 512;

std::string lower(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return result;
}

// Takes as long for a near miss as for any other text of the same length.
bool equalInConstantTime(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    unsigned char difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        difference = static_cast<unsigned char>(difference | (a[i] ^ b[i]));
    return difference == 0;
}

bool isTokenCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string_view("-._~+/=").find(c) != std::string_view::npos;
}

}  // namespace

Guard::Guard(const Address& address, const std::vector<std::string>& names, std::string token)
    : token_(std::move(token)) {
    const std::string port = ":" + std::to_string(address.port);
    hosts_.push_back(address.text());
    if (address.isLoopback()) {
        for (const char* const name : {"localhost", "127.0.0.1", "[::1]"})
            hosts_.push_back(name + port);
    }
    // Port 80 is left out of Host by browsers.
    if (address.port == 80) {
        for (std::string& host : hosts_)
            host.resize(host.size() - port.size());
    }
    for (const std::string& name : names) {
        hosts_.push_back(lower(name));
        hosts_.push_back(lower(name) + port);
    }
}

bool Guard::knows(std::string_view host) const {
    return std::find(hosts_.begin(), hosts_.end(), lower(host)) != hosts_.end();
}

std::optional<Reply> Guard::refuse(const Request& request) const {
    if (request.hosts != 1) return refusal(400, "the request must have one Host header");
    if (!knows(request.host)) {
        return refusal(403, "this server is not called \"" + request.host +
                                "\"; use the address that it has printed, or start it with --allow-host");
    }
    if (!request.origin.empty()) {
        const std::string_view origin = request.origin;
        const std::size_t scheme = origin.find("://");
        if (scheme == std::string_view::npos || !knows(origin.substr(scheme + 3)))
            return refusal(403, "pages of \"" + request.origin + "\" may not read this server");
    }
    // "none" is a person who typed the address or followed a bookmark.
    const std::string& site = request.fetchSite;
    const bool opensPage = request.target == "/";
    if (!site.empty() && site != "same-origin" && site != "none" && !opensPage)
        return refusal(403, "pages of other sites may not read this server");
    if (request.method != "GET" && request.method != "HEAD") {
        Reply reply = refusal(405, "only GET and HEAD are answered: the page reads and never writes");
        reply.headers.emplace_back("Allow", "GET, HEAD");
        return reply;
    }
    return std::nullopt;
}

std::optional<Reply> Guard::refuseStranger(const Request& request) const {
    if (token_.empty()) return std::nullopt;
    const std::string_view given = request.authorization;
    if (given.size() > kScheme.size() && lower(given.substr(0, kScheme.size())) == lower(kScheme) &&
        equalInConstantTime(given.substr(kScheme.size()), token_)) {
        return std::nullopt;
    }
    Reply reply = refusal(401, "a token is needed: give the header \"Authorization: Bearer TOKEN\"");
    reply.headers.emplace_back("WWW-Authenticate", "Bearer realm=\"quorvel-wifi\"");
    return reply;
}

std::string readToken(const std::string& file) {
    std::ifstream in(file);
    std::string line;
    if (!in || !std::getline(in, line))
        throw std::runtime_error("cannot read a token from " + file + "; write one line of at least 16 characters");
    struct stat facts {};
    if (stat(file.c_str(), &facts) == 0 && (facts.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        throw std::runtime_error("the token file " + file + " can be read by others; run chmod 600 " + file);
    }
    if (line.size() < kShortestToken || line.size() > kLongestToken ||
        !std::all_of(line.begin(), line.end(), isTokenCharacter)) {
        throw std::runtime_error("the token in " + file +
                                 " must have 16 to 512 characters, all of them letters, digits or -._~+/=");
    }
    return line;
}

}  // namespace quorvel::web
