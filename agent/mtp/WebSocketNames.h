#pragma once

// How the two ends of a USP WebSocket connection name themselves in the handshake.

#include <libwebsockets.h>

#include <string>

namespace quorvel::agent {

inline constexpr const char* kSubprotocol = "v1.usp";

/// The extension that carried the Endpoint ID before the address did.
inline constexpr const char* kExtension = "bbf-usp-protocol";

/// Returns `path` with `?eid=` and the percent-encoded Endpoint ID.
[[nodiscard]] std::string pathWithEndpoint(const std::string& path, const std::string& endpointId);

/// Returns the Endpoint ID in the value of a Sec-WebSocket-Extensions header, or the empty text.
[[nodiscard]] std::string endpointInExtension(const std::string& header);

/// Returns a header of the handshake under way, or the empty text.
[[nodiscard]] std::string headerOf(lws* wire, lws_token_indexes token);

/// Returns the Endpoint ID that a connecting peer gives itself: in the address, else in the extension. Empty: none.
[[nodiscard]] std::string endpointIn(lws* wire);

/// Tells whether the peer has shown a certificate that an accepted authority has signed.
[[nodiscard]] bool hasValidCertificate(lws* wire);

/// Compares two secrets in a time that does not depend on where they differ.
[[nodiscard]] bool equalSecrets(const std::string& first, const std::string& second);

}  // namespace quorvel::agent
