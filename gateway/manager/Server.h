#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/Descriptor.h"
#include "gateway/manager/EventSocket.h"
#include "gateway/manager/PacketPump.h"
#include "gateway/manager/Service.h"

namespace quorvel::manager {

/// The daemon's event loop: clients on the manager's socket, listeners on the event socket, board time.
class Server {
  public:
    /// Where the daemon is reached, and where it counts traffic instead of sending it ("": nowhere).
    struct Places {
        std::string socket;
        std::string notifySocket;
        std::string counters;
    };

    Server(Service& service, Places places);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Opens both sockets. Returns the failure, or the empty text.
    [[nodiscard]] std::string open();

    /// Serves until `stop` (a descriptor) becomes readable.
    void run(int stop);

  private:
    struct Client {
        Session session;
        std::vector<std::uint8_t> in;
        std::vector<std::uint8_t> out;
        std::size_t sent = 0;
        bool closing = false;  ///< once everything is sent
        bool dead = false;
    };

    void accept();
    void receive(int descriptor, Client& client);
    void serve(Client& client);
    void send(int descriptor, Client& client);
    [[nodiscard]] int timeout() const;

    Service& service_;
    std::string socketPath_;
    common::Descriptor listener_;
    std::map<int, Client> clients_;
    EventSocket events_;
    PacketPump pump_;
    Milliseconds hangUntil_ = 0;
};

}  // namespace quorvel::manager
