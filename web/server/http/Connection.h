#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "web/server/http/Server.h"
#include "web/server/http/Wire.h"

namespace quorvel::web {

/// One connection: requests one after the other, or, once it streams, the board's changes until either side ends it.
class Connection : public std::enable_shared_from_this<Connection> {
  public:
    Connection(boost::asio::ip::tcp::socket socket, Server& server);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() = default;

    void start();
    /// Sends what has changed; the server calls it when it shows another picture.
    void pictureChanged();
    /// Ends the connection at once.
    void end();

  private:
    void readRequest(std::chrono::milliseconds time);
    void takeRequest(boost::beast::error_code error);
    void send(Reply reply, bool keepAlive);
    void beginStream();
    void sendNews();
    void sendText(std::string text);
    void awaitEnd();
    void awaitHeartbeat();

    boost::beast::tcp_stream stream_;
    Server& server_;
    boost::beast::flat_buffer buffer_;
    std::optional<Parser> parser_;
    std::optional<WireReply> reply_;
    boost::asio::steady_timer heartbeat_;
    std::string sending_;
    bool streams_ = false;
    bool writing_ = false;
    bool ended_ = false;
    // How far a stream has come.
    std::uint64_t version_ = 0;
    std::uint64_t event_ = 0;
};

}  // namespace quorvel::web
