// play: scenarios.
#include <filesystem>
#include <fstream>
#include <iostream>

#include "console/session/Faults.h"
#include "console/terminal/Interrupt.h"
#include "console/terminal/Progress.h"
#include "console/terminal/Table.h"
#include "console/verbs/ScenarioFile.h"
#include "console/verbs/Verbs.h"
#include "gateway/launch/Shipped.h"
#include "scenario/Player.h"
#include "scenario/Reader.h"
#include "scenario/Report.h"
#include "scenario/picture/Picture.h"

namespace quorvel::console {
namespace {

using scenario::Entry;

struct Wishes {
    std::string file;
    std::string junit;
    std::string events;
    std::string html;
    std::int64_t seed = -1;  // -1: the scenario's own
};

Json documentAt(const std::filesystem::path& file) {
    std::ifstream in(file);
    return Json::parse(in, nullptr, false);
}

// Lists the scenarios that are shipped.
int list(const Session& session) {
    Json all = Json::array();
    Table table({"Scenario", "What happens"});
    for (const std::string& name : shippedNames(session.options, kScenarios)) {
        const Json file = documentAt(shippedFolder(session.options, kScenarios) / (name + ".json"));
        const std::string description = file.is_object() ? file.value("description", file.value("name", "")) : "";
        all.push_back({{"scenario", name}, {"description", description}});
        // For people its first sentence will do.
        const std::size_t end = session.options.plain ? std::string::npos : description.find(". ");
        table.row({name, description.substr(0, end == std::string::npos ? end : end + 1)});
    }
    if (session.options.json) {
        printJson({{"scenarios", all}}, {});
    } else if (session.options.plain) {
        table.printPlain(std::cout);
    } else {
        table.print(std::cout, session.outStyle());
        std::cout << "\n" << session.commandFor("play SCENARIO") << " plays one.\n";
    }
    return kDone;
}

const char* mark(Entry::Kind kind) {
    const bool pretty = showsUtf8();
    switch (kind) {
        case Entry::Kind::kStep:
            return pretty ? "→" : ">";
        case Entry::Kind::kHeld:
            return pretty ? "✓" : "+";
        case Entry::Kind::kStepFailed:
        case Entry::Kind::kFailed:
            return pretty ? "✗" : "x";
    }
    return "";
}

void printEntry(const Session& session, const Entry& entry) {
    const std::string time = scenario::seconds(entry.time);
    if (session.options.plain) {
        static constexpr const char* kWords[] = {"step", "step failed", "held", "failed"};
        std::cout << time << '\t' << kWords[static_cast<std::size_t>(entry.kind)] << '\t' << entry.text << '\t'
                  << entry.seen << std::endl;
        return;
    }
    const Colour colour = entry.kind == Entry::Kind::kStep   ? Colour::kFaint
                          : entry.kind == Entry::Kind::kHeld ? Colour::kGood
                                                             : Colour::kBad;
    constexpr std::size_t kWidth = 10;
    std::cout << std::string(time.size() < kWidth ? kWidth - time.size() : 0, ' ') << time << "  "
              << session.outStyle().dress(mark(entry.kind), colour) << ' ' << entry.text;
    if (!entry.seen.empty()) std::cout << (entry.kind == Entry::Kind::kStep ? "  (" : ": ") << entry.seen;
    if (!entry.seen.empty() && entry.kind == Entry::Kind::kStep) std::cout << ')';
    std::cout << std::endl;
}

void printSummary(const Session& session, const scenario::Result& result) {
    const std::size_t held = result.count(Entry::Kind::kHeld);
    const std::size_t all = held + result.count(Entry::Kind::kFailed);
    const std::size_t steps = result.count(Entry::Kind::kStepFailed);
    const bool passed = result.passed();
    std::cout << session.outStyle().dress(mark(passed ? Entry::Kind::kHeld : Entry::Kind::kFailed),
                                          passed ? Colour::kGood : Colour::kBad)
              << ' ' << held << " of " << all << " expectations held";
    if (steps != 0) std::cout << ", " << steps << (steps == 1 ? " step failed" : " steps failed");
    std::cout << "; board time " << scenario::seconds(result.end) << " s\n";
}

int play(Session& session, const Wishes& wishes) {
    if (wishes.file.empty()) return list(session);
    scenario::Scenario scenario;
    try {
        scenario = scenario::readScenario(findScenario(session, wishes.file));
    } catch (const scenario::ScenarioError& error) {
        std::cerr << "quorvel-wifi: " << error.what() << '\n';
        if (session.options.json) std::cout << Json{{"error", error.what()}}.dump(2) << '\n';
        return kWrongUsage;
    }
    const std::uint64_t seed = wishes.seed < 0 ? scenario.seed : static_cast<std::uint64_t>(wishes.seed);
    const bool people = !session.options.json && !session.options.plain;
    if (people) {
        std::cout << session.outStyle().dress(scenario.name, Colour::kHeading) << ", seed " << seed << std::endl;
    }
    checkWritable(wishes.junit);
    checkWritable(wishes.events);
    checkWritable(wishes.html);
    const Interrupt interrupt;
    Progress progress(session.errorStyle());
    scenario::Result result;
    try {
        result = scenario::play(
            scenario, session.options, seed,
            [&](const Entry& entry) {
                progress.clear();
                if (!session.options.json) printEntry(session, entry);
            },
            [&](scenario::Time now) {
                progress.share(
                    static_cast<double>(now), static_cast<double>(scenario.end),
                    std::to_string(now / 1000) + " of " + std::to_string(scenario.end / 1000) + " s of board time");
                return Interrupt::happened();
            },
            scenario::Venue::kNewBoard, !wishes.html.empty());
    } catch (const GatewayError& error) {
        if (!Interrupt::happened()) throw;
        progress.clear();
        std::cerr << "quorvel-wifi: " << error.what() << '\n';
        throw Interrupted{};
    }
    progress.clear();
    if (!result.notice.empty()) std::cerr << "quorvel-wifi: " << result.notice << '\n';
    writeReport(wishes.junit, scenario::junit(scenario, result));
    writeReport(wishes.events, scenario::eventLog(result));
    if (!wishes.html.empty()) writeReport(wishes.html, scenario::picture(scenario, result, seed));
    if (session.options.json) printJson(scenario::toJson(scenario, result, seed), {});
    if (people) printSummary(session, result);
    return result.passed() ? kDone : kFailed;
}

}  // namespace

void addPlayVerbs(VerbContext& context) {
    Session& session = context.session;
    auto wishes = std::make_shared<Wishes>();
    CLI::App* const verb = context.add(kManyVerbs, "play", "Play a scenario on a board of its own; alone: list them",
                                       "play\nplay first-boot\nplay guest-network --seed 7 --junit result.xml\n"
                                       "play band-steering --html steering.html",
                                       [&session, wishes] { return play(session, *wishes); });
    context.take(verb, ArgumentKind::kScenario, "FILE", wishes->file, "Scenario (JSON), or a shipped one's name");
    verb->add_option("--seed", wishes->seed, "Seed of what varies by chance, instead of the scenario's")
        ->type_name("N")
        ->check(CLI::Range(std::int64_t{0}, std::int64_t{4294967295}));
    context.take(verb, ArgumentKind::kFile, "--junit", wishes->junit, "Write the result as JUnit XML")
        ->type_name("FILE");
    context.take(verb, ArgumentKind::kFile, "--events", wishes->events, "Write the event log")->type_name("FILE");
    context.take(verb, ArgumentKind::kFile, "--html", wishes->html, "Write the course of the play as a page")
        ->type_name("FILE");
}

}  // namespace quorvel::console
