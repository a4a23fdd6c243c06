#include "scenario/Reader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <variant>

#include "common/JsonCursor.h"
#include "gateway/description/Reader.h"
#include "scenario/ConditionReader.h"
#include "scenario/UspReader.h"

namespace quorvel::scenario {
namespace {

using common::JsonCursor;
using description::kMaxAccessPoints;

constexpr unsigned kMostAtOnce = 16384;
constexpr unsigned kHighestTraffic = 20'000'000;

// Members that every step may have.
constexpr std::array<const char*, 3> kCommon{"at", "id", "do"};

void checkValues(const JsonCursor& values) {
    values.eachKey([](const std::string&, const JsonCursor& value) {
        const Json& json = value.value();
        if (!json.is_boolean() && !json.is_number_integer() && !json.is_string())
            value.fail("true, false, a whole number or a text");
    });
    if (values.value().empty()) values.fail("at least one path with its value");
}

// A step's members without those that every step may have and without `without`.
Json ownMembers(const Json& step, std::initializer_list<std::string_view> without = {}) {
    Json own = step;
    for (const char* common : kCommon)
        own.erase(common);
    for (const std::string_view key : without)
        own.erase(std::string(key));
    return own;
}

// Passes on the first thing that the description's own reader finds wrong.
template <typename Result>
void checkWith(const std::variant<Result, description::Error>& parsed, const JsonCursor& at) {
    const auto* const error = std::get_if<description::Error>(&parsed);
    if (error != nullptr) throw common::SchemaError(at.pointer() + error->pointer, error->text);
}

void checkCount(const JsonCursor& step) {
    if (step.has("count")) (void)step.at("count").number(1, kMostAtOnce);
}

void checkJoin(const JsonCursor& step) {
    (void)step.at("mac").mac();
    checkCount(step);
    Json own = ownMembers(step.value(), {"count"});
    // One that is known comes back with no more than its address.
    if (!own.contains("bss")) own["bss"] = 1;
    checkWith(description::parseStation(own.dump(), "station"), step);
}

void checkNeighbour(const JsonCursor& step) {
    checkCount(step);
    Json own = ownMembers(step.value(), {"count", "channels"});
    if (step.has("channels")) {
        if (step.has("channel")) step.at("channel").fail("either \"channel\" or \"channels\"");
        step.at("channels").each([&](const JsonCursor& channel) {
            Json one = own;
            one["channel"] = channel.text();
            checkWith(description::parseNeighbour(one.dump(), "neighbour"), step);
        });
        if (step.at("channels").value().empty()) step.at("channels").fail("at least one channel");
        return;
    }
    checkWith(description::parseNeighbour(own.dump(), "neighbour"), step);
}

void checkAccessPoint(const JsonCursor& step) {
    (void)step.at("accessPoint").number(1, kMaxAccessPoints);
}

void checkFault(const JsonCursor& step) {
    if (step.has("tool")) {
        step.allow({"at", "id", "do", "tool", "how"});
        (void)step.at("tool").oneOf({"wl", "lspci", "i2cget", "insmod"});
        (void)step.at("how").oneOf({"none", "fails", "empty", "garbage", "hangs"});
        return;
    }
    step.allow({"at", "id", "do", "manager", "count", "on"});
    const std::string fault = step.at("manager").oneOf({"drop", "truncate", "oversize", "save", "none"});
    if (step.has("count")) (void)step.at("count").number(0, 1'000'000);
    if (step.has("on")) (void)step.at("on").boolean();
}

struct Action {
    const char* name;
    void (*check)(const JsonCursor& step);
};

// Every action, and how its members are checked.
constexpr Action kActions[] = {
    {"set",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do", "values", "save"});
         checkValues(step.at("values"));
         if (step.has("save")) (void)step.at("save").boolean();
     }},
    {"scan",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do", "radio"});
         (void)step.at("radio").number(1, description::kMaxRadios);
     }},
    {"wps.push",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do", "accessPoint"});
         checkAccessPoint(step);
     }},
    {"wps.pin",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do", "accessPoint", "pin"});
         checkAccessPoint(step);
         (void)step.at("pin").text();
     }},
    {"wps.cancel",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do", "accessPoint"});
         checkAccessPoint(step);
     }},
    {"station.join", checkJoin},
    {"station.leave",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do", "mac"});
         (void)step.at("mac").mac();
     }},
    {"station.move",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do", "mac", "rssi"});
         (void)step.at("mac").mac();
         (void)step.at("rssi").integer(-120, 0);
     }},
    {"station.traffic",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do", "mac", "downlink", "uplink"});
         (void)step.at("mac").mac();
         (void)step.at("downlink").number(0, kHighestTraffic);
         (void)step.at("uplink").number(0, kHighestTraffic);
     }},
    {"neighbour.add", checkNeighbour},
    {"neighbour.remove",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do", "bssid"});
         (void)step.at("bssid").mac();
     }},
    {"daemon.kill",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do"});
     }},
    {"daemon.stop",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do"});
     }},
    {"daemon.continue",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do"});
     }},
    {"daemon.restart",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do"});
     }},
    {"fault", checkFault},
    {"power.cut",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do"});
     }},
    {"power.on",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do"});
     }},
    {"power.cycle",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do"});
     }},
    {"usp.broker", checkUspBroker},
    {"usp.request", checkUspRequest},
    {"time",
     [](const JsonCursor& step) {
         step.allow({"at", "id", "do", "advance"});
         (void)step.at("advance").milliseconds();
     }},
};

