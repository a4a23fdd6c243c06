#pragma once

#include <cstdint>
#include <vector>

#include "gateway/manager/Model.h"

namespace quorvel::manager {

/// Sends real packets through the board's interfaces so that the kernel's counters grow with the stations' traffic.
/// Without the interfaces, or the right to send on them, it does nothing.
class PacketPump {
  public:
    PacketPump() = default;
    ~PacketPump();
    PacketPump(const PacketPump&) = delete;
    PacketPump& operator=(const PacketPump&) = delete;

    void send(const std::vector<Model::KernelTraffic>& traffic);

  private:
    void sendOn(const std::string& interface, std::uint64_t bytes);

    int socket_ = -1;
    bool useless_ = false;
};

}  // namespace quorvel::manager
