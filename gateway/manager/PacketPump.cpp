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
    for (std::uint64_t i = 0; i < kMostFrames && bytes > 0; ++i) {
        const auto size = static_cast<std::size_t>(std::clamp<std::uint64_t>(bytes, 60, kFrame));
        const ssize_t sent =
            sendto(socket_, frame.data(), size, MSG_DONTWAIT, reinterpret_cast<const sockaddr*>(&to), sizeof to);
        if (sent < 0) return;  // interface down or queue full: this second's rest is not counted
        bytes -= std::min<std::uint64_t>(bytes, size);
    }
}

void PacketPump::send(const std::vector<Model::KernelTraffic>& traffic) {
    if (useless_ || traffic.empty()) return;
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
