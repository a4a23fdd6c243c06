// stats: counters and what they grow by.
#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <iostream>

#include "console/session/Faults.h"
#include "console/terminal/Interrupt.h"
#include "console/terminal/Table.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

// Takes "2", "ssid.3", "Device.WiFi.Radio.2." and "Device.WiFi.SSID.3.Stats." alike.
std::string statisticsPath(const std::string& given) {
    const auto isNumber = [](std::string_view text) {
        return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    };
    if (isNumber(given)) return "Device.WiFi.Radio." + given + ".Stats.";
    std::string lower = given;
    for (char& each : lower)
        each = static_cast<char>(std::tolower(static_cast<unsigned char>(each)));
    if (lower.starts_with("radio.") && isNumber(lower.substr(6)))
        return "Device.WiFi.Radio." + lower.substr(6) + ".Stats.";
    if (lower.starts_with("ssid.") && isNumber(lower.substr(5)))
        return "Device.WiFi.SSID." + lower.substr(5) + ".Stats.";
    std::string path = given.ends_with('.') ? given : given + ".";
    return path.ends_with(".Stats.") ? path : path + "Stats.";
}

// A counter that wraps at 32 bits goes on from 0.
double perSecond(const Json& before, const Json& after, double seconds) {
    if (!before.is_number_unsigned() || !after.is_number_unsigned()) return 0;
    return static_cast<double>(after.get<std::uint32_t>() - before.get<std::uint32_t>()) / seconds;
}

bool isCounter(const std::string& name) {
    return name != "Noise" && name != "DiagnosticsState" && !name.ends_with("NumberOfEntries");
}

std::string rounded(double value) {
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

// Repeated readings are printed as one line of JSON each.
int show(const Session& session, const std::string& path, const Readings& before, const Readings& after, double seconds,
         bool over) {
    Table table({path, "Value", "Per second"});
    Json values = Json::object();
    Json rates = Json::object();
    for (const auto& [full, value] : after.all()) {
        const std::string name = full.substr(path.size());
        const bool counter = isCounter(name);
        const double rate = counter ? perSecond(before.at(full), value, seconds) : 0;
        values[name] = value;
        if (counter) rates[name] = rate;
        table.row({name, textOf(value), counter ? rounded(rate) : "-"});
    }
    if (session.options.json) {
        const Json result{{"path", path}, {"values", values}, {"perSecond", rates}};
        std::cout << result.dump(over ? -1 : 2) << std::endl;
    } else if (session.options.plain) {
        table.printPlain(std::cout);
    } else {
        table.print(std::cout, session.outStyle());
    }
    std::cout << std::flush;
    return kDone;
}

int statistics(Session& session, const std::string& given, bool watch) {
    const std::string path = statisticsPath(given);
    std::vector<Fault> faults;
    Readings before = readPaths(session, {path}, &faults);
    if (!faults.empty()) return reportFaults(session, faults);
    const Interrupt interrupt;
    for (;;) {
        const auto begun = std::chrono::steady_clock::now();
        session.letTimePass(1, watch);
        if (Interrupt::happened()) break;
        Readings after = readPaths(session, {path}, &faults);
        if (!faults.empty()) return reportFaults(session, faults);
        // A board whose time runs ahead has gone on by that second.
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begun;
        if (watch && session.outStyle().onTerminal() && !session.options.json) std::cout << "\033[H\033[2J";
        (void)show(session, path, before, after, std::max(passed.count(), 1.0), watch);
        if (!watch) return kDone;
        before = std::move(after);
    }
    if (!watch) throw Interrupted{};
    endInterruptedLine(session);
    return kDone;
}

}  // namespace

void addStatisticsVerbs(VerbContext& context) {
    Session& session = context.session;
    auto path = std::make_shared<std::string>();
    auto watch = std::make_shared<bool>(false);
    CLI::App* const verb = context.add(kAirVerbs, "stats", "Show the counters of a radio or an SSID and their rates",
                                       "stats 1\nstats ssid.1\nstats 2 --watch", [&session, path, watch] {
                                           // Somebody who watches lives in real time.
                                           if (*watch) session.options.realTime = true;
                                           return statistics(session, *path, *watch);
                                       });
    context
        .take(verb, ArgumentKind::kRadioOrPath, "RADIO|PATH", *path,
              "A radio instance, ssid.N, or a path such as Device.WiFi.SSID.1.")
        ->required();
    verb->add_flag("--watch", *watch, "Once a second until interrupted");
}

}  // namespace quorvel::console
