// diff, watch, log: what differs, what changes, what goes on.
#include <algorithm>
#include <chrono>
#include <ctime>
#include <fstream>
#include <iostream>
#include <iterator>

#include "common/JsonDepth.h"
#include "console/session/Faults.h"
#include "console/session/Secrets.h"
#include "console/terminal/Interrupt.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

struct Change {
    std::string path;
    Json before;  // absent values are discarded ones
    Json after;
};

const Json kAbsent = Json(Json::value_t::discarded);

const char* kindOf(const Change& change) {
    if (change.before.is_discarded()) return "added";
    return change.after.is_discarded() ? "removed" : "changed";
}

std::string shown(const Json& value) {
    if (value.is_discarded()) return "";
    return value.is_null() ? std::string(kMask) : textOf(value);
}

// Takes what `get --json` and `snapshot --json` print.
Json valuesOf(const std::string& file) {
    std::ifstream in(file);
    if (!in) throw CLI::ValidationError("cannot read the file " + file);
    const Json document = common::parseShallow(std::string(std::istreambuf_iterator<char>(in), {}));
    if (document.is_object() && document.contains("values") && document.at("values").is_object()) {
        return document.at("values");
    }
    Json values = Json::object();
    if (document.is_object() && document.contains("snapshot") && document.at("snapshot").contains("fields")) {
        for (const Json& field : document.at("snapshot").at("fields"))
            values[field.value("path", "")] = field.value("value", Json(nullptr));
        return values;
    }
    throw CLI::ValidationError(file + " holds neither the output of get --json nor that of snapshot --json");
}

std::vector<Change> compare(const Json& before, const Json& after) {
    std::vector<Change> changes;
    for (const auto& [path, value] : before.items()) {
        const auto found = after.find(path);
        if (found == after.end()) {
            changes.push_back({path, value, kAbsent});
        } else if (*found != value) {
            changes.push_back({path, value, *found});
        }
    }
    for (const auto& [path, value] : after.items()) {
        if (!before.contains(path)) changes.push_back({path, kAbsent, value});
    }
    return changes;
}

Json toJson(const Change& change) {
    Json json{{"path", change.path}, {"kind", kindOf(change)}};
    if (!change.before.is_discarded()) json["before"] = change.before;
    if (!change.after.is_discarded()) json["after"] = change.after;
    return json;
}

void printChange(const Session& session, const Change& change) {
    if (session.options.plain) {
        std::cout << kindOf(change) << '\t' << change.path << '\t' << shown(change.before) << '\t'
                  << shown(change.after) << '\n';
        return;
    }
    const Style style = session.outStyle();
    if (change.before.is_discarded()) {
        std::cout << style.dress("+ " + change.path + " => " + shown(change.after), Colour::kGood) << '\n';
    } else if (change.after.is_discarded()) {
        std::cout << style.dress("- " + change.path + " => " + shown(change.before), Colour::kBad) << '\n';
    } else {
        std::cout << "~ " << style.dress(change.path, Colour::kName) << " => " << shown(change.before) << " -> "
                  << shown(change.after) << '\n';
    }
}

bool hidesSomething(const Json& values) {
    return std::any_of(values.items().begin(), values.items().end(),
                       [](const auto& item) { return item.value().is_null() && isSecret(item.key()); });
}

int diff(const Session& session, const std::string& first, const std::string& second) {
    const Json before = valuesOf(first);
    const Json after = valuesOf(second);
    const std::vector<Change> changes = compare(before, after);
    if (hidesSomething(before) || hidesSomething(after)) {
        std::cerr << "quorvel-wifi: warning: secrets are hidden in the files and were not compared; take them with "
                     "--reveal\n";
    }
    if (session.options.json) {
        Json list = Json::array();
        for (const Change& change : changes)
            list.push_back(toJson(change));
        printJson({{"same", changes.empty()}, {"changes", list}}, {});
    } else {
        for (const Change& change : changes)
            printChange(session, change);
    }
    return changes.empty() ? kDone : kFailed;
}

std::string clockText() {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    (void)localtime_r(&now, &local);
    char text[16];
    return std::string(text, std::strftime(text, sizeof text, "%H:%M:%S", &local));
}

// Reads what the paths name now, secrets hidden unless they are asked for.
Json readNow(Session& session, const std::vector<std::string>& paths, std::vector<Fault>& faults) {
    const Readings readings = readPaths(session, paths, &faults);
    Json values = Json::object();
    for (const auto& [path, value] : readings.all()) {
        values[path] = !session.options.reveal && isSecret(path) ? Json(nullptr) : value;
    }
    return values;
}

void tell(const Session& session, const Change& change) {
    if (session.options.json) {
        std::cout << toJson(change).dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
        return;
    }
    if (!session.options.plain && session.outStyle().onTerminal()) {
        std::cout << session.outStyle().dress(clockText(), Colour::kFaint) << ' ';
    }
    printChange(session, change);
}