Step readStep(const JsonCursor& member) {
    Step step;
    step.at = member.at("at").milliseconds();
    if (member.has("id")) step.id = member.at("id").text();
    step.action = member.at("do").text();
    const auto* const action = std::find_if(std::begin(kActions), std::end(kActions),
                                            [&](const Action& known) { return step.action == known.name; });
    if (action == std::end(kActions)) {
        std::string names;
        for (const Action& known : kActions)
            names += (names.empty() ? "" : ", ") + std::string(known.name);
        member.at("do").fail("an action (" + names + ")");
    }
    action->check(member);
    step.members = ownMembers(member.value());
    return step;
}

void readSpan(const JsonCursor& member, Expectation& expectation) {
    if (member.has("at")) {
        if (member.has("by") || member.has("after")) member.at("at").fail("either \"at\" or \"by\" and \"after\"");
        expectation.after = expectation.by = member.at("at").milliseconds();
        return;
    }
    expectation.by = member.at("by").milliseconds();
    if (!member.has("after")) return;
    expectation.after = member.at("after").milliseconds();
    if (expectation.after > expectation.by) member.at("after").fail("no later time than \"by\"");
}

void readCounts(const JsonCursor& member, Expectation& expectation) {
    constexpr unsigned kMost = 1'000'000;
    if (member.has("atMost")) {
        expectation.atMost = member.at("atMost").count(0, kMost);
        expectation.atLeast = 0;
    }
    if (member.has("atLeast")) expectation.atLeast = member.at("atLeast").count(0, kMost);
}

