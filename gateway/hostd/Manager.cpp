#include "gateway/hostd/Manager.h"

#include <poll.h>
#include <signal.h>

#include <quorvel.h>

#include <fstream>
#include <iterator>

#include "gateway/hostd/BoardFacts.h"
#include "gateway/hostd/Simulation.h"
#include "gateway/hostd/protocol/Codec.h"

namespace quorvel::hostd {
namespace {

using protocol::Json;

constexpr int kPatience = 5000;  // milliseconds
constexpr int kGlance = 2;

Json refused(const std::string& why) {
    protocol::SimulationAnswer answer;
    answer.error = why;
    return protocol::jsonOf(answer);
}

Json carriedOut() {
    protocol::SimulationAnswer answer;
    answer.ok = true;
    return protocol::jsonOf(answer);
}

// Waits until `there` returns true. Returns false when it never does.
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

Json Manager::signalProcess(const std::string& op) {
    const std::int32_t pid = QuorvelUtilGetPidByName(kManager);
    if (pid <= 0) return refused("the WLAN manager (wlmngr2) does not run");
    const int number = op == "daemon.kill" ? SIGKILL : op == "daemon.stop" ? SIGSTOP : SIGCONT;
    (void)kill(pid, number);  // whether it worked shows below
    const bool done = await([&] {
        if (number == SIGKILL) return QuorvelUtilGetPidByName(kManager) != pid;
        return isStopped(pid) == (number == SIGSTOP);
    });
    return done ? carriedOut() : refused("the WLAN manager (wlmngr2) does not take the signal");
}

Json Manager::restart() {
    const auto terminate = plugin_.find<std::uint32_t()>("Quorvel_P_WiFiTerminateWldaemon");
    const auto launch = plugin_.find<std::uint32_t()>("Quorvel_P_WiFiLaunchWldaemon");
    if (terminate == nullptr || launch == nullptr) return refused("the plug-in exports nothing to launch it with");
    if (QuorvelUtilGetPidByName(kManager) > 0) (void)terminate();  // it may have ended meanwhile
    if (const std::uint32_t result = launch(); result != 0)
        return refused("the plug-in could not launch the WLAN manager (result " + std::to_string(result) + ")");
    clock_.managerStarted();
    if (!await([] { return askSimulation("time").is_object(); }))
        return refused("the new WLAN manager (wlmngr2) does not answer");
    launched_();
    return carriedOut();
}

Controlled Manager::control(const Json& command) {
    const std::string operation = operationOf(command);
    if (operation == "daemon.kill" || operation == "daemon.stop" || operation == "daemon.continue") {
        return {signalProcess(operation), ""};
    }
    if (operation == "daemon.restart") return {restart(), ""};
    const std::string text = controlSimulation(command.dump(-1, ' ', false, Json::error_handler_t::replace));
    Json answer = Json::parse(text, nullptr, false);
    if (answer.is_object()) {
        if (operation == "time") learnTime(clock_, answer);
        return {std::move(answer), ""};
    }
    if (!text.empty()) return {nullptr, text};
    const std::string why = managerTrouble();
    return {nullptr, why.empty() ? "the WLAN manager (wlmngr2) did not answer" : why};
}

void learnTime(Clock& clock, const Json& answer) {
    const auto read = protocol::readSimulationAnswer(answer);
    if (read && read->time) clock.learn(*read->time, read->isVirtual);
}

}  // namespace quorvel::hostd
