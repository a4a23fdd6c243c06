#include "agent/mtp/WebSocketService.h"

#include <libwebsockets.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <random>
#include <stdexcept>
#include <utility>

#include "agent/mtp/WebSocketCallback.h"
#include "agent/mtp/WebSocketNames.h"

namespace quorvel::agent {
namespace {

constexpr std::size_t kMostOutgoingBytes = 16U << 20U;
constexpr std::chrono::milliseconds kGoodbye(300);
constexpr unsigned kMostDescriptors = 512;
constexpr std::size_t kMostCloseText = 123;  // a control frame holds 125 bytes
constexpr int kSecondsForCloseAnswer = 2;
constexpr unsigned kFinalClose = 0x88;
constexpr unsigned kMasked = 0x80;

const char* orNull(const std::string& text) {
    return text.empty() ? nullptr : text.c_str();
}

}  // namespace

WebSocketService::WebSocketService(EventLoop& loop, TlsConfig tls, std::string endpointId, WebSocketListener& listener)
    : loop_(loop), tls_(std::move(tls)), endpointId_(std::move(endpointId)), listener_(listener) {}

WebSocketService::~WebSocketService() {
    for (auto& [row, client] : clients_)
        loop_.cancel(client.timer);
    for (auto& [id, session] : sessions_)
        loop_.cancel(session->pingTimer);
    stopped_ = true;
    if (context_ == nullptr) return;
    lws_context_destroy(context_);
    bridge_->serve();
}

void WebSocketService::makeContext() {
    if (context_ != nullptr) return;
    lws_set_log_level(0, nullptr);
    bridge_ = std::make_unique<UvBridge>(loop_);
    void* inner = bridge_->uv();
    lws_context_creation_info info{};
    info.options = LWS_SERVER_OPTION_LIBUV | LWS_SERVER_OPTION_EXPLICIT_VHOSTS | LWS_SERVER_OPTION_DO_SSL_GLOBAL_INIT;
    info.foreign_loops = &inner;
    info.user = this;
    info.fd_limit_per_thread = kMostDescriptors;
    info.gid = static_cast<gid_t>(-1);
    info.uid = static_cast<uid_t>(-1);
    context_ = lws_create_context(&info);
    if (context_ == nullptr) throw std::runtime_error("cannot start the WebSocket library");
}

lws_vhost* WebSocketService::clientHost(bool tls) {
    lws_vhost*& host = tls ? tlsClients_ : plainClients_;
    if (host != nullptr) return host;
    lws_context_creation_info info{};
    info.port = CONTEXT_PORT_NO_LISTEN;
    info.vhost_name = tls ? "tls-clients" : "clients";
    info.protocols = WebSocketCallback::protocols();
    if (tls) {
        info.options = LWS_SERVER_OPTION_DO_SSL_GLOBAL_INIT;
        info.client_ssl_ca_filepath = orNull(tls_.authorities);
        info.client_ssl_cert_filepath = orNull(tls_.certificate);
        info.client_ssl_private_key_filepath = orNull(tls_.key);
        if (!tls_.authorities.empty()) info.options |= LWS_SERVER_OPTION_DISABLE_OS_CA_CERTS;
    }
    host = lws_create_vhost(context_, &info);
    return host;
}

// The library keeps pointers to some texts as long as it lives.
const char* WebSocketService::keep(const std::string& text) {
    kept_.push_back(text);
    return kept_.back().c_str();
}

void WebSocketService::configure(const MtpSettings& settings) {
    controllers_ = settings.controllers;
    std::map<std::string, WebSocketServerSettings> wanted;
    for (const WebSocketServerSettings& place : settings.servers)
        wanted.emplace(place.mtpRow, place);
    for (auto place = places_.begin(); place != places_.end();) {
        const auto same = wanted.find(place->first);
        const std::string row = (place++)->first;
        if (same == wanted.end() || same->second != places_.at(row).settings) closePlace(row);
    }
    std::vector<std::string> gone;
    for (const auto& [row, client] : clients_) {
        const bool same =
            std::find(settings.clients.begin(), settings.clients.end(), client.settings) != settings.clients.end();
        if (!same) gone.push_back(row);
    }
    for (const std::string& row : gone)
        forgetClient(row);
    if (wanted.empty() && settings.clients.empty()) return;
    makeContext();
    for (const auto& [row, place] : wanted) {
        if (!places_.contains(row)) openPlace(place);
    }
    for (const WebSocketClientSettings& client : settings.clients) {
        if (clients_.contains(client.row)) continue;
        clients_.emplace(
            client.row,
            Client{client, BackOff(client.retryMinimumWait, client.retryMultiplier, 0, std::random_device{}()), 0, 0});
        connect(client.row);
    }
    closeThose(
        [this](const WebSocketSession& session) {
            return !session.endpointId.empty() &&
                   std::find(controllers_.begin(), controllers_.end(), session.endpointId) == controllers_.end();
        },
        CloseCode::kNormal, "this controller is not enabled any more");
}

void WebSocketService::closeThose(const std::function<bool(const WebSocketSession&)>& chosen, CloseCode code,
                                  const std::string& reason) {
    std::vector<std::uint64_t> ids;
    for (const auto& [id, session] : sessions_) {
        if (chosen(*session)) ids.push_back(id);
    }
    for (const std::uint64_t id : ids)
        close(id, code, reason);
}

void WebSocketService::openPlace(const WebSocketServerSettings& settings) {
    lws_context_creation_info info{};
    info.port = settings.port;
    info.iface = keep(settings.address);
    info.vhost_name = keep(settings.mtpRow);
    info.protocols = WebSocketCallback::protocols();
    info.options = LWS_SERVER_OPTION_FAIL_UPON_UNABLE_TO_BIND;
    if (settings.tls) {
        info.options |= LWS_SERVER_OPTION_DO_SSL_GLOBAL_INIT;
        info.ssl_cert_filepath = orNull(tls_.certificate);
        info.ssl_private_key_filepath = orNull(tls_.key);
        if (!tls_.clientAuthorities.empty()) {
            info.ssl_ca_filepath = tls_.clientAuthorities.c_str();
            info.options |=
                LWS_SERVER_OPTION_REQUIRE_VALID_OPENSSL_CLIENT_CERT | LWS_SERVER_OPTION_PEER_CERT_NOT_REQUIRED;
        }
    }
    lws_vhost* vhost = lws_create_vhost(context_, &info);
    bridge_->wake();
    places_[settings.mtpRow] = {settings, vhost};
    std::string trouble;
    if (vhost == nullptr) {
        trouble = "cannot listen at " + settings.address + ":" + std::to_string(settings.port) +
                  (settings.tls ? ": the port is taken, or certificate and key do not fit" : ": the port is taken");
    }
    listener_.webSocketListens(settings.mtpRow, trouble);
}

void WebSocketService::closePlace(const std::string& row) {
    const Place place = places_.at(row);
    places_.erase(row);
    if (place.vhost == nullptr) return;
    closeThose([&row](const WebSocketSession& session) { return session.row == row; }, CloseCode::kGoingAway,
               "the agent does not listen here any more");
    bridge_->serve();  // the sessions' goodbye goes before the place
    lws_vhost_destroy(place.vhost);
    bridge_->wake();
}

void WebSocketService::connect(const std::string& row) {
    Client& client = clients_.at(row);
    loop_.cancel(client.timer);
    auto session = std::make_unique<WebSocketSession>();
    session->id = listener_.nextChannel();
    session->row = row;
    session->isClient = true;
    session->endpointId = client.settings.controller;
    session->keepAlive = client.settings.keepAlive;
    session->peer = client.settings.host + ":" + std::to_string(client.settings.port);
    client.session = session->id;

    lws_vhost* host = clientHost(client.settings.tls);
    const std::string path = pathWithEndpoint(client.settings.path, endpointId_);
    lws_client_connect_info info{};
    info.context = context_;
    info.vhost = host;
    info.address = client.settings.host.c_str();
    info.host = client.settings.host.c_str();
    info.port = client.settings.port;
    info.path = path.c_str();
    info.protocol = kSubprotocol;
    info.local_protocol_name = kSubprotocol;
    info.ssl_connection = client.settings.tls ? LCCSCF_USE_SSL : 0;
    info.opaque_user_data = session.get();
    info.pwsi = &session->wire;
    const std::uint64_t id = session->id;
    sessions_.emplace(id, std::move(session));
    const bool begun = host != nullptr && lws_client_connect_via_info(&info) != nullptr;
    if (!begun && sessions_.contains(id)) {
        closed(*sessions_.at(id), host == nullptr ? "the certificates cannot be read" : "cannot connect");
    }
    bridge_->wake();
}

void WebSocketService::connectLater(const std::string& row, const std::string& trouble) {
    Client& client = clients_.at(row);
    client.session = 0;
    if (stopped_) return;
    const auto wait = client.backOff.next();
    client.timer = loop_.after(wait, [this, row] { connect(row); });
    listener_.webSocketRetries(row, client.backOff.attempts(), trouble);
}

void WebSocketService::resetRetries(const std::string& row) {
    const auto client = clients_.find(row);
    if (client == clients_.end()) return;
    client->second.backOff.reset();
    listener_.webSocketRetries(row, 0, "");
    if (client->second.session == 0) connect(row);
}

void WebSocketService::forgetClient(const std::string& row) {
    const auto client = clients_.find(row);
    loop_.cancel(client->second.timer);
    const std::uint64_t session = client->second.session;
    clients_.erase(client);
    close(session, CloseCode::kNormal, "the agent does not connect here any more");
}

WebSocketSession* WebSocketService::find(std::uint64_t session) {
    const auto entry = sessions_.find(session);
    return entry == sessions_.end() ? nullptr : entry->second.get();
}

void WebSocketService::wantWrite(WebSocketSession& session) {
    if (session.wire == nullptr) return;
    (void)lws_callback_on_writable(session.wire);  // a connection that is gone is reported by its own call
    bridge_->wake();
}

bool WebSocketService::send(std::uint64_t session, std::string_view record) {
    WebSocketSession* found = find(session);
    if (found == nullptr || !found->open || found->closing) return false;
    if (found->outgoingBytes + record.size() > kMostOutgoingBytes) return false;
    std::string frame;
    frame.reserve(LWS_PRE + record.size());
    frame.append(LWS_PRE, '\0');
    frame.append(record);
    found->outgoing.push_back(std::move(frame));
    found->outgoingBytes += record.size();
    wantWrite(*found);
    return true;
}

void WebSocketService::close(std::uint64_t session, CloseCode code, const std::string& reason) {
    WebSocketSession* found = find(session);
    if (found == nullptr || found->closing) return;
    found->closing = true;
    found->closeCode = code;
    found->closeReason = reason;
    if (!found->open && found->wire != nullptr) {
        lws_set_timeout(found->wire, PENDING_TIMEOUT_KILLED_BY_PARENT, LWS_TO_KILL_SYNC);
        bridge_->wake();
        return;
    }
    wantWrite(*found);
}

void WebSocketService::stop(const std::string& reason) {
    stopped_ = true;
    for (auto& [row, client] : clients_)
        loop_.cancel(client.timer);
    closeThose([](const WebSocketSession&) { return true; }, CloseCode::kGoingAway, reason);
    if (bridge_ == nullptr) return;
    const auto end = std::chrono::steady_clock::now() + kGoodbye;
    while (!sessions_.empty() && std::chrono::steady_clock::now() < end) {
        bridge_->serve();
        pollfd inner{uv_backend_fd(bridge_->uv()), POLLIN, 0};
        (void)poll(&inner, 1, 10);  // either result leads to another round
    }
}

int WebSocketService::portOf(const std::string& row) const {
    const auto place = places_.find(row);
    if (place == places_.end() || place->second.vhost == nullptr) return 0;
    return lws_get_vhost_listen_port(place->second.vhost);
}

bool WebSocketService::write(WebSocketSession& session) {
    if (std::exchange(session.pingDue, false)) {
        std::array<unsigned char, LWS_PRE + 1> ping{};
        if (lws_write(session.wire, ping.data() + LWS_PRE, 0, LWS_WRITE_PING) < 0) return false;
        if (!session.outgoing.empty()) (void)lws_callback_on_writable(session.wire);  // the next call sends it
        return true;
    }
    if (!session.outgoing.empty()) {
        std::string frame = std::move(session.outgoing.front());
        session.outgoing.pop_front();
        const std::size_t size = frame.size() - LWS_PRE;
        session.outgoingBytes -= size;
        auto* bytes = reinterpret_cast<unsigned char*>(frame.data()) + LWS_PRE;
        if (lws_write(session.wire, bytes, size, LWS_WRITE_BINARY) < 0) return false;
        if (!session.outgoing.empty() || session.closing) (void)lws_callback_on_writable(session.wire);
        return true;
    }
    return !session.closing || session.closeSent || writeClose(session);
}

// The library has a call for this, but builds with its debugging checks end the connection before that frame leaves.
bool WebSocketService::writeClose(WebSocketSession& session) {
    const std::string reason = session.closeReason.substr(0, kMostCloseText);
    const auto code = static_cast<unsigned>(session.closeCode);
    std::string frame(LWS_PRE, '\0');
    const auto add = [&frame](std::size_t byte) { frame += static_cast<char>(byte & 0xFFU); };
    add(kFinalClose);
    add((session.isClient ? kMasked : 0U) | (reason.size() + 2));
    if (session.isClient) frame.append(4, '\0');  // a mask of zeros leaves the bytes as they are
    add(code >> 8U);
    add(code);
    frame += reason;
    auto* bytes = reinterpret_cast<unsigned char*>(frame.data()) + LWS_PRE;
    session.closeSent = true;
    lws_set_timeout(session.wire, PENDING_TIMEOUT_CLOSE_ACK, kSecondsForCloseAnswer);
    return lws_write(session.wire, bytes, frame.size() - LWS_PRE, LWS_WRITE_RAW) >= 0;
}

void WebSocketService::opened(WebSocketSession& session) {
    session.open = true;
    if (session.isClient) {
        const auto client = clients_.find(session.row);
        if (client != clients_.end()) {
            client->second.backOff.reset();
            listener_.webSocketRetries(session.row, 0, "");
        }
    } else {
        replaceOlder(session);
    }
    schedulePing(session.id);
    listener_.webSocketOpened(session);
}

// A controller whose earlier connection broke unnoticed comes back on a new one.
void WebSocketService::replaceOlder(const WebSocketSession& session) {
    if (session.endpointId.empty()) return;
    closeThose(
        [&session](const WebSocketSession& other) {
            return other.id != session.id && other.open && other.endpointId == session.endpointId;
        },
        CloseCode::kNormal, "another connection of this endpoint replaces this one");
}

void WebSocketService::closed(WebSocketSession& session, const std::string& reason) {
    const std::uint64_t id = session.id;
    const std::string text = session.closeReason.empty() ? reason : session.closeReason;
    const bool wasOpen = session.open;
    const std::string row = session.row;
    const bool isClient = session.isClient;
    loop_.cancel(session.pingTimer);
    sessions_.erase(id);
    if (wasOpen) listener_.webSocketClosed(id, text);
    const auto client = clients_.find(row);
    if (isClient && client != clients_.end() && client->second.session == id) connectLater(row, text);
}

void WebSocketService::schedulePing(std::uint64_t session) {
    WebSocketSession* found = find(session);
    if (found == nullptr || found->keepAlive == 0) return;
    found->pingTimer = loop_.after(std::chrono::seconds(found->keepAlive), [this, session] {
        WebSocketSession* at = find(session);
        if (at == nullptr) return;
        if (!at->heardSincePing) {
            at->closeReason = "the peer did not answer a Ping";
            lws_set_timeout(at->wire, PENDING_TIMEOUT_KILLED_BY_PARENT, LWS_TO_KILL_SYNC);
            bridge_->wake();
            return;
        }
        at->heardSincePing = false;
        at->pingDue = true;
        wantWrite(*at);
        schedulePing(session);
    });
}

void WebSocketService::received(WebSocketSession& session, std::string_view part, bool isFirst, bool isFinal,
                                bool isBinary) {
    session.heardSincePing = true;
    if (session.closing) return;
    const std::uint64_t id = session.id;
    if (!isBinary) {
        listener_.webSocketDropped(id, part.size(), "a text frame instead of a binary one");
        close(id, CloseCode::kUnsupportedData, "Records come in binary frames");
        return;
    }
    if (isFirst) {
        session.incoming.clear();
        session.skipsMessage = false;
        session.skipped = 0;
    }
    if (session.incoming.size() + part.size() > kMaxRecord) session.skipsMessage = true;
    if (session.skipsMessage) {
        session.skipped += session.incoming.size() + part.size();
        session.incoming.clear();
        session.incoming.shrink_to_fit();
        if (isFinal) listener_.webSocketDropped(id, session.skipped, "the Record is larger than 4 MiB");
        return;
    }
    session.incoming.append(part);
    if (!isFinal) return;
    const std::string message = std::exchange(session.incoming, {});
    if (!listener_.webSocketReceived(id, message)) {
        close(id, CloseCode::kUnsupportedData, "this is not a USP Record");
    }
}

bool WebSocketService::hasProvenItself(lws* wire) const {
    if (tls_.clientAuthorities.empty() && tls_.bearerToken.empty()) return true;
    if (!tls_.bearerToken.empty() &&
        equalSecrets(headerOf(wire, WSI_TOKEN_HTTP_AUTHORIZATION), "Bearer " + tls_.bearerToken)) {
        return true;
    }
    return !tls_.clientAuthorities.empty() && hasValidCertificate(wire);
}

std::string WebSocketService::refusal(lws* wire, WebSocketSession& session) const {
    const Place* place = placeOf(lws_get_vhost(wire));
    if (place == nullptr) return "the agent does not listen here any more";
    session.row = place->settings.mtpRow;
    session.keepAlive = place->settings.keepAlive;
    if (headerOf(wire, WSI_TOKEN_GET_URI) != place->settings.path) return "the path is not " + place->settings.path;
    if (place->settings.tls && !hasProvenItself(wire)) return "neither client certificate nor bearer token is valid";
    session.endpointId = endpointIn(wire);
    if (session.endpointId.empty()) return "";
    const bool known = std::find(controllers_.begin(), controllers_.end(), session.endpointId) != controllers_.end();
    return known ? "" : session.endpointId + " is not an enabled controller";
}

const WebSocketService::Place* WebSocketService::placeOf(const lws_vhost* vhost) const {
    for (const auto& [row, place] : places_) {
        if (place.vhost == vhost) return &place;
    }
    return nullptr;
}

}  // namespace quorvel::agent
