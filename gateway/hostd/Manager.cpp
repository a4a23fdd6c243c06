#include "gateway/hostd/Manager.h"

#include <poll.h>
#include <signal.h>

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include <quorvel.h>
#include "common/JsonDepth.h"
#include "gateway/hostd/Simulation.h"

namespace quorvel::hostd {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kPatience = 5000;  // milliseconds
constexpr int kGlance = 2;

std::string refused(const std::string& why) {
    return Json{{"ok", false}, {"error", why}}.dump();
}

// Waits until `there` says so. Returns false when it never does.
bool await(const std::function<bool()>& there) {
    for (int waited = 0; !there(); waited += kGlance) {
        if (waited >= kPatience) return false;
        (void)poll(nullptr, 0, kGlance);
    }
    return true;
}

bool isStopped(std::int32_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    const std::string stat{std::istreambuf_iterator<char>(file), {}};
    const std::size_t name = stat.rfind(") ");
    return name != std::string::npos && name + 2 < stat.size() && stat[name + 2] == 'T';
}

}  // namespace

std::string Manager::signalProcess(const std::string& op) {
    const std::int32_t pid = QuorvelUtilGetPidByName(kManager);
    if (pid <= 0) return refused("the WLAN manager (wlmngr2) does not run");
    const int number = op == "daemon.kill" ? SIGKILL : op == "daemon.stop" ? SIGSTOP : SIGCONT;
    (void)kill(pid, number);  // whether it worked shows below
    const bool done = await([&] {
        if (number == SIGKILL) return QuorvelUtilGetPidByName(kManager) != pid;
        return isStopped(pid) == (number == SIGSTOP);
    });
    return done ? R"({"ok":true})" : refused("the WLAN manager (wlmngr2) does not take the signal");
}

std::string Manager::restart() {
    const auto terminate = plugin_.find<std::uint32_t()>("Quorvel_P_WiFiTerminateWldaemon");
    const auto launch = plugin_.find<std::uint32_t()>("Quorvel_P_WiFiLaunchWldaemon");
    if (terminate == nullptr || launch == nullptr) return refused("the plug-in exports nothing to launch it with");
    if (QuorvelUtilGetPidByName(kManager) > 0) (void)terminate();  // what is left of it is ended or was gone already
    if (const std::uint32_t result = launch(); result != 0)
        return refused("the plug-in could not launch the WLAN manager (result " + std::to_string(result) + ")");
    if (!await([] { return !controlSimulation(R"({"op":"time"})").empty(); }))
        return refused("the new WLAN manager (wlmngr2) does not answer");
    launched_();
    return R"({"ok":true})";
}

std::string Manager::control(const std::string& command) {
    const Json request = common::parseShallow(command);
    const std::string op = request.is_object() && request.contains("op") && request.at("op").is_string()
                               ? request.at("op").get<std::string>()
                               : "";
    if (op == "daemon.kill" || op == "daemon.stop" || op == "daemon.continue") return signalProcess(op);
    if (op == "daemon.restart") return restart();
    return controlSimulation(command);
}

}  // namespace quorvel::hostd
