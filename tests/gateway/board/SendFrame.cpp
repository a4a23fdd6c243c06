// Sends one frame of a given length out of an interface.

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

int main(int count, char** arguments) {
    if (count != 3) return 2;
    // An experimental protocol that nothing on the board answers to.
    constexpr unsigned short kProtocol = 0x88b5;
    const int packet = socket(AF_PACKET, SOCK_DGRAM, htons(kProtocol));
    sockaddr_ll place{};
    place.sll_family = AF_PACKET;
    place.sll_protocol = htons(kProtocol);
    place.sll_ifindex = static_cast<int>(if_nametoindex(arguments[1]));
    place.sll_halen = ETH_ALEN;
    for (int at = 0; at < ETH_ALEN; ++at)
        place.sll_addr[at] = 0xff;
    const std::vector<char> payload(std::strtoul(arguments[2], nullptr, 10) - ETH_HLEN);
    const auto* address = reinterpret_cast<const sockaddr*>(&place);
    if (sendto(packet, payload.data(), payload.size(), 0, address, sizeof place) < 0) {
        std::perror(arguments[1]);
        return 1;
    }
    close(packet);
    return 0;
}
