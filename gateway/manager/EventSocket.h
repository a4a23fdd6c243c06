#pragma once

#include <poll.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "common/Descriptor.h"
#include "gateway/manager/Model.h"

namespace quorvel::manager {

/// Serves station events. A listener that does not read is kept waiting for no longer than a bounded backlog lasts, and
/// then cut off; nothing here blocks.
class EventSocket {
  public:
    explicit EventSocket(std::string path);
    ~EventSocket();
    EventSocket(const EventSocket&) = delete;
    EventSocket& operator=(const EventSocket&) = delete;

    /// Opens the socket. Returns the failure, or the empty text.
    [[nodiscard]] std::string open();

    /// Adds what is to be polled; serve then takes the same list after the poll.
    void watch(std::vector<pollfd>& watched) const;
    void serve(const std::vector<pollfd>& watched);

    void publish(const StationMessage& message);
    [[nodiscard]] std::size_t listeners() const {
        return listeners_.size();
    }

  private:
    struct Listener {
        std::vector<std::uint8_t> backlog;
        bool dead = false;
    };
    static void flush(int descriptor, Listener& listener);
    void forget();

    std::string path_;
    common::Descriptor listener_;
    std::map<int, Listener> listeners_;
};

}  // namespace quorvel::manager
