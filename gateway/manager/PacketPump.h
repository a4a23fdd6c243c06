#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/InterfaceCounters.h"
#include "gateway/manager/Model.h"

namespace quorvel::manager {

/// Sends real packets through the board's interfaces so that the kernel's counters grow with the stations' traffic.
/// Without the interfaces, or the right to send on them, it does nothing. On a board without a network namespace it
/// counts the packets in a file instead.
class PacketPump {
  public:
    /// `countersFile` has the interfaces' counters (common/InterfaceCounters.h); empty: the kernel has them.
    explicit PacketPump(std::string countersFile) : countersFile_(std::move(countersFile)) {}
    ~PacketPump();
    PacketPump(const PacketPump&) = delete;
    PacketPump& operator=(const PacketPump&) = delete;

    void send(const std::vector<Model::KernelTraffic>& traffic);

  private:
    void sendOn(const std::string& interface, std::uint64_t bytes);
    void count(const std::vector<Model::KernelTraffic>& traffic);

    std::string countersFile_;
    std::unique_ptr<common::InterfaceCounters> counters_;
    int socket_ = -1;
    bool useless_ = false;
};

}  // namespace quorvel::manager
