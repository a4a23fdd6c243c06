// stations, station, simulate, events, wps: who is on the air.
#include <iostream>

#include "common/JsonDepth.h"
#include "console/session/Faults.h"
#include "console/terminal/Interrupt.h"
#include "console/terminal/Progress.h"
#include "console/terminal/Table.h"
#include "console/terminal/Units.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

constexpr unsigned kWpsPoll = 2;
// A push-button exchange is open for two minutes.
constexpr unsigned kWpsWalkTime = 120;

std::string accessPointPath(const std::string& accessPoint) {
    return "Device.WiFi.AccessPoint." + accessPoint + ".";
}

// Asks the simulation. Its own refusals become an error with what to change.
Json control(Session& session, const Json& command) {
    Json answer;
    const std::vector<Fault> faults = session.ask(protocol::Control{command}, [&answer](const Part& part) {
        if (part.control) answer = *part.control;
    });
    if (!faults.empty()) throw GatewayError(faults.front().reason);
    const protocol::Outcome outcome = protocol::readOutcome(answer);
    if (!outcome.ok) throw GatewayError(outcome.error.empty() ? "the simulation refuses it" : outcome.error);
    return answer;
}

protocol::SimulationAnswer controlAnswer(Session& session, const Json& command) {
    const auto answer = protocol::readSimulationAnswer(control(session, command));
    if (!answer) throw GatewayError("the simulation's answer has another form; use programs of one build");
    return *answer;
}

struct Station {
    std::string accessPoint;
    std::string path;
};

std::vector<Station> stationsIn(const Readings& readings) {
    static constexpr std::string_view kLast = ".MACAddress";
    std::vector<Station> stations;
    for (const auto& [path, value] : readings.all()) {
        if (!path.ends_with(kLast)) continue;
        const std::string tail = path.substr(accessPointPath("").size() - 1);
        stations.push_back({tail.substr(0, tail.find('.')), path.substr(0, path.size() - kLast.size() + 1)});
    }
    return stations;
}

// How long each station has been there, which the data model does not say.
std::map<std::string, std::uint64_t> associationTimes(Session& session) {
    std::map<std::string, std::uint64_t> times;
    for (const protocol::StationState& station : controlAnswer(session, {{"op", "station.list"}}).stations)
        times[station.mac] = station.seconds;
    return times;
}

// Of all access points when none is named (0).
int stations(Session& session, unsigned only) {
    const std::string accessPoint = only == 0 ? "*" : std::to_string(only);
    const std::string path = accessPointPath(accessPoint) + "AssociatedDevice.";
    std::vector<Fault> faults;
    if (only != 0) {
        (void)readPaths(session, {accessPointPath(accessPoint) + "Status"}, &faults);
        if (!faults.empty()) return reportFaults(session, faults);
    }
    std::vector<std::string> paths;
    for (const char* name : {"MACAddress", "SignalStrength", "LastDataDownlinkRate", "LastDataUplinkRate",
                             "OperStandard", "OperBandwidth", "AuthenticationState", "Active"}) {
        paths.push_back(path + "*." + name);
    }
    const Readings readings = readPaths(session, paths, &faults);
    if (!faults.empty()) return reportFaults(session, faults);
    const auto times = associationTimes(session);
    Table table({"AP", "Station", "RSSI", "Signal", "Down Mb/s", "Up Mb/s", "Std", "MHz", "Time"});
    table.hideInPlain("Signal");
    const auto shown = [&session](std::uint64_t seconds) {
        return session.options.plain ? std::to_string(seconds) : clockText(seconds);
    };
    Json list = Json::array();
    for (const Station& station : stationsIn(readings)) {
        const auto text = [&](const char* name) { return readings.text(station.path + name); };
        const std::string mac = text("MACAddress");
        const auto time = times.find(mac);
        const Json rssi = readings.at(station.path + "SignalStrength");
        table.row({station.accessPoint, mac, textOf(rssi), rssi.is_number() ? signalBar(rssi.get<int>()) : "",
                   megabits(readings.at(station.path + "LastDataDownlinkRate")),
                   megabits(readings.at(station.path + "LastDataUplinkRate")), text("OperStandard"),
                   text("OperBandwidth"), time == times.end() ? "-" : shown(time->second)});
        list.push_back({{"accessPoint", std::stoul(station.accessPoint)},
                        {"path", station.path},
                        {"station", mac},
                        {"signalStrength", rssi},
                        {"downlinkRate", readings.at(station.path + "LastDataDownlinkRate")},
                        {"uplinkRate", readings.at(station.path + "LastDataUplinkRate")},
                        {"standard", text("OperStandard")},
                        {"bandwidth", readings.at(station.path + "OperBandwidth")},
                        {"seconds", time == times.end() ? Json(nullptr) : Json(time->second)}});
    }
    if (session.options.json) {
        printJson({{"stations", list}}, {});
    } else if (session.options.plain) {
        table.printPlain(std::cout);
    } else if (table.empty()) {
        std::cout << "no station is associated\n";
    } else {
        table.print(std::cout, session.outStyle());
    }
    return kDone;
}