Expectation readExpectation(const JsonCursor& member, const std::vector<Step>& timeline) {
    using Kind = Expectation::Kind;
    Expectation expectation;
    if (member.has("parameter")) {
        member.allow(
            {"at", "by", "after", "parameter", "equals", "differs", "oneOf", "matches", "atLeast", "atMost", "fault"});
        expectation.subject = member.at("parameter").text();
        if (member.has("fault")) {
            expectation.kind = Kind::kUnreadable;
            expectation.fault = member.at("fault").count(7000, 7999);
        } else {
            expectation.condition = readCondition(member);
        }
    } else if (member.has("event")) {
        member.allow({"at", "by", "after", "event", "accessPoint", "station", "atLeast", "atMost"});
        expectation.kind = Kind::kEvent;
        expectation.subject = member.at("event").oneOf({"associated", "left"});
        if (member.has("accessPoint")) expectation.accessPoint = member.at("accessPoint").count(1, kMaxAccessPoints);
        if (member.has("station")) expectation.station = common::formatMac(member.at("station").mac());
        readCounts(member, expectation);
    } else if (member.has("log")) {
        member.allow({"at", "by", "after", "log", "matches", "atLeast", "atMost"});
        expectation.kind = Kind::kLog;
        expectation.subject = member.at("log").text();
        if (member.has("matches")) expectation.pattern = readExpression(member.at("matches"));
        readCounts(member, expectation);
    } else if (member.has("step")) {
        member.allow({"step", "fault"});
        expectation.kind = Kind::kFault;
        expectation.subject = member.at("step").text();
        expectation.fault = member.at("fault").count(0, 7999);
        const auto step = std::find_if(timeline.begin(), timeline.end(),
                                       [&](const Step& one) { return one.id == expectation.subject; });
        if (step == timeline.end()) member.at("step").fail("the \"id\" of a step of the timeline");
        expectation.after = expectation.by = step->at;
        return expectation;
    } else if (isUspExpectation(member)) {
        readUspExpectation(member, timeline, expectation);
        readCounts(member, expectation);
    } else {
        member.fail("an object with \"parameter\", \"event\", \"log\", \"step\", \"notification\" or \"answer\"");
    }
    readSpan(member, expectation);
    return expectation;
}

void readBoard(const JsonCursor& member, const std::filesystem::path& folder, Scenario& scenario) {
    if (member.value().is_object()) {
        checkWith(description::parseBoard(member.value().dump(), "board"), member);
        scenario.description = member.value();
        return;
    }
    if (!member.value().is_string()) member.fail("a shipped board's name, a file or an object");
    scenario.board = member.text();
    // A file is looked for beside the scenario.
    const bool file = scenario.board.find('/') != std::string::npos || scenario.board.ends_with(".json");
    if (file) scenario.board = (folder / scenario.board).string();
}

Scenario read(const JsonCursor& root, const std::filesystem::path& folder) {
    root.allow({"name", "description", "board", "seed", "state", "timeline", "expectations", "duration"});
    Scenario scenario;
    scenario.name = root.at("name").text();
    if (root.has("description")) (void)root.at("description").text();
    if (root.has("board")) readBoard(root.at("board"), folder, scenario);
    if (root.has("seed")) scenario.seed = static_cast<std::uint64_t>(root.at("seed").number(0, 4294967295));
    if (root.has("state")) {
        checkValues(root.at("state"));
        scenario.state = root.at("state").value();
    }
    std::set<std::string> ids;
    if (root.has("timeline")) {
        root.at("timeline").each([&](const JsonCursor& member) {
            scenario.timeline.push_back(readStep(member));
            const std::string& id = scenario.timeline.back().id;
            if (!id.empty() && !ids.insert(id).second) member.at("id").fail("an id of its own");
        });
    }
    root.at("expectations").each([&](const JsonCursor& member) {
        scenario.expectations.push_back(readExpectation(member, scenario.timeline));
    });
    if (scenario.expectations.empty()) root.at("expectations").fail("at least one expectation");
    if (root.has("duration")) scenario.end = root.at("duration").milliseconds();
    for (const Step& step : scenario.timeline)
        scenario.end = std::max(scenario.end, step.at);
    for (const Expectation& expectation : scenario.expectations)
        scenario.end = std::max(scenario.end, expectation.by);
    std::stable_sort(scenario.timeline.begin(), scenario.timeline.end(),
                     [](const Step& a, const Step& b) { return a.at < b.at; });
    return scenario;
}

}  // namespace

Scenario parseScenario(const std::string& text, const std::string& name) {
    Scenario scenario;
    const auto problem = common::readDocument(
        text, [&](const JsonCursor& root) { scenario = read(root, std::filesystem::path(name).parent_path()); });
    if (problem) throw ScenarioError(problem->message(name));
    scenario.file = name;
    return scenario;
}

Scenario readScenario(const std::string& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) throw ScenarioError(path + ": expected a file, found a folder");
    std::ifstream file(path, std::ios::binary);
    if (!file) throw ScenarioError(path + ": expected a readable file: " + std::strerror(errno));
    return parseScenario({std::istreambuf_iterator<char>(file), {}}, path);
}

}  // namespace quorvel::scenario
