#include "agent/mtp/WebSocketCallback.h"

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "agent/mtp/WebSocketNames.h"
#include "agent/mtp/WebSocketService.h"

namespace quorvel::agent {
namespace {

constexpr std::size_t kReceiveBuffer = 65536;

WebSocketService& serviceOf(lws* wire) {
    return *static_cast<WebSocketService*>(lws_context_user(lws_get_context(wire)));
}

WebSocketSession* sessionOf(lws* wire) {
    return static_cast<WebSocketSession*>(lws_get_opaque_user_data(wire));
}

std::string peerOf(lws* wire) {
    std::array<char, 64> text{};
    return lws_get_peer_simple(wire, text.data(), text.size()) == nullptr ? "" : text.data();
}

}  // namespace

const lws_protocols* WebSocketCallback::protocols() {
    static const std::array<lws_protocols, 3> list = {{
        {"http", plainHttp, 0, 0, 0, nullptr, 0},
        {kSubprotocol, usp, 0, kReceiveBuffer, 0, nullptr, 0},
        {nullptr, nullptr, 0, 0, 0, nullptr, 0},
    }};
    return list.data();
}

int WebSocketCallback::plainHttp(lws* wire, lws_callback_reasons reason, void* user, void* data, size_t length) {
    // NOLINTNEXTLINE(clang-diagnostic-switch-enum): the library's enumeration, of which few values matter
    switch (reason) {
        case LWS_CALLBACK_HTTP:
            (void)lws_return_http_status(wire, HTTP_STATUS_NOT_FOUND, "This place speaks USP over WebSocket only.");
            return -1;
        case LWS_CALLBACK_FILTER_PROTOCOL_CONNECTION:  // a handshake without subprotocol
            return 1;
        default:
            return lws_callback_http_dummy(wire, reason, user, data, length);
    }
}

int WebSocketCallback::filter(WebSocketService& service, lws* wire) {
    auto session = std::make_unique<WebSocketSession>();
    session->wire = wire;
    session->peer = peerOf(wire);
    const std::string trouble = service.refusal(wire, *session);
    if (!trouble.empty()) {
        (void)lws_return_http_status(wire, HTTP_STATUS_FORBIDDEN, trouble.c_str());
        return 1;
    }
    session->id = service.listener_.nextChannel();
    lws_set_opaque_user_data(wire, session.get());
    const std::uint64_t id = session->id;
    service.sessions_.emplace(id, std::move(session));
    return 0;
}

int WebSocketCallback::addHeaders(WebSocketService& service, lws* wire, lws_process_html_args& space) {
    if (endpointInExtension(headerOf(wire, WSI_TOKEN_EXTENSIONS)).empty()) return 0;
    const std::string value = std::string(kExtension) + "; eid=\"" + service.endpointId_ + "\"";
    auto* at = reinterpret_cast<unsigned char*>(space.p);
    unsigned char* const end = at + space.max_len;
    static constexpr const char* kName = "Sec-WebSocket-Extensions:";
    if (lws_add_http_header_by_name(wire, reinterpret_cast<const unsigned char*>(kName),
                                    reinterpret_cast<const unsigned char*>(value.data()),
                                    static_cast<int>(value.size()), &at, end) != 0) {
        return 1;
    }
    space.p = reinterpret_cast<char*>(at);
    return 0;
}

int WebSocketCallback::usp(lws* wire, lws_callback_reasons reason, void* /*user*/, void* data, size_t length) {
    WebSocketService& service = serviceOf(wire);
    WebSocketSession* session = sessionOf(wire);
    const auto text = [data, length] { return std::string_view(static_cast<const char*>(data), length); };
    // NOLINTNEXTLINE(clang-diagnostic-switch-enum): the library's enumeration, of which few values matter
    switch (reason) {
        case LWS_CALLBACK_FILTER_PROTOCOL_CONNECTION:
            return filter(service, wire);
        case LWS_CALLBACK_ADD_HEADERS:
            return addHeaders(service, wire, *static_cast<lws_process_html_args*>(data));
        case LWS_CALLBACK_CLIENT_FILTER_PRE_ESTABLISH:
            return headerOf(wire, WSI_TOKEN_PROTOCOL) == kSubprotocol ? 0 : -1;
        case LWS_CALLBACK_ESTABLISHED:
        case LWS_CALLBACK_CLIENT_ESTABLISHED:
            if (session == nullptr) return -1;
            service.opened(*session);
            return 0;
        case LWS_CALLBACK_CLIENT_CONNECTION_ERROR:
            if (session != nullptr) {
                lws_set_opaque_user_data(wire, nullptr);
                session->wire = nullptr;
                service.closed(*session, data == nullptr ? "cannot connect" : "cannot connect: " + std::string(text()));
            }
            return 0;
        case LWS_CALLBACK_RECEIVE:
        case LWS_CALLBACK_CLIENT_RECEIVE:
            if (session == nullptr) return -1;
            service.received(*session, text(), lws_is_first_fragment(wire) != 0,
                             lws_is_final_fragment(wire) != 0 && lws_remaining_packet_payload(wire) == 0,
                             lws_frame_is_binary(wire) != 0);
            return 0;
        case LWS_CALLBACK_RECEIVE_PONG:
        case LWS_CALLBACK_CLIENT_RECEIVE_PONG:
            if (session != nullptr) session->heardSincePing = true;
            return 0;
        case LWS_CALLBACK_SERVER_WRITEABLE:
        case LWS_CALLBACK_CLIENT_WRITEABLE:
            return session != nullptr && service.write(*session) ? 0 : -1;
        case LWS_CALLBACK_WS_PEER_INITIATED_CLOSE:  // nonzero: no Close frame in return
            return session != nullptr && session->closeSent ? -1 : 0;
        case LWS_CALLBACK_CLOSED:
        case LWS_CALLBACK_CLIENT_CLOSED:
        case LWS_CALLBACK_WSI_DESTROY:  // a handshake that never ended
            if (session != nullptr) {
                lws_set_opaque_user_data(wire, nullptr);
                session->wire = nullptr;
                service.closed(*session, "the connection ended");
            }
            return 0;
        default:
            return 0;
    }
}

}  // namespace quorvel::agent
