#pragma once

// The agent's WebSocket connections, both those it opens and those it accepts.

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "agent/Config.h"
#include "agent/EventLoop.h"
#include "agent/mtp/BackOff.h"
#include "agent/mtp/Mtp.h"
#include "agent/mtp/UvBridge.h"
#include "agent/mtp/WebSocketSession.h"

struct lws_context;
struct lws_vhost;

namespace quorvel::agent {

/// Hears what happens on the connections. Calls come from the agent's loop.
class WebSocketListener {
  public:
    virtual ~WebSocketListener() = default;
    /// Returns a number for a new connection.
    [[nodiscard]] virtual std::uint64_t nextChannel() = 0;
    virtual void webSocketOpened(const WebSocketSession& session) = 0;
    virtual void webSocketClosed(std::uint64_t session, const std::string& reason) = 0;
    /// Returns false when the message is not a USP Record: the session is closed with 1003.
    [[nodiscard]] virtual bool webSocketReceived(std::uint64_t session, std::string_view message) = 0;
    virtual void webSocketDropped(std::uint64_t session, std::size_t size, const std::string& reason) = 0;
    /// A listening place is open (`trouble` is empty) or could not be opened.
    virtual void webSocketListens(const std::string& row, const std::string& trouble) = 0;
    /// A client has failed to connect for the `attempts`-th time; 0 after a success.
    virtual void webSocketRetries(const std::string& row, int attempts, const std::string& trouble) = 0;
};

class WebSocketService {
  public:
    /// `loop` and `listener` outlive the service. `endpointId` is the agent's.
    WebSocketService(EventLoop& loop, TlsConfig tls, std::string endpointId, WebSocketListener& listener);
    WebSocketService(const WebSocketService&) = delete;
    WebSocketService& operator=(const WebSocketService&) = delete;
    ~WebSocketService();

    /// Opens, changes and closes connections until they are those of the settings.
    void configure(const MtpSettings& settings);

    /// Sends one record as one binary message. Returns false when the session is gone or its queue is full.
    [[nodiscard]] bool send(std::uint64_t session, std::string_view record);

    /// Closes a session after what was sent on it.
    void close(std::uint64_t session, CloseCode code, const std::string& reason);

    /// Has the client of a row connect at once, and counts its attempts anew.
    void resetRetries(const std::string& row);

    /// Closes every session and waits shortly for the peers' goodbye.
    void stop(const std::string& reason);

    /// Returns the port of a listening place, which may have been given as 0.
    [[nodiscard]] int portOf(const std::string& row) const;

  private:
    friend struct WebSocketCallback;
    struct Place {
        WebSocketServerSettings settings;
        lws_vhost* vhost = nullptr;
    };
    struct Client {
        WebSocketClientSettings settings;
        BackOff backOff;
        EventLoop::TimerId timer = 0;
        std::uint64_t session = 0;  // 0: not connected, nor trying
    };

    void makeContext();
    [[nodiscard]] lws_vhost* clientHost(bool tls);
    [[nodiscard]] const char* keep(const std::string& text);
    void openPlace(const WebSocketServerSettings& settings);
    void closePlace(const std::string& row);
    void connect(const std::string& row);
    void connectLater(const std::string& row, const std::string& trouble);
    void forgetClient(const std::string& row);
    void opened(WebSocketSession& session);
    void closed(WebSocketSession& session, const std::string& reason);
    void received(WebSocketSession& session, std::string_view part, bool isFirst, bool isFinal, bool isBinary);
    [[nodiscard]] bool write(WebSocketSession& session);
    [[nodiscard]] static bool writeClose(WebSocketSession& session);
    void schedulePing(std::uint64_t session);
    [[nodiscard]] std::string refusal(lws* wire, WebSocketSession& session) const;
    [[nodiscard]] bool hasProvenItself(lws* wire) const;
    [[nodiscard]] WebSocketSession* find(std::uint64_t session);
    void wantWrite(WebSocketSession& session);
    void closeThose(const std::function<bool(const WebSocketSession&)>& chosen, CloseCode code,
                    const std::string& reason);
    void replaceOlder(const WebSocketSession& session);
    [[nodiscard]] const Place* placeOf(const lws_vhost* vhost) const;

    EventLoop& loop_;
    TlsConfig tls_;
    std::string endpointId_;
    WebSocketListener& listener_;
    std::vector<std::string> controllers_;
    std::unique_ptr<UvBridge> bridge_;
    lws_context* context_ = nullptr;
    lws_vhost* plainClients_ = nullptr;
    lws_vhost* tlsClients_ = nullptr;
    std::deque<std::string> kept_;
    std::map<std::string, Place> places_;
    std::map<std::string, Client> clients_;
    std::map<std::uint64_t, std::unique_ptr<WebSocketSession>> sessions_;
    bool stopped_ = false;
};

}  // namespace quorvel::agent
