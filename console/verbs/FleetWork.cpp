// fleet run, fleet churn: what happens to a fleet.
#include <fstream>
#include <iostream>
#include <memory>

#include "console/session/Faults.h"
#include "console/terminal/Interrupt.h"
#include "console/terminal/Progress.h"
#include "console/terminal/Table.h"
#include "console/verbs/FleetVerbs.h"
#include "console/verbs/ScenarioFile.h"
#include "console/verbs/Verbs.h"
#include "fleet/Churn.h"
#include "fleet/Plays.h"
#include "scenario/Reader.h"

namespace quorvel::console {
namespace {

struct FleetRunWishes {
    std::string file;
    bool shares = false;
    unsigned ownBoards = 0;
    std::uint64_t seed = 1;
    std::string junit;
};

Json outcomeJson(const fleet::PlayOutcome& one) {
    return {{"gateway", one.gateway}, {"passed", one.passed},     {"held", one.held},
            {"failed", one.failed},   {"mistakes", one.mistakes}, {"error", one.error}};
}

void printPlays(const Session& session, const fleet::PlayResult& result, std::size_t passed) {
    if (session.options.json) {
        Json all = Json::array();
        for (const fleet::PlayOutcome& one : result.outcomes)
            all.push_back(outcomeJson(one));
        printJson({{"scenario", result.scenario},
                   {"passed", passed},
                   {"gateways", result.outcomes.size()},
                   {"seconds", result.seconds},
                   {"outcomes", all}},
                  {});
        return;
    }
    for (const fleet::PlayOutcome& one : result.outcomes) {
        if (session.options.plain) {
            std::cout << one.gateway << '\t' << (one.passed ? "passed" : "failed") << '\t' << one.held << '\t'
                      << one.failed << '\t' << one.error << '\n';
            continue;
        }
        if (one.passed) continue;
        std::cout << "gateway " << one.gateway << ": "
                  << (one.error.empty() ? std::to_string(one.failed) + " failed" : one.error) << '\n';
        for (const std::string& mistake : one.mistakes)
            std::cout << "  " << mistake << '\n';
    }
    if (!session.options.plain) {
        std::cout << result.scenario << ": " << passed << " of " << result.outcomes.size() << " gateways passed\n";
    }
}

int runOnFleet(Session& session, const FleetRunWishes& wishes) {
    fleet::PlayOrder order;
    order.file = findScenario(session, wishes.file);
    order.shares = wishes.shares;
    if (wishes.ownBoards != 0) order.ownBoards = wishes.ownBoards;
    order.seed = wishes.seed;
    if (!wishes.junit.empty()) checkWritable(wishes.junit);
    const Interrupt interrupt;
    Progress progress(session.errorStyle());
    unsigned done = 0;
    order.stop = [] { return Interrupt::happened(); };
    order.finished = [&](unsigned, const Json&, unsigned of) {
        ++done;
        progress.share(done, of, std::to_string(done) + " of " + std::to_string(of) + " gateways have played");
    };
    fleet::PlayResult result;
    try {
        result = fleet::playOnFleet(session.options, order);
    } catch (const scenario::ScenarioError& error) {
        std::cerr << "quorvel-wifi: " << error.what() << '\n';
        if (session.options.json) std::cout << Json{{"error", error.what()}}.dump(2) << '\n';
        return kWrongUsage;
    }
    progress.clear();
    if (!wishes.junit.empty()) writeReport(wishes.junit, fleet::junit(result));
    std::size_t passed = 0;
    for (const fleet::PlayOutcome& one : result.outcomes)
        passed += one.passed ? 1 : 0;
    printPlays(session, result, passed);
    interrupt.giveUpIfMine();
    return result.passed() ? kDone : kFailed;
}

void printChurn(const Session& session, const fleet::ChurnResult& result) {
    const Json json = {{"joins", result.joins},       {"leaves", result.leaves},   {"reboots", result.reboots},
                       {"skipped", result.skipped},   {"refused", result.refused}, {"lost", result.lost},
                       {"stations", result.stations}, {"seconds", result.seconds}};
    if (session.options.json) {
        printJson(json, {});
        return;
    }
    if (session.options.plain) {
        for (const auto& [name, value] : json.items())
            std::cout << name << '\t' << textOf(value) << '\n';
        return;
    }
    std::cout << result.joins << " stations joined, " << result.leaves << " left and " << result.reboots
              << " gateways rebooted in " << decimal(result.seconds, 1) << " s; " << result.stations
              << " of the stations are there\n";
    if (result.skipped != 0) std::cout << result.skipped << " times nobody was there to leave\n";
    if (result.refused != 0) std::cout << result.refused << " were refused by their gateway\n";
    if (result.lost != 0) std::cout << result.lost << " were lost: their gateway was not up or did not answer\n";
}

int churnFleet(Session& session, const fleet::ChurnOrder& wishes) {
    if (wishes.joins <= 0 && wishes.leaves <= 0 && wishes.reboots <= 0) {
        throw CLI::ValidationError("nothing is to happen; give --join, --leave or --reboot with a rate above 0");
    }
    fleet::ChurnOrder order = wishes;
    const Interrupt interrupt;
    Progress progress(session.errorStyle());
    order.stop = [] { return Interrupt::happened(); };
    order.progress = [&](double passed) {
        progress.share(passed, order.seconds, decimal(passed, 0) + " of " + decimal(order.seconds, 0) + " s");
    };
    const fleet::ChurnResult result = fleet::churn(session.options, order);
    progress.clear();
    printChurn(session, result);
    interrupt.giveUpIfMine();
    return result.lost == 0 && result.refused == 0 ? kDone : kFailed;
}

}  // namespace

int playOnFleet(Session& session, const std::string& file) {
    FleetRunWishes wishes;
    wishes.file = file;
    return runOnFleet(session, wishes);
}

std::function<int()> addFleetWork(VerbContext& context, CLI::App* fleet) {
    Session& session = context.session;
    auto play = std::make_shared<FleetRunWishes>();
    CLI::App* const runs = fleet->add_subcommand("run", "Play a scenario on every gateway, or a share of it on each");
    runs->fallthrough();
    context.take(runs, ArgumentKind::kScenario, "FILE", play->file, "Scenario (JSON), or a shipped one's name")
        ->required();
    runs->add_flag("--shares", play->shares, "Divide the scenario's stations among the gateways");
    runs->add_option("--own-boards", play->ownBoards,
                     "Play on N boards of its own, whose clocks run ahead, instead of on the fleet")
        ->type_name("N")
        ->check(positive());
    runs->add_option("--seed", play->seed, "Seed of the boards of its own")->type_name("S");
    context.take(runs, ArgumentKind::kFile, "--junit", play->junit, "Write the result as JUnit XML")->type_name("FILE");

    auto wishes = std::make_shared<fleet::ChurnOrder>();
    CLI::App* const churns = fleet->add_subcommand("churn", "Stations come and go and gateways reboot for a while");
    churns->fallthrough();
    const auto rate = [churns](const char* name, double& value, const char* text) {
        churns->add_option(name, value, text)->type_name("RATE")->check(CLI::NonNegativeNumber);
    };
    rate("--join", wishes->joins, "New stations a second, over the whole fleet");
    rate("--leave", wishes->leaves, "Stations that leave a second, of those that came");
    rate("--reboot", wishes->reboots, "Gateways that reboot a second");
    churns->add_option("--for", wishes->seconds, "How long, in seconds")
        ->type_name("TIME")
        ->required()
        ->check(CLI::PositiveNumber);
    churns->add_option("--seed", wishes->seed, "Seed of the choice of gateways")->type_name("S");
    return [=, &session] { return runs->parsed() ? runOnFleet(session, *play) : churnFleet(session, *wishes); };
}

}  // namespace quorvel::console