// Ones that wait for WPS are not refused: that is how they are let in.
bool waitsForWps(const Json& command) {
    return command.contains("wpsPin") || command.contains("wpsPushButton");
}

bool isRefused(const protocol::StationState& station, const Json& command) {
    return station.wanted && !station.associated && !waitsForWps(command);
}

std::string outcomeOf(const protocol::StationState& station, const Json& command) {
    const std::string& mac = station.mac;
    const std::string where = "access point " + std::to_string(station.accessPoint);
    if (station.associated) return mac + " is associated with " + where;
    if (!station.wanted) return mac + " has left " + where;
    if (waitsForWps(command)) return mac + " waits for WPS at " + where;
    return mac + " is not let in by " + where + ": " + station.refusal.value_or("no reason given");
}

const char* stateOf(const protocol::StationState& station) {
    if (station.associated) return "associated";
    return station.wanted ? "waiting" : "away";
}

int changeStation(Session& session, const Json& command) {
    const protocol::StationState station = controlAnswer(session, command).station.value_or(protocol::StationState{});
    const bool refused = isRefused(station, command);
    if (session.options.json) {
        printJson({{"station", protocol::toJson(station)}}, {});
    } else if (session.options.plain) {
        std::cout << station.mac << '\t' << station.accessPoint << '\t' << stateOf(station) << '\n';
    } else {
        (refused ? std::cerr << "quorvel-wifi: " : std::cout) << outcomeOf(station, command) << '\n';
    }
    if (!session.gateway().inBackground() && !session.nested && session.errorStyle().onTerminal()) {
        std::cerr << "the board goes down again with this command; " << session.commandFor("up") << " keeps one up\n";
    }
    return refused ? kFailed : kDone;
}

int listStations(Session& session) {
    const std::vector<protocol::StationState> list = controlAnswer(session, {{"op", "station.list"}}).stations;
    if (session.options.json) {
        printJson({{"stations", protocol::toJson(list)}}, {});
        return kDone;
    }
    Table table({"Station", "AP", "State", "RSSI", "Standard", "Down kbit/s", "Up kbit/s"});
    for (const protocol::StationState& station : list) {
        const bool waits = station.wanted && !station.associated;
        table.row({station.mac, std::to_string(station.accessPoint),
                   stateOf(station) + (waits ? ": " + station.refusal.value_or("") : ""), std::to_string(station.rssi),
                   station.standard, std::to_string(station.downlinkTraffic), std::to_string(station.uplinkTraffic)});
    }
    session.options.plain ? table.printPlain(std::cout) : table.print(std::cout, session.outStyle());
    return kDone;
}

void printEvent(const Session& session, const protocol::StationEvent& event) {
    if (session.options.json) {
        std::cout << protocol::toJson(event).dump() << std::endl;
        return;
    }
    const bool associated = event.kind == protocol::StationEventKind::kAssociated;
    if (session.options.plain) {
        std::cout << nameOf(event.kind) << '\t' << event.station << '\t' << event.accessPoint << std::endl;
        return;
    }
    const Style style = session.outStyle();
    std::cout << style.dress(associated ? "joined" : "left  ", associated ? Colour::kGood : Colour::kBad) << "  "
              << event.station << "  access point " << event.accessPoint;
    if (associated) {
        std::cout << "  " << event.signalStrength.value_or(0) << " dBm  " << event.standard.value_or("");
    }
    std::cout << std::endl;
}

int events(Session& session, unsigned count) {
    // A listener sees the events when they happen.
    session.options.realTime = true;
    const Interrupt interrupt;
    unsigned seen = 0;
    std::vector<Fault> faults;
    session.gateway().client().follow(
        protocol::Subscribe{{protocol::Topic::kStations, protocol::Topic::kManager}, 0},
        [&](const Part& part) {
            if (!part.faults.empty()) faults = part.faults;
            if (part.listening && session.errorStyle().onTerminal()) {
                std::cerr << "waiting for stations to come and go; Ctrl-C ends\n";
            }
            if (part.absence) {
                std::cerr << "quorvel-wifi: "
                          << (part.absence->empty() ? "the WLAN manager (wlmngr2) is running again"
                                                    : "warning: " + *part.absence + "; no events can come")
                          << '\n';
            }
            if (!part.event || (count != 0 && seen == count)) return;
            printEvent(session, *part.event);
            ++seen;
        },
        [&] { return Interrupt::happened() || !faults.empty() || (count != 0 && seen >= count); });
    endInterruptedLine(session);
    return reportFaults(session, faults);
}

