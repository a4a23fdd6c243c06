#include "agent/mtp/WebSocketNames.h"

#include <openssl/crypto.h>
#include <openssl/ssl.h>

#include <array>

namespace quorvel::agent {

std::string pathWithEndpoint(const std::string& path, const std::string& endpointId) {
    std::string text = path.empty() || path.front() != '/' ? "/" + path : path;
    text += text.find('?') == std::string::npos ? "?eid=" : "&eid=";
    for (const char letter : endpointId)
        text += letter == '%' ? std::string("%25") : std::string(1, letter);
    return text;
}

std::string endpointInExtension(const std::string& header) {
    const std::size_t extension = header.find(kExtension);
    if (extension == std::string::npos) return "";
    const std::size_t end = header.find(',', extension);
    const std::string own = header.substr(extension, end == std::string::npos ? end : end - extension);
    const std::size_t name = own.find("eid=");
    if (name == std::string::npos) return "";
    std::string value = own.substr(name + 4);
    if (!value.empty() && value.front() == '"') {
        const std::size_t close = value.find('"', 1);
        return close == std::string::npos ? "" : value.substr(1, close - 1);
    }
    return value.substr(0, value.find_first_of("; \t"));
}

std::string headerOf(lws* wire, lws_token_indexes token) {
    const int length = lws_hdr_total_length(wire, token);
    if (length <= 0) return "";
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    const int copied = lws_hdr_copy(wire, text.data(), static_cast<int>(text.size()), token);
    text.resize(copied > 0 ? static_cast<std::size_t>(copied) : 0);
    return text;
}

std::string endpointIn(lws* wire) {
    std::array<char, 256> value{};
    const char* inAddress = lws_get_urlarg_by_name(wire, "eid=", value.data(), static_cast<int>(value.size()));
    if (inAddress != nullptr) return inAddress;
    return endpointInExtension(headerOf(wire, WSI_TOKEN_EXTENSIONS));
}

bool hasValidCertificate(lws* wire) {
    SSL* tls = lws_get_ssl(wire);
    if (tls == nullptr) return false;
    X509* certificate = SSL_get_peer_certificate(tls);
    X509_free(certificate);
    return certificate != nullptr && SSL_get_verify_result(tls) == X509_V_OK;
}

bool equalSecrets(const std::string& first, const std::string& second) {
    return first.size() == second.size() && CRYPTO_memcmp(first.data(), second.data(), first.size()) == 0;
}

}  // namespace quorvel::agent
