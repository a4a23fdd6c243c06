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

#include "common/JsonDepth.h"
#include "common/JsonPosition.h"
#include "gateway/manager/BoardFile.h"
#include "scenario/Member.h"

namespace quorvel::scenario {
namespace {

constexpr std::uint64_t kMaxAccessPoints = manager::kMaxAccessPoints;
constexpr std::uint64_t kMostAtOnce = 16384;
constexpr unsigned kHighestTraffic = 20'000'000;

// Members that every step may have.
constexpr std::array<const char*, 3> kCommon{"at", "id", "do"};

void checkValues(const Member& values) {
    values.eachKey([](const std::string&, const Member& value) {
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

// Passes on what the board's own reader finds wrong: "NAME:LINE:COLUMN: POINTER: TEXT".
template <typename Result>
void checkWith(const std::variant<Result, manager::BoardError>& parsed, const Member& at) {
    const auto* const error = std::get_if<manager::BoardError>(&parsed);
    if (error == nullptr) return;
    const std::string& message = error->message;
    const std::size_t place = message.find(": /");
    const std::size_t text = place == std::string::npos ? place : message.find(": ", place + 2);
    if (text == std::string::npos) throw Mistake(at.pointer(), message);
    std::string pointer = message.substr(place + 2, text - place - 2);
    if (pointer == "/") pointer.clear();
    throw Mistake(at.pointer() + pointer, message.substr(text + 2));
}

void checkCount(const Member& step) {
    if (step.has("count")) (void)step.at("count").number(1, kMostAtOnce);
}

void checkJoin(const Member& step) {
    (void)step.at("mac").mac();
    checkCount(step);
    Json own = ownMembers(step.value(), {"count"});
    // One that is known comes back with no more than its address.
    if (!own.contains("bss")) own["bss"] = 1;
    checkWith(manager::parseStation(own.dump(), "station"), step);
}

void checkNeighbour(const Member& step) {
    checkCount(step);
    Json own = ownMembers(step.value(), {"count", "channels"});
    if (step.has("channels")) {
        if (step.has("channel")) step.at("channel").fail("either \"channel\" or \"channels\"");
        step.at("channels").each([&](const Member& channel) {
            Json one = own;
            one["channel"] = channel.text();
            checkWith(manager::parseNeighbour(one.dump(), "neighbour"), step);
        });
        if (step.at("channels").value().empty()) step.at("channels").fail("at least one channel");
        return;
    }
    checkWith(manager::parseNeighbour(own.dump(), "neighbour"), step);
}

void checkAccessPoint(const Member& step) {
    (void)step.at("accessPoint").number(1, kMaxAccessPoints);
}

void checkFault(const Member& step) {
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
    void (*check)(const Member& step);
};

// Every action, and how its members are checked.
constexpr Action kActions[] = {
    {"set",
     [](const Member& step) {
         step.allow({"at", "id", "do", "values", "save"});
         checkValues(step.at("values"));
         if (step.has("save")) (void)step.at("save").boolean();
     }},
    {"scan",
     [](const Member& step) {
         step.allow({"at", "id", "do", "radio"});
         (void)step.at("radio").number(1, manager::kMaxRadios);
     }},
    {"wps.push",
     [](const Member& step) {
         step.allow({"at", "id", "do", "accessPoint"});
         checkAccessPoint(step);
     }},
    {"wps.pin",
     [](const Member& step) {
         step.allow({"at", "id", "do", "accessPoint", "pin"});
         checkAccessPoint(step);
         (void)step.at("pin").text();
     }},
    {"wps.cancel",
     [](const Member& step) {
         step.allow({"at", "id", "do", "accessPoint"});
         checkAccessPoint(step);
     }},
    {"station.join", checkJoin},
    {"station.leave",
     [](const Member& step) {
         step.allow({"at", "id", "do", "mac"});
         (void)step.at("mac").mac();
     }},
    {"station.move",
     [](const Member& step) {
         step.allow({"at", "id", "do", "mac", "rssi"});
         (void)step.at("mac").mac();
         (void)step.at("rssi").signedNumber(-120, 0);
     }},
    {"station.traffic",
     [](const Member& step) {
         step.allow({"at", "id", "do", "mac", "downlink", "uplink"});
         (void)step.at("mac").mac();
         (void)step.at("downlink").number(0, kHighestTraffic);
         (void)step.at("uplink").number(0, kHighestTraffic);
     }},
    {"neighbour.add", checkNeighbour},
    {"neighbour.remove",
     [](const Member& step) {
         step.allow({"at", "id", "do", "bssid"});
         (void)step.at("bssid").mac();
     }},
    {"daemon.kill",
     [](const Member& step) {
         step.allow({"at", "id", "do"});
     }},
    {"daemon.stop",
     [](const Member& step) {
         step.allow({"at", "id", "do"});
     }},
    {"daemon.continue",
     [](const Member& step) {
         step.allow({"at", "id", "do"});
     }},
    {"daemon.restart",
     [](const Member& step) {
         step.allow({"at", "id", "do"});
     }},
    {"fault", checkFault},
    {"power.cut",
     [](const Member& step) {
         step.allow({"at", "id", "do"});
     }},
    {"power.on",
     [](const Member& step) {
         step.allow({"at", "id", "do"});
     }},
    {"power.cycle",
     [](const Member& step) {
         step.allow({"at", "id", "do"});
     }},
    {"time",
     [](const Member& step) {
         step.allow({"at", "id", "do", "advance"});
         (void)step.at("advance").milliseconds();
     }},
};

Step readStep(const Member& member) {
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

Condition readCondition(const Member& member) {
    static constexpr std::pair<const char*, Condition::Kind> kKinds[] = {
        {"equals", Condition::Kind::kEquals},   {"differs", Condition::Kind::kDiffers},
        {"oneOf", Condition::Kind::kOneOf},     {"matches", Condition::Kind::kMatches},
        {"atLeast", Condition::Kind::kAtLeast}, {"atMost", Condition::Kind::kAtMost},
    };
    Condition condition;
    unsigned found = 0;
    for (const auto& [key, kind] : kKinds) {
        if (!member.has(key)) continue;
        ++found;
        const Member value = member.at(key);
        if (kind == Condition::Kind::kMatches) (void)value.expression();
        if (kind == Condition::Kind::kOneOf && (!value.value().is_array() || value.value().empty()))
            value.fail("an array of values");
        const bool bound = kind == Condition::Kind::kAtLeast || kind == Condition::Kind::kAtMost;
        if (bound && !value.value().is_number()) value.fail("a number");
        if (!bound && kind != Condition::Kind::kOneOf && value.value().is_structured())
            value.fail("true, false, a number or a text");
        condition = {kind, value.value()};
    }
    if (found != 1)
        member.fail("exactly one of equals, differs, oneOf, matches, atLeast, atMost, fault beside \"parameter\"");
    return condition;
}

void readSpan(const Member& member, Expectation& expectation) {
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

void readCounts(const Member& member, Expectation& expectation) {
    constexpr std::uint64_t kMost = 1'000'000;
    if (member.has("atMost")) {
        expectation.atMost = static_cast<unsigned>(member.at("atMost").number(0, kMost));
        expectation.atLeast = 0;
    }
    if (member.has("atLeast")) expectation.atLeast = static_cast<unsigned>(member.at("atLeast").number(0, kMost));
}

Expectation readExpectation(const Member& member, const std::vector<Step>& timeline) {
    using Kind = Expectation::Kind;
    Expectation expectation;
    if (member.has("parameter")) {
        member.allow(
            {"at", "by", "after", "parameter", "equals", "differs", "oneOf", "matches", "atLeast", "atMost", "fault"});
        expectation.subject = member.at("parameter").text();
        if (member.has("fault")) {
            expectation.kind = Kind::kUnreadable;
            expectation.fault = static_cast<unsigned>(member.at("fault").number(7000, 7999));
        } else {
            expectation.condition = readCondition(member);
        }
    } else if (member.has("event")) {
        member.allow({"at", "by", "after", "event", "accessPoint", "station", "atLeast", "atMost"});
        expectation.kind = Kind::kEvent;
        expectation.subject = member.at("event").oneOf({"associated", "left"});
        if (member.has("accessPoint"))
            expectation.accessPoint = static_cast<unsigned>(member.at("accessPoint").number(1, kMaxAccessPoints));
        if (member.has("station")) expectation.station = member.at("station").mac();
        readCounts(member, expectation);
    } else if (member.has("log")) {
        member.allow({"at", "by", "after", "log", "matches", "atLeast", "atMost"});
        expectation.kind = Kind::kLog;
        expectation.subject = member.at("log").text();
        if (member.has("matches")) expectation.pattern = member.at("matches").expression();
        readCounts(member, expectation);
    } else if (member.has("step")) {
        member.allow({"step", "fault"});
        expectation.kind = Kind::kFault;
        expectation.subject = member.at("step").text();
        expectation.fault = static_cast<unsigned>(member.at("fault").number(0, 7999));
        const auto step = std::find_if(timeline.begin(), timeline.end(),
                                       [&](const Step& one) { return one.id == expectation.subject; });
        if (step == timeline.end()) member.at("step").fail("the \"id\" of a step of the timeline");
        expectation.after = expectation.by = step->at;
        return expectation;
    } else {
        member.fail("an object with \"parameter\", \"event\", \"log\" or \"step\"");
    }
    readSpan(member, expectation);
    return expectation;
}

void readBoard(const Member& member, const std::filesystem::path& folder, Scenario& scenario) {
    if (member.value().is_object()) {
        checkWith(manager::parseBoard(member.value().dump(), "board"), member);
        scenario.description = member.value();
        return;
    }
    if (!member.value().is_string()) member.fail("a shipped board's name, a file or an object");
    scenario.board = member.text();
    // A file is looked for beside the scenario.
    const bool file = scenario.board.find('/') != std::string::npos || scenario.board.ends_with(".json");
    if (file) scenario.board = (folder / scenario.board).string();
}

Scenario read(const Member& root, const std::filesystem::path& folder) {
    root.allow({"name", "description", "board", "seed", "state", "timeline", "expectations", "duration"});
    Scenario scenario;
    scenario.name = root.at("name").text();
    if (root.has("description")) (void)root.at("description").text();
    if (root.has("board")) readBoard(root.at("board"), folder, scenario);
    if (root.has("seed")) scenario.seed = root.at("seed").number(0, 4294967295);
    if (root.has("state")) {
        checkValues(root.at("state"));
        scenario.state = root.at("state").value();
    }
    std::set<std::string> ids;
    if (root.has("timeline")) {
        root.at("timeline").each([&](const Member& member) {
            scenario.timeline.push_back(readStep(member));
            const std::string& id = scenario.timeline.back().id;
            if (!id.empty() && !ids.insert(id).second) member.at("id").fail("an id of its own");
        });
    }
    root.at("expectations").each([&](const Member& member) {
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
    if (const auto deep = manager::findTooDeep(text)) {
        throw ScenarioError(name + ":" + manager::placeOfByte(text, *deep) + ": /: " + manager::tooDeepText());
    }
    try {
        const Json document = Json::parse(text);
        Scenario scenario = read({document, ""}, std::filesystem::path(name).parent_path());
        scenario.file = name;
        return scenario;
    } catch (const Mistake& mistake) {
        throw ScenarioError(name + ":" + manager::placeOfPointer(text, mistake.pointer) + ": " +
                            (mistake.pointer.empty() ? "/" : mistake.pointer) + ": " + mistake.what());
    } catch (const Json::parse_error& error) {
        std::string what = error.what();
        if (const std::size_t start = what.find(" - "); start != std::string::npos) what = what.substr(start + 3);
        throw ScenarioError(name + ":" + manager::placeOfByte(text, error.byte == 0 ? 0 : error.byte - 1) +
                            ": /: expected JSON: " + what);
    }
}

Scenario readScenario(const std::string& path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) throw ScenarioError(path + ": expected a file, found a folder");
    std::ifstream file(path, std::ios::binary);
    if (!file) throw ScenarioError(path + ": expected a readable file: " + std::strerror(errno));
    return parseScenario({std::istreambuf_iterator<char>(file), {}}, path);
}

}  // namespace quorvel::scenario
