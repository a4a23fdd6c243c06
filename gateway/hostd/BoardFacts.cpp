#include "gateway/hostd/BoardFacts.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include <quorvel.h>
#include "common/JsonDepth.h"
#include "gateway/hostd/Manager.h"
#include "gateway/hostd/Reply.h"
#include "gateway/hostd/Simulation.h"

namespace quorvel::hostd {
namespace {

using Json = nlohmann::ordered_json;

std::string contents(const std::string& file) {
    std::ifstream in(file);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

Json lines(const std::string& text) {
    Json found = Json::array();
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty()) found.push_back(presentable(line));
    }
    return found;
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

Json task(const char* name) {
    const std::int32_t pid = QuorvelUtilGetPidByName(name);
    return {{"name", name}, {"pid", pid > 0 ? Json(pid) : Json(nullptr)}, {"state", stateWord(pid)}};
}

Json interfaces() {
    Json found = Json::array();
    std::istringstream in(contents("/proc/net/dev"));
    for (std::string line; std::getline(in, line);) {
        const std::size_t begin = line.find_first_not_of(' ');
        const std::size_t colon = line.find(':');
        if (begin == std::string::npos || colon == std::string::npos) continue;
        const std::string name = line.substr(begin, colon - begin);
        if (name.starts_with("wl")) found.push_back(name);
    }
    return found;
}

}  // namespace

Json boardFacts(const std::string& boardFile) {
    const Json board = common::parseShallow(contents(boardFile));
    const auto member = [&board](const char* name) {
        return board.is_object() && board.contains(name) ? board.at(name) : Json(nullptr);
    };
    const Json count = lines(contents("/tmp/wl_instances.txt"));
    return {{"name", member("name")},
            {"identifier", member("identifier")},
            {"chips", member("chips")},
            {"chipsFound", count.empty() ? Json(nullptr) : count.front()},
            {"tasks", Json::array({task("wler_thread0"), task("wler_thread1")})},
            {"manager", task(kManager)},
            {"interfaces", interfaces()}};
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
    // A stopped one would let the question wait.
    const bool stopped = std::string_view(stateWord(QuorvelUtilGetPidByName(kManager))) == "stopped";
    return !stopped && !controlSimulation(R"({"op":"time"})").empty() ? "" : managerHealth();
}

}  // namespace quorvel::hostd
