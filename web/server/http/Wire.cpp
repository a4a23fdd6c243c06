#include "web/server/http/Wire.h"

#include <string>
#include <utility>

namespace quorvel::web {
namespace {

namespace http = boost::beast::http;

// The page needs its own scripts, styles, pictures and values, and nothing else.
constexpr const char* kPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; base-uri 'none'; "
    "form-action 'none'; frame-ancestors 'none'";

std::string text(boost::string_view view) {
    return {view.data(), view.size()};
}

}  // namespace

void bound(Parser& parser) {
    parser.header_limit(kHeadLimit);
    parser.body_limit(0);
}

Request requestOf(const Parser& parser) {
    const auto& message = parser.get();
    Request request;
    request.method = text(message.method_string());
    request.target = text(message.target());
    request.host = text(message[http::field::host]);
    request.hosts = static_cast<unsigned>(message.count(http::field::host));
    request.origin = text(message[http::field::origin]);
    request.fetchSite = text(message["Sec-Fetch-Site"]);
    request.authorization = text(message[http::field::authorization]);
    return request;
}

Reply malformed(boost::beast::error_code error) {
    if (error == http::error::header_limit || error == http::error::buffer_overflow)
        return refusal(431, "the request's head is longer than " + std::to_string(kHeadLimit) + " bytes");
    if (error == http::error::body_limit || error == http::error::unexpected_body)
        return refusal(413, "a request has no body here");
    return refusal(400, "the request is no HTTP: " + error.message());
}

WireReply wireReply(Reply reply, unsigned version, bool keepAlive, bool head) {
    WireReply wire(static_cast<http::status>(reply.status), version);
    wire.set(http::field::content_type, reply.type);
    wire.set("Content-Security-Policy", kPolicy);
    wire.set("X-Content-Type-Options", "nosniff");
    wire.set("Referrer-Policy", "no-referrer");
    wire.set("Cross-Origin-Opener-Policy", "same-origin");
    wire.set("Cross-Origin-Resource-Policy", "same-origin");
    for (const auto& [name, value] : reply.headers)
        wire.set(name, value);
    if (reply.streams) {
        // The body goes on until the connection ends.
        wire.keep_alive(false);
        return wire;
    }
    wire.keep_alive(keepAlive);
    wire.content_length(reply.body.size());
    if (!head) wire.body() = std::move(reply.body);
    return wire;
}

}  // namespace quorvel::web
