#include "gateway/hostd/BoardFacts.h"

#include <quorvel.h>

#include <fstream>
#include <optional>
#include <sstream>

#include "common/InterfaceCounters.h"
#include "common/JsonDepth.h"
#include "gateway/hostd/Manager.h"
#include "gateway/hostd/Reply.h"
#include "gateway/hostd/Simulation.h"

namespace quorvel::hostd {
namespace {

using protocol::Json;
using protocol::Task;

std::string contents(const std::string& file) {
    std::ifstream in(file);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Returns the first line that is not empty.
std::optional<std::string> firstLine(const std::string& text) {
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty()) return presentable(line);
    }
    return std::nullopt;
}

// The state letter of /proc/PID/stat, behind the name's closing parenthesis.
char stateOf(std::int32_t pid) {
    const std::string stat = contents("/proc/" + std::to_string(pid) + "/stat");
    const std::size_t shut = stat.rfind(')');
    return shut == std::string::npos || shut + 2 >= stat.size() ? '\0' : stat[shut + 2];
}

const char* stateWord(std::int32_t pid) {
    if (pid <= 0) return "gone";
    switch (stateOf(pid)) {
        case 'T':
        case 't':
            return "stopped";
        case '\0':
        case 'Z':
            return "gone";
        default:
            return "running";
    }
}

std::string networkDevices(const board::Places& places) {
    if (places.interfaces.empty()) return contents("/proc/net/dev");
    return common::InterfaceCounters(places.interfaces).networkDevices();
}

Task task(const char* name) {
    const std::int32_t pid = QuorvelUtilGetPidByName(name);
    return {name, pid > 0 ? std::optional(pid) : std::nullopt, stateWord(pid)};
}

}  // namespace

protocol::BoardFacts boardFacts(const board::Places& places) {
    const Json board = common::parseShallow(contents(places.boardFile));
    const auto member = [&board](const char* name) {
        return board.is_object() && board.contains(name) ? board.at(name) : Json(nullptr);
    };
    protocol::BoardFacts facts;
    facts.name = member("name");
    facts.identifier = member("identifier");
    facts.chips = member("chips");
    facts.chipsFound = firstLine(contents(places.root + "/tmp/wl_instances.txt"));
    facts.tasks = {task("wler_thread0"), task("wler_thread1")};
    facts.manager = task(kManager);
    for (const protocol::InterfaceCounters& each : interfaceCounters(places))
        facts.interfaces.push_back(each.interface);
    return facts;
}

std::vector<protocol::InterfaceCounters> interfaceCounters(const board::Places& places) {
    std::vector<protocol::InterfaceCounters> found;
    std::istringstream in(networkDevices(places));
    for (std::string line; std::getline(in, line);) {
        const std::size_t begin = line.find_first_not_of(' ');
        const std::size_t colon = line.find(':');
        if (begin == std::string::npos || colon == std::string::npos) continue;
        protocol::InterfaceCounters counters;
        counters.interface = line.substr(begin, colon - begin);
        if (!counters.interface.starts_with("wl")) continue;
        // Eight received counters, of which bytes and packets come first; then those sent.
        std::istringstream numbers(line.substr(colon + 1));
        std::uint64_t other = 0;
        numbers >> counters.bytesReceived >> counters.packetsReceived;
        for (int i = 0; i < 6; ++i)
            numbers >> other;
        numbers >> counters.bytesSent >> counters.packetsSent;
        found.push_back(std::move(counters));
    }
    return found;
}

protocol::LivePicture lookAround(const board::Places& places) {
    protocol::LivePicture picture;
    picture.manager = task(kManager);
    picture.interfaces = interfaceCounters(places);
    if (!managerAbsence().empty()) return picture;
    if (auto state = protocol::readSimulationState(askSimulation("state"))) picture.radios = std::move(state->radios);
    if (auto answer = protocol::readSimulationAnswer(askSimulation("station.list"))) {
        picture.stations = std::move(answer->stations);
    }
    if (auto answer = protocol::readSimulationAnswer(askSimulation("neighbour.list"))) {
        picture.neighbours = std::move(answer->neighbours);
    }
    return picture;
}

std::string managerHealth() {
    const std::int32_t pid = QuorvelUtilGetPidByName(kManager);
    const std::string state = stateWord(pid);
    if (state == "gone") return "the WLAN manager (wlmngr2) does not answer: it is gone";
    return "the WLAN manager (wlmngr2) does not answer: it is " + state + " (process " + std::to_string(pid) +
           " on the board)";
}

std::string managerAbsence() {
    const bool running = std::string_view(stateWord(QuorvelUtilGetPidByName(kManager))) == "running";
    return running ? "" : managerHealth();
}

std::string managerTrouble() {
    // A stopped manager would leave the question unanswered until it times out.
    const bool stopped = std::string_view(stateWord(QuorvelUtilGetPidByName(kManager))) == "stopped";
    return !stopped && askSimulation("time").is_object() ? "" : managerHealth();
}

}  // namespace quorvel::hostd
