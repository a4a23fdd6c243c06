// lspci: lists the board's PCI devices.

#include <cstdio>
#include <string>

#include "gateway/board/tools/Tool.h"

namespace {

// Lists one device; its slot is "bus:00.0".
std::string line(unsigned bus, const std::string& rest) {
    char slot[16];
    (void)std::snprintf(slot, sizeof slot, "%02x:00.0 ", bus);  // fits for every bus number
    return slot + rest + "\n";
}

}  // namespace

int main() {
    const quorvel::description::Board board = quorvel::board::boardOrExit("lspci");
    quorvel::board::actOutFault(board.faults.lspci, "lspci");
    std::string listing = line(0, "Host bridge: Device 7b10 (rev 01)");
    // Each chip sits behind a bridge of its own.
    unsigned bus = 1;
    for (const std::string& chip : board.chips) {
        listing += line(bus++, "PCI bridge: Device 7b11 (rev 01)");
        listing += line(bus++, "Network controller: Device " + chip + " (rev 03)");
    }
    listing += line(bus, "Signal processing controller: Device 7b20");
    return quorvel::board::print(listing);
}
