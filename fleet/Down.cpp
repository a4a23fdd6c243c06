// Ending a fleet.
#include <poll.h>

#include <set>

#include "fleet/Crew.h"
#include "fleet/Fleet.h"
#include "fleet/Processes.h"
#include "gateway/launch/Gateway.h"

namespace quorvel::fleet {
namespace {

constexpr unsigned kEndingHands = 16;
constexpr int kPatienceMilliseconds = 3000;
constexpr int kKillMilliseconds = 15000;

Json endOne(const launch::Options& options) {
    auto gateway = launch::Gateway::findRunning(options);
    if (gateway == nullptr) return {{"up", false}};
    launch::Gateway::stop(std::move(gateway), options);
    return {{"up", true}};
}

}  // namespace

DownResult takeDown(const launch::Options& options, const DownOrder& order) {
    const Folder folder(options);
    if (!folder.exists()) {
        // Before the plan is written nothing runs.
        throw FleetError("no fleet is up (folder " + folder.path().string() + ")");
    }
    const common::Descriptor lock = folder.take();
    std::set<unsigned> numbers;
    for (const Process& process : findProcesses(folder.path()))
        numbers.insert(process.gateway);
    DownResult result;
    unsigned done = 0;
    CrewOrder crew;
    crew.numbers.assign(numbers.begin(), numbers.end());
    crew.hands = kEndingHands;
    crew.work = [&](unsigned number) { return endOne(optionsFor(options, folder, number)); };
    crew.done = [&](unsigned, const Json& outcome) {
        if (outcome.value("up", false)) ++result.ended;
        ++done;
        if (order.progress) order.progress(done, static_cast<unsigned>(numbers.size()));
    };
    runCrew(crew);
    // Agents end with their boards; the rest is ended by force.
    std::vector<Process> left = findProcesses(folder.path());
    for (int waited = 0; !left.empty() && waited < kPatienceMilliseconds; waited += 20) {
        (void)poll(nullptr, 0, 20);
        left = findProcesses(folder.path());
    }
    result.killed = static_cast<unsigned>(left.size());
    if (!endProcesses(folder.path(), kKillMilliseconds)) {
        throw FleetError("process " + std::to_string(findProcesses(folder.path()).front().id) +
                         " of the fleet does not end; end it and try again");
    }
    folder.remove();
    return result;
}

}  // namespace quorvel::fleet