struct Watch {
    std::vector<std::string> paths;
    unsigned interval = 1;
    unsigned count = 0;  // 0: until interrupted
};

int watch(Session& session, const Watch& asked) {
    // Changes are shown when they happen, unless the board is up already and runs ahead.
    session.options.realTime = true;
    std::vector<Fault> faults;
    Json before = readNow(session, asked.paths, faults);
    if (!faults.empty()) return reportFaults(session, faults);
    if (session.errorStyle().onTerminal()) {
        std::cerr << "watching " << before.size() << (before.size() == 1 ? " value" : " values") << "; Ctrl-C ends\n";
    }
    const Interrupt interrupt;
    unsigned seen = 0;
    while (!Interrupt::happened() && (asked.count == 0 || seen < asked.count)) {
        session.letTimePass(asked.interval, true);
        if (Interrupt::happened()) break;
        Json after = readNow(session, asked.paths, faults);
        if (!faults.empty()) return reportFaults(session, faults);
        for (const Change& change : compare(before, after)) {
            if (asked.count != 0 && seen == asked.count) break;
            tell(session, change);
            ++seen;
        }
        std::cout << std::flush;
        before = std::move(after);
    }
    endInterruptedLine(session);
    return kDone;
}

void printLine(const Session& session, const protocol::LogLine& entry) {
    const auto& [level, line] = entry;
    if (session.options.json) {
        std::cout << protocol::toJson(entry).dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
    } else if (session.options.plain) {
        std::cout << level << '\t' << line << '\n';
    } else {
        const Colour colour = level == 0 ? Colour::kBad : level >= 2 ? Colour::kFaint : Colour::kPlain;
        std::cout << session.outStyle().dress(line, colour) << '\n';
    }
    std::cout << std::flush;
}

int log(Session& session, unsigned level, unsigned count) {
    if (!session.hasGateway() && Gateway::findRunning(session.options) == nullptr) {
        throw GatewayError("no board is up whose log could be shown; " + session.commandFor("up") + " starts one");
    }
    const Interrupt interrupt;
    unsigned seen = 0;
    std::vector<Fault> faults;
    session.gateway().client().follow(
        protocol::Subscribe{{protocol::Topic::kLog}, level},
        [&](const Part& part) {
            if (!part.faults.empty()) faults = part.faults;
            if (part.listening && session.errorStyle().onTerminal()) {
                std::cerr << "waiting for the log; Ctrl-C ends\n";
            }
            if (!part.log || (count != 0 && seen == count)) return;
            printLine(session, *part.log);
            ++seen;
        },
        [&] { return Interrupt::happened() || (count != 0 && seen >= count); });
    endInterruptedLine(session);
    return reportFaults(session, faults);
}

}  // namespace

void addChangeVerbs(VerbContext& context) {
    Session& session = context.session;
    auto first = std::make_shared<std::string>();
    auto second = std::make_shared<std::string>();
    CLI::App* verb = context.add(kDataModelVerbs, "diff", "Compare two outputs of get --json or snapshot --json",
                                 "diff before.json after.json",
                                 [&session, first, second] { return diff(session, *first, *second); });
    context.take(verb, ArgumentKind::kFile, "A", *first, "The file before")->required();
    context.take(verb, ArgumentKind::kFile, "B", *second, "The file after")->required();

    auto asked = std::make_shared<Watch>();
    verb = context.add(kDataModelVerbs, "watch", "Show values as they change",
                       "watch Device.WiFi.Radio.1.Stats.\nwatch Device.WiFi.Radio.*.Channel --interval 10\n"
                       "watch Device.WiFi.Radio.1.Stats.BytesSent --count 3",
                       [&session, asked] { return watch(session, *asked); });
    context.take(verb, ArgumentKind::kPath, "PATH", asked->paths, "As for get")->required();
    verb->add_option("--interval", asked->interval, "Look every so many seconds (1)")
        ->type_name("S")
        ->check(CLI::Range(1, 3600));
    verb->add_option("--count", asked->count, "End after so many changes")->type_name("N");
}

void addLogVerb(VerbContext& context) {
    Session& session = context.session;
    auto level = std::make_shared<unsigned>(2);
    auto count = std::make_shared<unsigned>(0);
    CLI::App* const verb =
        context.add(kBoardVerbs, "log", "Show the log of a board that is up, live", "log --level 0\nlog --count 20",
                    [&session, level, count] { return log(session, *level, *count); });
    context.take(verb, ArgumentKind::kLogLevel, "--level", *level, "0 errors, 1 warnings, 2 notices, 3 tracing (2)")
        ->type_name("LEVEL")
        ->check(CLI::Range(0, 3));
    verb->add_option("--count", *count, "End after so many lines")->type_name("N");
}

}  // namespace quorvel::console
