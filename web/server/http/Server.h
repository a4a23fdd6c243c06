#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "web/server/Site.h"
#include "web/server/http/Address.h"

namespace quorvel::web {

class Connection;

/// Bounds of the server, in connections and seconds.
struct Limits {
    std::size_t connections = 128;
    std::size_t streams = 64;
    std::chrono::milliseconds toAsk{10'000};      ///< a request must be whole within this time
    std::chrono::milliseconds toTake{10'000};     ///< what is sent must be taken within this time
    std::chrono::milliseconds keepAlive{30'000};  ///< a connection may be idle for this long
    std::chrono::milliseconds heartbeat{15'000};  ///< a stream without news gets a comment
};

/// Counts of the server, for the metrics.
struct ServerCounts {
    std::uint64_t requests = 0;
    std::uint64_t refused = 0;
    std::uint64_t dropped = 0;  ///< connections ended because the client was too slow, or there were too many
    std::size_t connections = 0;
    std::size_t streams = 0;
};

/// Serves a site over HTTP/1.1. Everything happens in the thread that is in run(), and before it in the one that sets
/// the server up; other threads call nothing but post().
class Server {
  public:
    /// Listens. Throws std::runtime_error when the address cannot be had.
    explicit Server(const Address& address, Limits limits = {});
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server();

    /// Serves the site from now on; it must outlive the server's run.
    void serve(const Site& site);

    /// Returns where it listens; the port is known when any free one was asked for.
    [[nodiscard]] const Address& address() const {
        return address_;
    }

    /// Serves until stop().
    void run();

    /// Has SIGINT, SIGTERM and SIGHUP stop the server.
    void stopAtSignals();

    /// Has `work` done in the thread that serves. Callable from any thread.
    void post(std::function<void()> work);

    /// Shows the picture from now on, and sends streams what has changed.
    void show(std::shared_ptr<const Picture> picture);

    /// Stops listening, ends every connection and then run().
    void stop();

    [[nodiscard]] const ServerCounts& counts() const {
        return counts_;
    }

  private:
    friend class Connection;
    struct Sockets;

    void accept();
    void forget(const std::shared_ptr<Connection>& connection);

    Address address_;
    const Limits limits_;
    const Site* site_ = nullptr;
    std::shared_ptr<const Picture> picture_;
    ServerCounts counts_;
    std::unique_ptr<Sockets> sockets_;  // apart, so that the library of sockets is compiled in few places
};

}  // namespace quorvel::web
