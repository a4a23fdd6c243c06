#include "gateway/board/Links.h"

#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/veth.h>
#include <net/if.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <vector>

#include "common/Descriptor.h"

namespace quorvel::board {
namespace {

// A netlink message that grows at its end.
class Message {
  public:
    Message() : bytes_(sizeof(nlmsghdr)) {}
    template <typename Record>
    void append(const Record& record) {
        appendBytes(&record, sizeof record);
    }
    void attribute(unsigned short type, const void* data, std::size_t size) {
        const std::size_t start = open(type);
        appendBytes(data, size);
        close(start);
    }
    void attribute(unsigned short type, const std::string& text) {
        attribute(type, text.c_str(), text.size() + 1);
    }
    // Begins an attribute that holds others; `close` ends it.
    [[nodiscard]] std::size_t open(unsigned short type) {
        const std::size_t start = bytes_.size();
        const rtattr header{0, type};
        append(header);
        return start;
    }
    void close(std::size_t start) {
        const auto length = static_cast<unsigned short>(bytes_.size() - start);
        std::memcpy(bytes_.data() + start + offsetof(rtattr, rta_len), &length, sizeof length);
        bytes_.resize(NLMSG_ALIGN(bytes_.size()));
    }
    [[nodiscard]] const std::vector<std::byte>& finish(unsigned short type, unsigned short flags) {
        nlmsghdr header{};
        header.nlmsg_len = static_cast<std::uint32_t>(bytes_.size());
        header.nlmsg_type = type;
        header.nlmsg_flags = flags;
        std::memcpy(bytes_.data(), &header, sizeof header);
        return bytes_;
    }

  private:
    void appendBytes(const void* data, std::size_t size) {
        const auto* first = static_cast<const std::byte*>(data);
        bytes_.insert(bytes_.end(), first, first + size);
    }

    std::vector<std::byte> bytes_;
};

int sendAndWait(const std::vector<std::byte>& message) {
    const common::Descriptor route(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    if (!route) return errno;
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    if (connect(route.get(), reinterpret_cast<const sockaddr*>(&kernel), sizeof kernel) != 0) return errno;
    if (send(route.get(), message.data(), message.size(), 0) != static_cast<ssize_t>(message.size())) return errno;
    alignas(nlmsghdr) std::array<std::byte, 4096> reply{};
    const ssize_t count = recv(route.get(), reply.data(), reply.size(), 0);
    if (count < 0) return errno;
    if (static_cast<std::size_t>(count) < sizeof(nlmsghdr) + sizeof(nlmsgerr)) return EPROTO;
    nlmsghdr header{};
    nlmsgerr result{};
    std::memcpy(&header, reply.data(), sizeof header);
    std::memcpy(&result, reply.data() + sizeof header, sizeof result);
    return header.nlmsg_type == NLMSG_ERROR ? -result.error : EPROTO;
}

ifinfomsg raised() {
    ifinfomsg info{};
    info.ifi_family = AF_UNSPEC;
    info.ifi_flags = IFF_UP;
    info.ifi_change = IFF_UP;
    return info;
}

}  // namespace

int createLink(const std::string& name, const common::MacAddress& mac, const std::string& otherEnd) {
    Message message;
    message.append(raised());
    message.attribute(IFLA_IFNAME, name);
    message.attribute(IFLA_ADDRESS, mac.bytes, sizeof mac.bytes);
    const std::size_t kind = message.open(IFLA_LINKINFO);
    message.attribute(IFLA_INFO_KIND, "veth", std::strlen("veth"));
    const std::size_t data = message.open(IFLA_INFO_DATA);
    const std::size_t peer = message.open(VETH_INFO_PEER);
    // The other end comes up afterwards: while it is being made it has no partner, and cannot be.
    message.append(ifinfomsg{});
    message.attribute(IFLA_IFNAME, otherEnd);
    message.close(peer);
    message.close(data);
    message.close(kind);
    const int error = sendAndWait(message.finish(RTM_NEWLINK, NLM_F_REQUEST | NLM_F_ACK | NLM_F_CREATE | NLM_F_EXCL));
    if (error != 0) return error;

    Message raise;
    raise.append(raised());
    raise.attribute(IFLA_IFNAME, otherEnd);
    return sendAndWait(raise.finish(RTM_NEWLINK, NLM_F_REQUEST | NLM_F_ACK));
}

}  // namespace quorvel::board
