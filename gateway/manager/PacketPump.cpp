#include "gateway/manager/PacketPump.h"

#include <arpa/inet.h>
#include <linux/filter.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>

#include "common/InterfaceName.h"

namespace quorvel::manager {
namespace {

constexpr std::size_t kFrame = 1400;
// Frames per interface and call: one second's traffic counts in full up to some 10 Mbit/s, and no more than that
// beyond.
constexpr std::uint64_t kMostFrames = 1000;
// A protocol that nothing else uses (local experiments).
constexpr std::uint16_t kProtocol = 0x88b5;

// The far end of an interface: what is sent there is received on the board's side.
std::string peerOf(const std::string& interface) {
    return "air" + interface.substr(2);
}

// Cuts a second's bytes into frames. Ends early when `send`, which takes a frame's size, returns false.
template <typename Send>
void sendInFrames(std::uint64_t bytes, Send send) {
    for (std::uint64_t i = 0; i < kMostFrames && bytes > 0; ++i) {
        const auto size = static_cast<std::size_t>(std::clamp<std::uint64_t>(bytes, 60, kFrame));
        if (!send(size)) return;
        bytes -= std::min<std::uint64_t>(bytes, size);
    }
}

}  // namespace

PacketPump::~PacketPump() {
    if (socket_ >= 0) (void)close(socket_);
}

void PacketPump::sendOn(const std::string& interface, std::uint64_t bytes) {
    const unsigned index = if_nametoindex(interface.c_str());
    if (index == 0 || bytes == 0) return;
    std::array<std::uint8_t, kFrame> frame = {};
    frame[0] = 0x02;
    frame[6] = 0x02;
    frame[11] = 0x01;
    frame[12] = kProtocol >> 8U;
    frame[13] = kProtocol & 0xffU;
    sockaddr_ll to = {};
    to.sll_family = AF_PACKET;
    to.sll_ifindex = static_cast<int>(index);
    to.sll_halen = ETH_ALEN;
    to.sll_addr[0] = 0x02;
    sendInFrames(bytes, [&](std::size_t size) {
        const ssize_t sent =
            sendto(socket_, frame.data(), size, MSG_DONTWAIT, reinterpret_cast<const sockaddr*>(&to), sizeof to);
        return sent >= 0;  // interface down or queue full: this second's rest is not counted
    });
}

void PacketPump::count(const std::vector<Model::KernelTraffic>& traffic) {
    // The driver may be loaded while the manager runs.
    if (counters_ == nullptr || counters_->empty()) {
        counters_ = std::make_unique<common::InterfaceCounters>(countersFile_);
    }
    for (const Model::KernelTraffic& entry : traffic) {
        common::InterfaceCounters::Traffic counted;
        const auto add = [](std::uint64_t& bytes, std::uint64_t& packets) {
            return [&](std::size_t size) {
                bytes += size;
                ++packets;
                return true;
            };
        };
        sendInFrames(entry.tx, add(counted.sentBytes, counted.sentPackets));
        sendInFrames(entry.rx, add(counted.receivedBytes, counted.receivedPackets));
        counters_->count(common::interfaceName(entry.radio, entry.sub), counted);
    }
}

void PacketPump::send(const std::vector<Model::KernelTraffic>& traffic) {
    if (useless_ || traffic.empty()) return;
    if (!countersFile_.empty()) {
        count(traffic);
        return;
    }
    if (socket_ < 0) {
        // The kernel counts a packet that no socket asks for as dropped: this one asks for them all and keeps none.
        socket_ = socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, htons(kProtocol));
        sock_filter nothing = {BPF_RET | BPF_K, 0, 0, 0};
        const sock_fprog filter = {1, &nothing};
        useless_ = socket_ < 0 || setsockopt(socket_, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter) != 0;
        if (useless_) return;
    }
    for (const Model::KernelTraffic& entry : traffic) {
        const std::string interface = common::interfaceName(entry.radio, entry.sub);
        sendOn(interface, entry.tx);
        sendOn(peerOf(interface), entry.rx);
    }
}

}  // namespace quorvel::manager
