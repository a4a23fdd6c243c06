#pragma once

// All transports of the agent: MQTT clients and WebSocket connections, as the data model wants them.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "agent/Config.h"
#include "agent/EventLoop.h"
#include "agent/mtp/MqttChannel.h"
#include "agent/mtp/Mtp.h"
#include "agent/mtp/WebSocketService.h"

namespace quorvel::agent {

class TransportSet final : public Transports, private WebSocketListener {
  public:
    /// `loop` outlives the transports. Call listen() before configure().
    TransportSet(EventLoop& loop, TlsConfig tls);
    ~TransportSet() override;

    /// Names the listener, which outlives the transports or their stop().
    void listen(MtpListener& listener) {
        listener_ = &listener;
    }

    void configure(const MtpSettings& settings) override;
    [[nodiscard]] bool send(std::string record, const Destination& destination) override;
    void closeChannel(std::uint64_t channel, const std::string& reason) override;
    void resetRetries(const std::string& row) override;
    void stop(const std::string& reason) override;

    /// Returns the port of a place that accepts WebSocket connections, or 0.
    [[nodiscard]] int portOf(const std::string& mtpRow) const;

  private:
    [[nodiscard]] std::uint64_t nextChannel() override;
    void webSocketOpened(const WebSocketSession& session) override;
    void webSocketClosed(std::uint64_t session, const std::string& reason) override;
    [[nodiscard]] bool webSocketReceived(std::uint64_t session, std::string_view message) override;
    void webSocketDropped(std::uint64_t session, std::size_t size, const std::string& reason) override;
    void webSocketListens(const std::string& row, const std::string& trouble) override;
    void webSocketRetries(const std::string& row, int attempts, const std::string& trouble) override;

    void apply();
    void configureMqtt();
    void configureWebSocket();

    EventLoop& loop_;
    TlsConfig tls_;
    MtpListener* listener_ = nullptr;
    MtpSettings wanted_;
    EventLoop::TimerId applying_ = 0;
    std::map<std::string, std::unique_ptr<MqttChannel>> brokers_;  // by the row of the MTP
    std::unique_ptr<WebSocketService> webSocket_;
    std::uint64_t lastChannel_ = 0;
};

}  // namespace quorvel::agent
