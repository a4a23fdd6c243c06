// scan, channel: what a radio hears.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iostream>
#include <map>
#include <sstream>

#include "console/session/Faults.h"
#include "console/terminal/Occupancy.h"
#include "console/terminal/Table.h"
#include "console/terminal/Units.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

constexpr std::string_view kResults = "Device.WiFi.NeighboringWiFiDiagnostic.Result.";

// The numbers of a comma-separated list.
std::vector<unsigned> channelsIn(const std::string& list) {
    std::vector<unsigned> channels;
    std::istringstream in(list);
    for (std::string each; std::getline(in, each, ',');) {
        unsigned number = 0;
        if (std::from_chars(each.data(), each.data() + each.size(), number).ec == std::errc())
            channels.push_back(number);
    }
    return channels;
}

std::string radioPath(unsigned radio) {
    return "Device.WiFi.Radio." + std::to_string(radio) + ".";
}

const char* securityName(unsigned code) {
    static constexpr std::array<const char*, 9> kNames{"-",        "None",    "WEP",      "WPA",         "WPA2",
                                                       "WPA+WPA2", "WPA-Ent", "WPA2-Ent", "WPA+WPA2-Ent"};
    return code < kNames.size() ? kNames[code] : "?";
}

struct Network {
    std::map<std::string, Json> values;

    [[nodiscard]] std::string text(const char* name) const {
        const auto found = values.find(name);
        return found == values.end() ? "" : textOf(found->second);
    }
    [[nodiscard]] int number(const char* name) const {
        const auto found = values.find(name);
        return found == values.end() || !found->second.is_number() ? 0 : found->second.get<int>();
    }
};

// The results of all radios stand in one list; those of a radio carry its name.
std::vector<Network> networksOf(const Readings& readings, const std::string& radioName) {
    std::map<unsigned long, Network> byInstance;
    for (const auto& [path, value] : readings.all()) {
        if (!path.starts_with(kResults)) continue;
        const std::size_t dot = path.find('.', kResults.size());
        byInstance[std::stoul(path.substr(kResults.size()))].values[path.substr(dot + 1)] = value;
    }
    std::vector<Network> networks;
    for (auto& [instance, network] : byInstance) {
        if (network.text("Radio") == radioName) networks.push_back(std::move(network));
    }
    std::stable_sort(networks.begin(), networks.end(), [](const Network& a, const Network& b) {
        return a.number("SignalStrength") > b.number("SignalStrength");
    });
    return networks;
}

std::vector<OnAir> onAir(const std::vector<Network>& networks) {
    std::vector<OnAir> found;
    for (const Network& network : networks) {
        const int step = network.number("OperatingChannelBandwidth");
        found.push_back({static_cast<unsigned>(network.number("Channel")),
                         step >= 1 && step <= 4 ? 10U << static_cast<unsigned>(step) : 20U});
    }
    return found;
}

int scan(Session& session, unsigned radio) {
    const std::string path = radioPath(radio);
    protocol::Set request;
    request.settings.push_back({path + "Stats.DiagnosticsState", "2"});
    const std::vector<Fault> faults = session.ask(request);
    if (!faults.empty()) return reportFaults(session, faults);
    const Readings readings = readPaths(
        session, {path + "Name", path + "Channel", path + "PossibleChannels", std::string(kResults)}, nullptr);
    const std::vector<Network> networks = networksOf(readings, readings.text(path + "Name"));
    const std::vector<Occupancy> occupancy =
        occupancyOf(onAir(networks), channelsIn(readings.text(path + "PossibleChannels")));
    if (session.options.json) {
        Json list = Json::array();
        for (const Network& network : networks)
            list.push_back(network.values);
        Json channels = Json::array();
        for (const Occupancy& each : occupancy) {
            channels.push_back(
                {{"channel", each.channel}, {"networks", each.networks}, {"overlapping", each.overlapping}});
        }
        printJson({{"radio", radio}, {"networks", list}, {"channels", channels}}, {});
        return kDone;
    }
    Table table({"SSID", "BSSID", "Channel", "MHz", "RSSI", "Signal", "Security", "Standards"});
    table.hideInPlain("Signal");
    for (const Network& network : networks) {
        const int rssi = network.number("SignalStrength");
        table.row({network.text("SSID"), network.text("BSSID"), network.text("Channel"),
                   bandwidthText(network.number("OperatingChannelBandwidth")), std::to_string(rssi), signalBar(rssi),
                   securityName(static_cast<unsigned>(network.number("SecurityModeEnabled"))),
                   network.text("SupportedStandards")});
    }
    if (session.options.plain) {
        table.printPlain(std::cout);
        return kDone;
    }
    std::cout << "Radio " << radio << " hears " << networks.size()
              << (networks.size() == 1 ? " network\n" : " networks\n");
    if (!networks.empty()) table.print(std::cout, session.outStyle());
    std::cout << '\n';
    const Json own = readings.at(path + "Channel");
    printOccupancy(std::cout, session.outStyle(), occupancy, own.is_number() ? own.get<unsigned>() : 0);
    return kDone;
}

