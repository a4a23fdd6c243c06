#pragma once

#include <boost/beast/http.hpp>
#include <cstddef>

#include "web/server/http/Messages.h"

namespace quorvel::web {

/// Bounds of a request: its head, and a body, which none may have.
inline constexpr std::uint32_t kHeadLimit = 8192;

/// Reads requests within the bounds.
using Parser = boost::beast::http::request_parser<boost::beast::http::empty_body>;
using WireReply = boost::beast::http::response<boost::beast::http::string_body>;

/// Sets the bounds of a parser.
void bound(Parser& parser);

/// Returns those parts of a request that the site looks at.
[[nodiscard]] Request requestOf(const Parser& parser);

/// Returns the refusal of a request that cannot be read: 400, 413 or 431.
[[nodiscard]] Reply malformed(boost::beast::error_code error);

/// Returns an answer as it goes over the wire, with its security headers. `version` is the request's (11 for 1.1); for
/// HEAD the answer has the length of the body and no body.
[[nodiscard]] WireReply wireReply(Reply reply, unsigned version, bool keepAlive, bool head);

}  // namespace quorvel::web