constexpr const char* kInProgress = "in progress";
constexpr const char* kLetIn = "a station was let in";
constexpr const char* kCancelled = "cancelled";

std::string wpsState(Session& session, const std::string& path) {
    switch (const Json status = readPaths(session, {path + "Status"}, nullptr).at(path + "Status");
            status.is_number() ? status.get<int>() : 0) {
        case 1:
            return kInProgress;
        case 2:
            return kLetIn;
        case 3:
            return "timed out";
        default:
            return "idle";
    }
}

// The last of eight digits checks the others; four have no such digit.
void warnOfWrongPin(const std::string& pin) {
    if (pin.find_first_not_of("0123456789") != std::string::npos) {
        std::cerr << "quorvel-wifi: warning: a PIN has nothing but digits; no station has the PIN " << pin << '\n';
    }
    if (pin.size() != 8) return;
    unsigned sum = 0;
    for (std::size_t i = 0; i < 7; ++i)
        sum += static_cast<unsigned>(pin[i] - '0') * (i % 2 == 0 ? 3 : 1);
    const char digit = static_cast<char>('0' + (10 - sum % 10) % 10);
    if (pin.back() == digit) return;
    std::cerr << "quorvel-wifi: warning: " << pin << " is mistyped: behind " << pin.substr(0, 7)
              << " the check digit is " << digit << '\n';
}

struct Exchange {
    unsigned accessPoint = 0;
    std::string action;
    std::string pin;
    bool noWait = false;
};

std::vector<Fault> startExchange(Session& session, const std::string& path, const Exchange& asked) {
    if (asked.action == "pin") {
        warnOfWrongPin(asked.pin);
        protocol::Set pin;
        pin.settings.push_back({path + "EnrolleePin", asked.pin});
        std::vector<Fault> faults = session.ask(pin);
        if (!faults.empty()) return faults;
    }
    if (asked.action == "cancel") return session.ask(protocol::Operate{path, "Cancel", std::nullopt, {}});
    return session.ask(protocol::Operate{
        path, "MethodSet", asked.action == "pin" ? "PIN" : "PushButton", {{path + "ButtonPush", "true"}}});
}

// Waits until a station has come or nobody has for the whole walk time.
std::string awaitOutcome(Session& session, const std::string& path) {
    Progress progress(session.errorStyle());
    if (!session.gateway().runsAhead()) progress.expect(kWpsWalkTime);
    const Interrupt interrupt;
    std::string state = kInProgress;
    // The exchange began a moment before the first look.
    for (unsigned waited = 0; state == kInProgress && waited < kWpsWalkTime + 2 * kWpsPoll; waited += kWpsPoll) {
        session.letTimePass(kWpsPoll, true);
        interrupt.giveUpIfMine();
        progress.tick();
        state = wpsState(session, path);
    }
    return state == "idle" ? kCancelled : state;
}

int wps(Session& session, const Exchange& asked) {
    const std::string where = "access point " + std::to_string(asked.accessPoint);
    const std::string path = accessPointPath(std::to_string(asked.accessPoint)) + "WPS.";
    std::vector<Fault> faults;
    const Readings enabled = readPaths(session, {path + "Enable"}, &faults);
    if (!faults.empty()) return reportFaults(session, faults);
    if (enabled.at(path + "Enable") != Json(true)) {
        throw GatewayError("WPS is off on " + where + "; " + session.commandFor("set " + path + "Enable=true") +
                           " switches it on");
    }
    faults = startExchange(session, path, asked);
    if (!faults.empty()) return reportFaults(session, faults);
    std::string state = wpsState(session, path);
    const bool cancel = asked.action == "cancel";
    if (!cancel && state != kInProgress) {
        throw GatewayError("WPS did not start on " + where + "; is it up? " +
                           session.commandFor("get Device.WiFi.SSID." + std::to_string(asked.accessPoint) + ".Status"));
    }
    if (!cancel && !asked.noWait) state = awaitOutcome(session, path);
    if (session.options.json) {
        printJson({{"accessPoint", asked.accessPoint}, {"action", asked.action}, {"state", state}}, {});
    } else if (session.options.plain) {
        std::cout << asked.accessPoint << '\t' << asked.action << '\t' << state << '\n';
    } else {
        std::cout << "WPS on " << where << ": " << state << '\n';
    }
    return cancel || asked.noWait || state == kLetIn ? kDone : kFailed;
}

