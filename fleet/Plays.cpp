#include "fleet/Plays.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "common/JsonDepth.h"
#include "common/Markup.h"
#include "fleet/Copies.h"
#include "fleet/Crew.h"
#include "gateway/board/Board.h"
#include "gateway/launch/Gateway.h"
#include "scenario/Player.h"
#include "scenario/Reader.h"

namespace quorvel::fleet {
namespace {

using scenario::Entry;

constexpr std::size_t kMostMistakes = 3;

std::string readText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The board that a scenario asks for, else the one of the options.
Json boardOf(const scenario::Scenario& scenario, const launch::Options& options) {
    if (!scenario.description.is_null()) return scenario.description;
    board::Options asked;
    asked.board = scenario.board.empty() ? options.board : scenario.board;
    asked.programFolder = launch::programFolder(options);
    const std::string file = board::findBoard(asked);
    Json board = common::parseShallow(readText(file));
    if (!board.is_object()) throw FleetError("the board description " + file + " is no JSON, or nests too deeply");
    return board;
}

Json outcomeOf(const scenario::Result& result) {
    Json mistakes = Json::array();
    for (const Entry& entry : result.entries) {
        if (entry.kind != Entry::Kind::kFailed && entry.kind != Entry::Kind::kStepFailed) continue;
        if (mistakes.size() < kMostMistakes)
            mistakes.push_back("at " + scenario::seconds(entry.time) + " s " + entry.text + ": " + entry.seen);
    }
    return {{"passed", result.passed()},
            {"held", result.count(Entry::Kind::kHeld)},
            {"failed", result.count(Entry::Kind::kFailed) + result.count(Entry::Kind::kStepFailed)},
            {"mistakes", std::move(mistakes)}};
}

PlayOutcome readOutcome(unsigned number, const Json& json) {
    PlayOutcome outcome;
    outcome.gateway = number;
    outcome.passed = json.value("passed", false);
    outcome.held = json.value("held", 0U);
    outcome.failed = json.value("failed", 0U);
    outcome.mistakes = json.value("mistakes", std::vector<std::string>{});
    outcome.error = json.value("error", "");
    return outcome;
}

}  // namespace

bool PlayResult::passed() const {
    return std::all_of(outcomes.begin(), outcomes.end(), [](const PlayOutcome& one) { return one.passed; });
}

PlayResult playOnFleet(const launch::Options& options, const PlayOrder& order) {
    const scenario::Scenario whole = scenario::readScenario(order.file);
    const std::string text = readText(order.file);
    const Folder folder(options);
    Plan plan;
    Json board;
    if (order.ownBoards) {
        plan.count = *order.ownBoards;
        plan.seed = order.seed;
        board = boardOf(whole, options);
    } else {
        plan = folder.read();
        board = folder.board();
    }
    const auto playOne = [&](unsigned number) -> Json {
        Identity identity(plan.seed, number);
        const Json own = identity.describe(board);
        const Share share{number - plan.first, order.shares ? plan.count : 1};
        const std::string copy = copyFor(text, order.ownBoards ? own : Json(), identity, share);
        const scenario::Scenario part = scenario::parseScenario(copy, order.file);
        const auto venue = order.ownBoards ? scenario::Venue::kNewBoard : scenario::Venue::kRunningBoard;
        const launch::Options where = order.ownBoards ? options : optionsFor(options, folder, number);
        return outcomeOf(scenario::play(
            part, where, identity.seed(), [](const Entry&) {}, [](scenario::Time) { return false; }, venue));
    };
    PlayResult result;
    result.scenario = whole.name;
    CrewOrder crew;
    for (unsigned number = plan.first; number <= plan.last(); ++number)
        crew.numbers.push_back(number);
    crew.hands = order.ownBoards ? usualHands() : plan.count;
    crew.work = playOne;
    crew.stop = order.stop;
    crew.done = [&](unsigned number, const Json& json) {
        result.outcomes.push_back(readOutcome(number, json));
        if (order.finished) order.finished(number, json, plan.count);
    };
    const auto begun = std::chrono::steady_clock::now();
    runCrew(crew);
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
    std::sort(result.outcomes.begin(), result.outcomes.end(),
              [](const PlayOutcome& a, const PlayOutcome& b) { return a.gateway < b.gateway; });
    return result;
}

std::string junit(const PlayResult& result) {
    const auto failures = static_cast<std::size_t>(std::count_if(result.outcomes.begin(), result.outcomes.end(),
                                                                 [](const PlayOutcome& one) { return !one.passed; }));
    std::array<char, 32> seconds{};
    (void)std::snprintf(seconds.data(), seconds.size(), "%.3f", result.seconds);
    const std::string totals = "tests=\"" + std::to_string(result.outcomes.size()) + "\" failures=\"" +
                               std::to_string(failures) + "\" errors=\"0\" time=\"" + seconds.data() + "\"";
    const std::string name = common::escapedMarkup(result.scenario);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites " + totals + ">\n  <testsuite name=\"" +
                       name + "\" " + totals + ">\n";
    for (const PlayOutcome& one : result.outcomes) {
        text += "    <testcase classname=\"" + name + "\" name=\"gateway " + std::to_string(one.gateway) + "\"";
        if (one.passed) {
            text += "/>\n";
            continue;
        }
        std::string why = one.error;
        for (const std::string& mistake : one.mistakes)
            why += (why.empty() ? "" : "; ") + mistake;
        text += ">\n      <failure message=\"" + common::escapedMarkup(why) + "\"/>\n    </testcase>\n";
    }
    return text + "  </testsuite>\n</testsuites>\n";
}

}  // namespace quorvel::fleet
