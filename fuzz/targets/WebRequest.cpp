#include <boost/asio/buffer.hpp>
#include <string>

#include "fuzz/Input.h"
#include "web/server/Site.h"
#include "web/server/http/Wire.h"
#include "web/server/live/Composer.h"

// A request as it comes from anywhere, up to the bytes that go back.

namespace {

using namespace quorvel::web;
using quorvel::fuzz::require;

constexpr const char* kToken = "0123456789abcdef";

const Site& site() {
    static const Site site(
        Guard({"192.0.2.1", 8181}, {"metrics.example"}, kToken), PageFiles(),
        {[] { return std::string("{}"); }, [](const Picture&) { return std::string("m 1\n"); }, "{}"});
    return site;
}

const Picture& picture() {
    static const Composer composer;
    return *composer.picture();
}

void check(const Parser& parser) {
    const Request request = requestOf(parser);
    const Reply reply = site().answer(request, picture());
    require(reply.status >= 200 && reply.status < 600, "an answer has a status");
    const bool carriesToken = request.authorization.find(kToken) != std::string::npos;
    require(reply.status != 200 || carriesToken, "values are given for the token only");
    require(reply.status != 200 || request.method == "GET" || request.method == "HEAD",
            "nothing but reading is answered");
    WireReply wire = wireReply(reply, parser.get().version(), false, request.method == "HEAD");
    require(wire.count("Content-Security-Policy") == 1, "every answer has its policy");
    require(wire.body().size() <= reply.body.size(), "a body is not longer than the answer's");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Parser parser;
    bound(parser);
    parser.eager(true);
    boost::beast::error_code error;
    std::size_t at = 0;
    // As the socket gives it: piece by piece.
    while (at < size && !parser.is_done() && !error) {
        const std::size_t used = parser.put(boost::asio::const_buffer(data + at, size - at), error);
        if (error == boost::beast::http::error::need_more) return 0;
        if (used == 0 && !error) break;
        at += used;
    }
    if (error) {
        const Reply reply = malformed(error);
        require(reply.status >= 400 && reply.status < 500, "a malformed request is the client's fault");
        return 0;
    }
    if (parser.is_header_done()) check(parser);
    return 0;
}
