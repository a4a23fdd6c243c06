// The counters of an interface.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvel {

/// One line of /proc/net/dev.
struct NetDevStats {
    char ifName[128];
    uint32_t rxBytes;
    uint32_t rxPackets;
    uint32_t rxErrors;
    uint32_t rxDrops;
    uint32_t rxFifo;
    uint32_t rxFrame;
    uint32_t rxCompressed;
    uint32_t rxMulticast;
    uint32_t txBytes;
    uint32_t txPackets;
    uint32_t txErrors;
    uint32_t txDrops;
    uint32_t txFifo;
    uint32_t txColls;
    uint32_t txCarrier;
    uint32_t txCompressed;
};
static_assert(sizeof(NetDevStats) == 192);

}  // namespace quorvel
