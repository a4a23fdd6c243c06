// Looking at a fleet.
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "fleet/Crew.h"
#include "fleet/Fleet.h"
#include "fleet/Processes.h"
#include "gateway/launch/Gateway.h"

namespace quorvel::fleet {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kAgent = "usp";
constexpr unsigned kLookingHands = 4;

// One gateway's report of itself.
struct Glance {
    bool up = false;
    bool agent = false;
    bool connected = false;
    std::uint64_t subscriptions = 0;
    std::uint64_t messages = 0;
    std::string error;
};

bool hasTransport(const Json& status) {
    const auto mtps = status.find("mtps");
    if (mtps == status.end() || !mtps->is_array()) return false;
    return std::any_of(mtps->begin(), mtps->end(),
                       [](const Json& mtp) { return mtp.is_object() && mtp.value("status", "") == "Up"; });
}

Json glanceAt(const launch::Options& options) {
    const auto gateway = launch::Gateway::findRunning(options);
    if (gateway == nullptr) return {{"up", false}};
    Json found = {{"up", true}};
    (void)gateway->client().ask(hostd::protocol::ReadStatus{kAgent}, [&found](const launch::Part& part) {
        for (const hostd::protocol::ServiceStatus& service : part.status) {
            const Json& status = service.status;
            if (!status.is_object()) continue;
            found["agent"] = service.connected;
            found["connected"] = service.connected && hasTransport(status);
            found["subscriptions"] = status.value("subscriptions", std::uint64_t{0});
            const Json counters = status.value("counters", Json::object());
            found["messages"] = counters.value("received", std::uint64_t{0}) + counters.value("sent", std::uint64_t{0});
        }
    });
    return found;
}

struct Round {
    std::map<unsigned, Glance> glances;
    std::vector<Process> processes;
    Clock::time_point at;
};

Round lookRound(const launch::Options& options, const Folder& folder, const Plan& plan,
                const std::function<bool()>& stop) {
    Round round;
    CrewOrder crew;
    for (unsigned number = plan.first; number <= plan.last(); ++number)
        crew.numbers.push_back(number);
    crew.hands = kLookingHands;
    crew.stop = stop;
    crew.work = [&](unsigned number) { return glanceAt(optionsFor(options, folder, number)); };
    crew.done = [&](unsigned number, const Json& json) {
        Glance& glance = round.glances[number];
        glance.up = json.value("up", false);
        glance.agent = json.value("agent", false);
        glance.connected = json.value("connected", false);
        glance.subscriptions = json.value("subscriptions", std::uint64_t{0});
        glance.messages = json.value("messages", std::uint64_t{0});
        glance.error = json.value("error", "");
    };
    runCrew(crew);
    round.processes = findProcesses(folder.path());
    round.at = Clock::now();
    return round;
}

std::uint64_t ticksOf(const std::vector<Process>& processes) {
    std::uint64_t sum = 0;
    for (const Process& process : processes)
        sum += process.ticks;
    return sum;
}

std::uint64_t messagesOf(const Round& round) {
    std::uint64_t sum = 0;
    for (const auto& [number, glance] : round.glances)
        sum += glance.messages;
    return sum;
}

// A counter that is less than before has started again.
double perSecond(std::uint64_t before, std::uint64_t after, double seconds) {
    return after < before || seconds <= 0 ? 0 : static_cast<double>(after - before) / seconds;
}

// Returns why a gateway is not as it was asked to be, or the empty text.
std::string reasonOf(const Glance& glance, const std::map<unsigned, Start>& starts, unsigned number, const Plan& plan) {
    const auto start = starts.find(number);
    const bool complete = glance.up && (plan.agent.is_null() || glance.agent);
    if (complete) return "";
    if (!glance.error.empty()) return glance.error;
    if (start == starts.end()) return "it has not been started";
    if (!start->second.error.empty()) return start->second.error;
    return glance.up ? "its agent has ended" : "it came up and has ended since";
}

}  // namespace

Status lookAt(const launch::Options& options, double seconds, const std::function<bool()>& stop) {
    const Folder folder(options);
    Status status;
    status.plan = folder.read();
    status.folder = folder.path();
    const Round before = lookRound(options, folder, status.plan, stop);
    const auto until = before.at + std::chrono::duration<double>(seconds);
    while (Clock::now() < until && !stop())
        (void)poll(nullptr, 0, 50);
    // Asking costs the gateways processor time, which must not be counted.
    const auto calm = Clock::now();
    const std::vector<Process> rested = findProcesses(folder.path());
    const Round after = lookRound(options, folder, status.plan, stop);
    const std::chrono::duration<double> idle = calm - before.at;
    const std::chrono::duration<double> all = after.at - before.at;
    status.processor =
        perSecond(ticksOf(before.processes), ticksOf(rested), idle.count()) / static_cast<double>(sysconf(_SC_CLK_TCK));
    status.messagesPerSecond = perSecond(messagesOf(before), messagesOf(after), all.count());
    status.processorSeconds = static_cast<double>(ticksOf(rested)) / static_cast<double>(sysconf(_SC_CLK_TCK));
    status.processes = after.processes.size();
    status.memory = proportionalMemory(after.processes);
    status.available = availableMemory();

    const std::map<unsigned, Start> starts = folder.starts();
    for (const auto& [number, start] : starts) {
        if (start.error.empty() && start.seconds > status.slowestStart) {
            status.slowestStart = start.seconds;
            status.slowestGateway = number;
        }
    }
    for (const auto& [number, glance] : after.glances) {
        status.up += glance.up ? 1 : 0;
        status.agents += glance.agent ? 1 : 0;
        status.connected += glance.connected ? 1 : 0;
        status.subscriptions += glance.subscriptions;
        const std::string why = reasonOf(glance, starts, number, status.plan);
        if (!why.empty()) status.failed[number] = why;
    }
    return status;
}

}  // namespace quorvel::fleet