void addStationVerb(VerbContext& context) {
    Session& session = context.session;
    int* const status = &context.status;
    CLI::App* const verb = context.add(
        kAirVerbs, "station", "Have simulated stations join and leave",
        "station join 02:00:00:00:00:77 1\nstation join 02:00:00:00:00:78 1 --rssi -50\n"
        "station join 02:00:00:00:00:79 1 --wps-pin 12345670\nstation leave 02:5a:00:00:01:01\nstation list",
        [] { return kDone; });
    verb->require_subcommand(1);
    auto mac = std::make_shared<std::string>();
    auto accessPoint = std::make_shared<unsigned>(0);
    auto rssi = std::make_shared<int>(0);
    auto pin = std::make_shared<std::string>();
    auto push = std::make_shared<bool>(false);
    CLI::App* const join = verb->add_subcommand("join", "A station associates");
    join->fallthrough();
    context.take(join, ArgumentKind::kMac, "MAC", *mac, "e.g. 02:00:00:00:00:77")->required();
    context.take(join, ArgumentKind::kAccessPoint, "AP", *accessPoint,
                 "Access-point instance; needed for a new station");
    join->add_option("--rssi", *rssi, "Signal strength, dBm")->type_name("DBM")->check(CLI::Range(-120, -1));
    join->add_option("--wps-pin", *pin, "It knows no passphrase and waits for WPS with this PIN")->type_name("PIN");
    join->add_flag("--wps-push", *push, "It knows no passphrase and waits for the WPS button");
    CLI::App* const leave = verb->add_subcommand("leave", "A station goes away");
    leave->fallthrough();
    context.take(leave, ArgumentKind::kMac, "MAC", *mac, "The station")->required();
    CLI::App* const list = verb->add_subcommand("list", "All simulated stations, also those that are not let in");
    list->fallthrough();
    verb->callback([=, &session] {
        if (list->parsed()) {
            *status = listStations(session);
            return;
        }
        Json command{{"op", leave->parsed() ? "station.leave" : "station.join"}, {"mac", *mac}};
        if (*accessPoint != 0) command["bss"] = *accessPoint;
        if (*rssi != 0) command["rssi"] = *rssi;
        if (!pin->empty()) command["wpsPin"] = *pin;
        if (*push) command["wpsPushButton"] = true;
        *status = changeStation(session, command);
    });
}

void addSimulateVerb(VerbContext& context) {
    Session& session = context.session;
    auto request = std::make_shared<std::string>();
    CLI::App* const verb =
        context.add(kAirVerbs, "simulate", "Hand the simulation a request of its own",
                    R"(simulate '{"op":"neighbour.list"}')", [&session, request] {
                        const Json command = common::parseShallow(*request);
                        if (!command.is_object())
                            throw CLI::ValidationError("the request must be a JSON object of at most " +
                                                       std::to_string(common::kMaxJsonLevels) + " levels");
                        printJson(control(session, command), {});
                        return kDone;
                    });
    verb->add_option("REQUEST", *request, R"(JSON, e.g. {"op":"neighbour.list"})")->required();
}

void addWpsVerb(VerbContext& context) {
    Session& session = context.session;
    auto asked = std::make_shared<Exchange>();
    CLI::App* const verb = context.add(kAirVerbs, "wps", "Let a station in by WPS, or cancel it",
                                       "wps 1 push\nwps 1 pin 12345670\nwps 1 cancel", [&session, asked] {
                                           if (asked->action == "pin" && asked->pin.empty()) {
                                               throw CLI::ValidationError("wps AP pin needs the station's PIN");
                                           }
                                           return wps(session, *asked);
                                       });
    context.take(verb, ArgumentKind::kAccessPoint, "AP", asked->accessPoint, "Access-point instance")->required();
    context.take(verb, ArgumentKind::kWpsAction, "ACTION", asked->action, "push, pin or cancel")
        ->required()
        ->check(oneOf({"push", "pin", "cancel"}));
    verb->add_option("PIN", asked->pin, "The station's PIN, 4 or 8 digits");
    verb->add_flag("--no-wait", asked->noWait, "Start it and do not wait for a station");
}

}  // namespace

void addStationVerbs(VerbContext& context) {
    Session& session = context.session;
    auto accessPoint = std::make_shared<unsigned>(0);
    CLI::App* verb = context.add(kAirVerbs, "stations", "List the associated stations", "stations\nstations 1",
                                 [&session, accessPoint] { return stations(session, *accessPoint); });
    context.take(verb, ArgumentKind::kAccessPoint, "AP", *accessPoint, "Access-point instance; all when left out")
        ->check(positive());

    addStationVerb(context);
    addSimulateVerb(context);

    auto count = std::make_shared<unsigned>(0);
    verb = context.add(kAirVerbs, "events", "Show stations as they come and go", "events\nevents --count 1 --json",
                       [&session, count] { return events(session, *count); });
    verb->add_option("--count", *count, "End after so many")->type_name("N");

    addWpsVerb(context);
}

}  // namespace quorvel::console
