// fleet up, status, down: many gateways at once.
#include <sys/wait.h>
#include <unistd.h>

#include <iostream>
#include <memory>

#include "console/session/Faults.h"
#include "console/terminal/Interrupt.h"
#include "console/terminal/Progress.h"
#include "console/terminal/Table.h"
#include "console/verbs/FleetVerbs.h"
#include "console/verbs/Verbs.h"
#include "fleet/Fleet.h"

namespace quorvel::console {
namespace {

constexpr std::size_t kMostNamed = 10;

struct UpWishes {
    unsigned count = 0;
    unsigned first = 1;
    std::uint64_t seed = 1;
    double ramp = 0;
    bool stay = false;
    std::string scenario;
};

std::string mebibytes(std::uint64_t kibibytes) {
    return decimal(static_cast<double>(kibibytes) / 1024, 1) + " MiB";
}

// Names the gateways that failed, a line each; many in one more line.
void printFailures(std::ostream& out, const std::map<unsigned, std::string>& failed) {
    std::size_t named = 0;
    for (const auto& [gateway, reason] : failed) {
        if (++named > kMostNamed) break;
        out << "gateway " << gateway << ": " << reason << '\n';
    }
    if (failed.size() > kMostNamed)
        out << "and " << failed.size() - kMostNamed << " more; fleet status --json names all\n";
}

Json failuresOf(const std::map<unsigned, std::string>& failed) {
    Json list = Json::array();
    for (const auto& [gateway, reason] : failed)
        list.push_back({{"gateway", gateway}, {"reason", reason}});
    return list;
}

int fleetDown(Session& session) {
    fleet::DownOrder order;
    Progress progress(session.errorStyle());
    order.progress = [&progress](unsigned done, unsigned of) {
        progress.share(done, of, std::to_string(done) + " of " + std::to_string(of) + " gateways ended");
    };
    const fleet::DownResult result = fleet::takeDown(session.options, order);
    progress.clear();
    if (session.options.json) {
        printJson({{"ended", result.ended}, {"killed", result.killed}}, {});
    } else if (session.options.plain) {
        std::cout << "ended\t" << result.ended << "\nkilled\t" << result.killed << '\n';
    } else {
        std::cout << "the fleet is down: " << result.ended << " gateways ended";
        if (result.killed != 0) std::cout << ", " << result.killed << " processes had to be killed";
        std::cout << '\n';
    }
    return kDone;
}

void printUp(const Session& session, const fleet::UpResult& result) {
    if (session.options.json) {
        printJson({{"asked", result.asked}, {"up", result.up}, {"failed", failuresOf(result.failed)}}, {});
        return;
    }
    if (session.options.plain) {
        std::cout << "asked\t" << result.asked << "\nup\t" << result.up << '\n';
        for (const auto& [gateway, reason] : result.failed)
            std::cout << "failed\t" << gateway << '\t' << reason << '\n';
        return;
    }
    std::cout << result.up << " of " << result.asked << " gateways are up; " << session.commandFor("fleet status")
              << " shows them, " << session.commandFor("fleet down") << " ends them\n";
    printFailures(std::cerr, result.failed);
}

// In a container this program may be process 1, which takes in what others leave behind.
void waitForTheEnd() {
    while (!Interrupt::happened()) {
        while (waitpid(-1, nullptr, WNOHANG) > 0) {
        }
        (void)sleep(1);  // an interrupt ends it early
    }
}

int fleetUp(Session& session, const UpWishes& wishes, const FleetAgents& agents) {
    fleet::UpOrder order;
    order.plan.first = wishes.first;
    order.plan.count = wishes.count;
    order.plan.seed = wishes.seed;
    order.plan.board = session.options.board;
    order.plan.agent = agents.settings;
    // Namespaces would cost each gateway memory in the kernel.
    launch::Options options = session.options;
    if (options.sandbox.empty()) options.sandbox = "folder";
    order.plan.sandbox = options.sandbox;
    order.perSecond = wishes.ramp;
    order.startAgent = agents.start;
    const Interrupt interrupt;
    Progress progress(session.errorStyle());
    unsigned done = 0;
    unsigned failed = 0;
    order.stop = [] { return Interrupt::happened(); };
    order.started = [&](unsigned, const fleet::Start& start, unsigned of) {
        ++done;
        if (!start.error.empty()) ++failed;
        progress.share(done, of,
                       std::to_string(done) + " of " + std::to_string(of) + " gateways" +
                           (failed == 0 ? "" : ", " + std::to_string(failed) + " failed"));
    };
    const fleet::UpResult result = fleet::bringUp(options, order);
    progress.clear();
    printUp(session, result);
    int outcome = result.failed.empty() ? kDone : kFailed;
    if (!wishes.scenario.empty() && !Interrupt::happened())
        outcome = std::max(outcome, playOnFleet(session, wishes.scenario));
    if (wishes.stay) {
        std::cout << std::flush;
        waitForTheEnd();
        return std::max(fleetDown(session), outcome);
    }
    interrupt.giveUpIfMine();
    return outcome;
}

Json statusJson(const fleet::Status& status) {
    return {{"folder", status.folder},
            {"board", status.plan.board},
            {"seed", status.plan.seed},
            {"first", status.plan.first},
            {"gateways", status.plan.count},
            {"up", status.up},
            {"agents", status.agents},
            {"connected", status.connected},
            {"subscriptions", status.subscriptions},
            {"messagesPerSecond", status.messagesPerSecond},
            {"slowestStart", {{"gateway", status.slowestGateway}, {"seconds", status.slowestStart}}},
            {"processes", status.processes},
            {"processor", status.processor},
            {"processorSeconds", status.processorSeconds},
            {"memoryKiB", status.memory},
            {"availableKiB", status.available},
            {"failed", failuresOf(status.failed)}};
}

int fleetStatus(Session& session, double seconds) {
    const Interrupt interrupt;
    Progress progress(session.errorStyle());
    progress.say("looking at the fleet ...");
    const fleet::Status status = fleet::lookAt(session.options, seconds, [] { return Interrupt::happened(); });
    progress.clear();
    interrupt.giveUpIfMine();
    if (session.options.json) {
        printJson(statusJson(status), {});
        return status.failed.empty() ? kDone : kFailed;
    }
    Table table({"", ""});
    const std::string of = " of " + std::to_string(status.plan.count);
    const bool people = !session.options.plain;
    const auto row = [&](const char* name, const std::string& value, const std::string& forPeople) {
        table.row({name, people ? value + forPeople : value});
    };
    row("board", status.plan.board, ", seed " + std::to_string(status.plan.seed));
    row("up", std::to_string(status.up), of);
    row("connected", std::to_string(status.connected), " of " + std::to_string(status.agents) + " agents");
    row("subscriptions", std::to_string(status.subscriptions), "");
    row("messages", decimal(status.messagesPerSecond, 1), " a second");
    row("slowest start", decimal(status.slowestStart, 2), " s (gateway " + std::to_string(status.slowestGateway) + ")");
    row("processes", std::to_string(status.processes), "");
    row("processor", decimal(status.processor * 100, 1), " % of one");
    row("memory", people ? mebibytes(status.memory) : std::to_string(status.memory), "");
    row("available", people ? mebibytes(status.available) : std::to_string(status.available), "");
    if (people) {
        table.print(std::cout, session.outStyle());
        printFailures(std::cout, status.failed);
    } else {
        table.printPlain(std::cout);
        for (const auto& [gateway, reason] : status.failed)
            std::cout << "failed\t" << gateway << '\t' << reason << '\n';
    }
    return status.failed.empty() ? kDone : kFailed;
}

}  // namespace

void addFleetVerbs(VerbContext& context) {
    Session& session = context.session;
    int* const result = &context.status;
    CLI::App* const verb = context.add(kManyVerbs, "fleet", "Many gateways at once, each with an identity of its own",
                                       "fleet up 10\nfleet status\nfleet run guest-network --own-boards 4\n"
                                       "fleet churn --join 5 --leave 5 --for 10\nfleet down",
                                       [] { return kDone; });
    verb->require_subcommand(1);

    auto wishes = std::make_shared<UpWishes>();
    auto usp = std::make_shared<launch::UspOptions>();
    CLI::App* const start = verb->add_subcommand("up", "Start gateways that stay up, or more of them");
    start->fallthrough();
    start->add_option("N", wishes->count, "How many the fleet has then")->required()->check(positive());
    start->add_option("--seed", wishes->seed, "Seed of the gateways' identities and of what varies by chance")
        ->type_name("S");
    start->add_option("--ramp", wishes->ramp, "Start so many in a second at most")
        ->type_name("PER_SECOND")
        ->check(CLI::PositiveNumber);
    start->add_option("--first", wishes->first, "Number of the first gateway; others may run elsewhere")
        ->type_name("K")
        ->check(positive());
    start->add_flag("--stay", wishes->stay, "Do not return until interrupted, then end the fleet");
    context
        .take(start, ArgumentKind::kScenario, "--run", wishes->scenario,
              "Play this scenario on each gateway once all are up")
        ->type_name("FILE");
    addUspOptions(start, *usp);
    CLI::App* const look = verb->add_subcommand("status", "How many are up and connected, and what they take");
    look->fallthrough();
    auto seconds = std::make_shared<double>(1);
    look->add_option("--seconds", *seconds, "How long to count messages and processor time")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
    CLI::App* const end = verb->add_subcommand("down", "End all gateways and remove what they have stored");
    end->fallthrough();
    const auto others = addFleetWork(context, verb);
    verb->callback([=, &session] {
        if (start->parsed()) {
            *result = fleetUp(session, *wishes, resolveAgents(session, *usp));
        } else if (look->parsed()) {
            *result = fleetStatus(session, *seconds);
        } else if (end->parsed()) {
            *result = fleetDown(session);
        } else {
            *result = others();
        }
    });
}

}  // namespace quorvel::console
