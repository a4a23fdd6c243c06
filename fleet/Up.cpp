// Bringing a fleet up.
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "common/JsonDepth.h"
#include "fleet/Crew.h"
#include "fleet/Fleet.h"
#include "gateway/board/Board.h"
#include "gateway/description/Reader.h"
#include "gateway/launch/Gateway.h"

namespace quorvel::fleet {
namespace {

using Clock = std::chrono::steady_clock;

Json readFleetBoard(const launch::Options& options) {
    board::Options asked;
    asked.board = options.board;
    asked.programFolder = launch::programFolder(options);
    const std::string path = board::findBoard(asked);
    const auto parsed = description::readBoardFile(path);
    if (const auto* const error = std::get_if<description::Error>(&parsed)) throw FleetError(error->message);
    std::ifstream file(path, std::ios::binary);
    return common::parseShallow(std::string(std::istreambuf_iterator<char>(file), {}));
}

void refuse(const Folder& folder, const std::string& what, const std::string& has, const std::string& wanted) {
    if (has == wanted) return;
    throw FleetError("the fleet in " + folder.path().string() + " has " + what + " " + has + ", not " + wanted +
                     "; ask for the same, or end it with fleet down first");
}

// A fleet that is there may grow; nothing else of it can change.
void checkAgainst(const Folder& folder, const Plan& old, const Plan& wanted) {
    refuse(folder, "the board", old.board, wanted.board);
    refuse(folder, "the seed", std::to_string(old.seed), std::to_string(wanted.seed));
    refuse(folder, "the first gateway", std::to_string(old.first), std::to_string(wanted.first));
    refuse(folder, "the agent settings", old.agent.dump(), wanted.agent.dump());
    refuse(folder, "the sandbox", old.sandbox, wanted.sandbox);
    if (wanted.count < old.count) {
        throw FleetError("the fleet in " + folder.path().string() + " has " + std::to_string(old.count) +
                         " gateways; a number from that on makes it grow, fleet down ends it");
    }
}

void prepare(const Folder& folder, const Json& board, const Plan& plan, unsigned number) {
    const std::string own = folder.gateway(number);
    if (mkdir(own.c_str(), 0700) != 0 && errno != EEXIST)
        throw FleetError("cannot create the folder " + own + ": " + std::strerror(errno));
    Identity identity(plan.seed, number);
    (void)setenv("QUORVEL_SEED", std::to_string(identity.seed()).c_str(), 1);
    const std::string description = folder.description(number);
    std::ofstream file(description, std::ios::binary);
    file << identity.describe(board).dump() << '\n' << std::flush;
    if (!file) throw FleetError("cannot write " + description + ": " + std::strerror(errno));
}

// Brings one gateway up, in a process of the crew.
Json bringOneUp(const launch::Options& options, const UpOrder& order, const Folder& folder, const Json& board,
                unsigned number) {
    const auto begun = Clock::now();
    const launch::Options own = optionsFor(options, folder, number);
    if (launch::Gateway::findRunning(own) == nullptr) {
        prepare(folder, board, order.plan, number);
        (void)launch::Gateway::startInBackground(own);  // its sandbox was chosen for the fleet
    }
    const std::string endpoint = order.startAgent ? order.startAgent(own) : "";
    const std::chrono::duration<double> took = Clock::now() - begun;
    return {{"seconds", took.count()}, {"endpoint", endpoint}};
}

bool isUp(const launch::Options& options, const Folder& folder, const std::map<unsigned, Start>& starts,
          unsigned number) {
    const auto start = starts.find(number);
    return start != starts.end() && start->second.error.empty() &&
           launch::Gateway::findRunning(optionsFor(options, folder, number)) != nullptr;
}

}  // namespace

UpResult bringUp(const launch::Options& options, const UpOrder& order) {
    const Folder folder(options);
    if (order.plan.last() > kMostGateways) {
        throw FleetError("gateways " + std::to_string(order.plan.first) + " to " + std::to_string(order.plan.last()) +
                         ": gateways have numbers from 1 to " + std::to_string(kMostGateways));
    }
    const common::Descriptor lock = folder.take();
    std::map<unsigned, Start> starts;
    if (folder.exists()) {
        checkAgainst(folder, folder.read(), order.plan);
        starts = folder.starts();
    } else {
        folder.keepBoard(readFleetBoard(options));
    }
    // The plan is there before the first gateway: fleet down finds them all.
    folder.write(order.plan);
    const Json board = folder.board();
    (void)Identity(order.plan.seed, order.plan.first).describe(board);  // what is wrong with it is wrong for all

    UpResult result;
    CrewOrder crew;
    for (unsigned number = order.plan.first; number <= order.plan.last(); ++number) {
        if (isUp(options, folder, starts, number))
            ++result.up;
        else
            crew.numbers.push_back(number);
    }
    result.asked = order.plan.count;
    const auto of = static_cast<unsigned>(crew.numbers.size());
    crew.hands = usualHands();
    crew.perSecond = order.perSecond;
    crew.work = [&](unsigned number) { return bringOneUp(options, order, folder, board, number); };
    crew.stop = order.stop;
    crew.done = [&](unsigned number, const Json& outcome) {
        const Start start{outcome.value("seconds", 0.0), outcome.value("endpoint", ""), outcome.value("error", "")};
        folder.note(number, start);
        if (start.error.empty())
            ++result.up;
        else
            result.failed[number] = start.error;
        if (order.started) order.started(number, start, of);
    };
    runCrew(crew);
    return result;
}

}  // namespace quorvel::fleet