void printMeasurement(const Session& session, const protocol::ChannelMetrics& metrics,
                      const protocol::ChannelStatistics& stats) {
    std::cout << "Channel " << metrics.channel << "\n";
    const auto line = [](const char* name, const std::string& text) {
        std::cout << "  " << name << std::string(22 - std::string_view(name).size(), ' ') << text << '\n';
    };
    line("Noise", std::to_string(metrics.noise) + " dBm");
    line("Transmit power", std::to_string(metrics.transmitPower) + " dBm");
    const auto share = [&](const char* name, auto part, auto whole) {
        const double value = whole > 0 ? static_cast<double>(part) / static_cast<double>(whole) : 0;
        line(name, bar(value, 20) + " " + std::to_string(std::lround(value * 100)) + " %");
    };
    share("Utilization", metrics.utilization, 100);
    share("Busy", stats.busy, stats.total);
    share("  transmitting", stats.busyTransmitting, stats.total);
    share("  receiving", stats.busyReceiving, stats.total);
    share("  this BSS", stats.busySelf, stats.total);
    share("  others", stats.busyOther, stats.total);
    Table table({"BSSID", "MHz", "RSSI", "Signal"});
    for (const protocol::HeardNetwork& heard : metrics.accessPoints) {
        table.row({heard.bssid, std::to_string(heard.width), std::to_string(heard.rssi), signalBar(heard.rssi)});
    }
    if (table.empty()) {
        std::cout << "  no access point heard\n";
    } else {
        table.print(std::cout, session.outStyle());
    }
}

// A channel that the radio does not have is the likeliest reason for a measurement to fail.
void hintAtChannels(Session& session, const std::string& path, unsigned number) {
    const std::string possible =
        readPaths(session, {path + "PossibleChannels"}, nullptr).text(path + "PossibleChannels");
    const std::vector<unsigned> channels = channelsIn(possible);
    if (channels.empty() || std::find(channels.begin(), channels.end(), number) != channels.end()) return;
    std::cerr << "  the radio's channels are " << possible << '\n';
}

// One record per line: a value, or an access point that was heard.
void printPlain(const Json& metrics, const Json& stats, const std::vector<protocol::HeardNetwork>& accessPoints) {
    const auto group = [](const char* name, const Json& record) {
        for (const auto& [key, value] : record.items()) {
            if (!value.is_structured()) std::cout << name << '.' << key << '\t' << textOf(value) << '\n';
        }
    };
    group("metrics", metrics);
    group("statistics", stats);
    for (const protocol::HeardNetwork& heard : accessPoints)
        std::cout << "accessPoint\t" << heard.bssid << '\t' << heard.width << '\t' << heard.rssi << '\n';
}

int channel(Session& session, unsigned radio, unsigned number) {
    const std::string path = radioPath(radio);
    Readings readings;
    const std::vector<Fault> faults =
        session.ask(protocol::Measure{{path + "DcsChannelMetrics", path + "RadioChannelStats"}, number},
                    [&readings](const Part& part) { readings.add(part.values); });
    if (!faults.empty()) {
        const int status = reportFaults(session, faults);
        hintAtChannels(session, path, number);
        return status;
    }
    const Json metrics = readings.at(path + "DcsChannelMetrics");
    const Json stats = readings.at(path + "RadioChannelStats");
    const protocol::ChannelMetrics measured = protocol::readMetrics(metrics).value_or(protocol::ChannelMetrics{});
    if (session.options.json) {
        printJson({{"radio", radio}, {"metrics", metrics}, {"statistics", stats}}, {});
    } else if (session.options.plain) {
        printPlain(metrics, stats, measured.accessPoints);
    } else {
        printMeasurement(session, measured, protocol::readStatistics(stats).value_or(protocol::ChannelStatistics{}));
    }
    return kDone;
}

}  // namespace

void addRadioVerbs(VerbContext& context) {
    Session& session = context.session;
    auto radio = std::make_shared<unsigned>(0);
    CLI::App* verb = context.add(kAirVerbs, "scan", "Look for neighbouring networks", "scan 1\nscan 3 --plain",
                                 [&session, radio] { return scan(session, *radio); });
    context.take(verb, ArgumentKind::kRadio, "RADIO", *radio, "Radio instance")->required();

    auto number = std::make_shared<unsigned>(0);
    verb = context.add(kAirVerbs, "channel", "Measure a channel: noise, air time, access points", "channel 1 36",
                       [&session, radio, number] { return channel(session, *radio, *number); });
    context.take(verb, ArgumentKind::kRadio, "RADIO", *radio, "Radio instance")->required();
    context.take(verb, ArgumentKind::kChannel, "CHANNEL", *number, "Channel number")->required();
}

}  // namespace quorvel::console
