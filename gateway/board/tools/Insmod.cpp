// insmod: loads the board's drivers. The WL driver brings the interfaces of the radios, the WLCSM driver its two tasks.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "common/InterfaceCounters.h"
#include "common/InterfaceName.h"
#include "gateway/board/Links.h"
#include "gateway/board/tools/DriverTasks.h"
#include "gateway/board/tools/Tool.h"

namespace {

using namespace quorvel;

int refuse(const std::string& module, const std::string& why) {
    std::fprintf(stderr, "insmod: cannot load %s: %s\n", module.c_str(), why.c_str());
    return 1;
}

// Makes interfaces that count in a file, for a board without a network namespace.
int countInterfaces(const std::string& module, const description::Board& board, const std::string& file) {
    std::vector<std::string> names;
    for (const description::Radio& radio : board.radios) {
        for (const description::Bss& bss : radio.bss)
            names.push_back(common::interfaceName(radio.index, bss.index));
    }
    const int error = common::InterfaceCounters::create(file, names);
    return error == 0 ? 0 : refuse(module, "interface " + names.front() + ": " + std::strerror(error));
}

int loadRadios(const std::string& module, const description::Board& board) {
    const char* const counters = std::getenv("QUORVEL_INTERFACES");
    if (counters != nullptr && counters[0] != '\0') return countInterfaces(module, board, counters);
    for (const description::Radio& radio : board.radios) {
        for (const description::Bss& bss : radio.bss) {
            const std::string name = common::interfaceName(radio.index, bss.index);
            const int error = board::createLink(name, bss.bssid, common::interfaceName(radio.index, bss.index, "air"));
            if (error != 0) return refuse(module, "interface " + name + ": " + std::strerror(error));
        }
    }
    return 0;
}

int startTasks(const std::string& module) {
    for (const char* name : {"wler_thread0", "wler_thread1"}) {
        if (board::driverTaskRuns(name)) return refuse(module, std::string(name) + " runs already");
        const int error = board::startDriverTask(name);
        if (error != 0) return refuse(module, std::string(name) + ": " + std::strerror(error));
    }
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 2) {
        std::fputs("Usage: insmod MODULE [PARAMETER=VALUE...]\n", stderr);
        return 2;
    }
    const std::string module = arguments[1];
    const std::string name = std::filesystem::path(module).stem();
    const description::Board board = board::boardOrExit("insmod");
    board::actOutFault(board.faults.insmod, "insmod");
    if (name == "wl") return loadRadios(module, board);
    if (name == "wlcsm") return startTasks(module);
    return refuse(module, "this board has the modules wl.ko and wlcsm.ko");
}
