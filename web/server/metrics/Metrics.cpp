#include "web/server/metrics/Metrics.h"

#include <prometheus/metric_family.h>
#include <prometheus/text_serializer.h>

#include <algorithm>
#include <map>

#include "web/server/metrics/Families.h"

namespace quorvel::web {
namespace {

using prometheus::MetricType;

void addRadios(Families& families, const Picture& picture) {
    for (const auto& radio : picture.live.radios) {
        const Labels labels{{"gateway", picture.name}, {"radio", std::to_string(radio.radio)}, {"band", radio.band}};
        const bool up = radio.status == "Up";
        families.gauge("quorvel_wifi_radio_up", "Whether the radio is up.", labels, up ? 1 : 0, Sum::kAllowed);
        if (!up) continue;
        families.gauge("quorvel_wifi_radio_channel", "Primary channel.", labels, radio.channel, Sum::kSenseless);
        families.gauge("quorvel_wifi_radio_bandwidth_hertz", "Width of the channel.", labels, radio.bandwidth * 1e6,
                       Sum::kSenseless);
        families.gauge("quorvel_wifi_radio_utilization_ratio", "Share of the channel's air time in use.", labels,
                       radio.utilization / 100.0, Sum::kSenseless);
        families.gauge("quorvel_wifi_radio_noise_dbm", "Noise floor.", labels, radio.noise, Sum::kSenseless);
    }
}

void addAccessPoints(Families& families, const Picture& picture) {
    for (const auto& radio : picture.live.radios) {
        for (const auto& bss : radio.bss) {
            const Labels labels{{"gateway", picture.name},
                                {"radio", std::to_string(radio.radio)},
                                {"access_point", std::to_string(bss.accessPoint)},
                                {"ssid", bss.ssid}};
            families.gauge("quorvel_wifi_ssid_up", "Whether the network is up.", labels, bss.status == "Up" ? 1 : 0,
                           Sum::kAllowed);
            if (bss.status != "Up") continue;
            families.gauge("quorvel_wifi_ssid_stations", "Associated stations.", labels, bss.stations, Sum::kAllowed);
            for (const auto& counted : picture.live.interfaces) {
                if (counted.interface != bss.interface) continue;
                const auto count = [&](const char* name, const char* help, std::uint64_t value) {
                    families.counter(name, help, labels, static_cast<double>(value));
                };
                count("quorvel_wifi_ssid_sent_bytes_total", "Bytes sent to stations.", counted.bytesSent);
                count("quorvel_wifi_ssid_received_bytes_total", "Bytes from stations.", counted.bytesReceived);
                count("quorvel_wifi_ssid_sent_packets_total", "Packets sent to stations.", counted.packetsSent);
                count("quorvel_wifi_ssid_received_packets_total", "Packets from stations.", counted.packetsReceived);
            }
        }
    }
}

void addStations(Families& families, const Picture& picture, bool each) {
    const auto associated = std::count_if(picture.live.stations.begin(), picture.live.stations.end(),
                                          [](const auto& station) { return station.associated; });
    const Labels gateway{{"gateway", picture.name}};
    families.gauge("quorvel_wifi_stations", "Associated stations.", gateway, static_cast<double>(associated),
                   Sum::kAllowed);
    families.gauge("quorvel_wifi_neighbours", "Networks of others on the air.", gateway,
                   static_cast<double>(picture.live.neighbours.size()), Sum::kAllowed);
    if (!each) return;
    for (const auto& station : picture.live.stations) {
        if (!station.associated) continue;
        const Labels labels{
            {"gateway", picture.name}, {"access_point", std::to_string(station.accessPoint)}, {"mac", station.mac}};
        families.gauge("quorvel_wifi_station_signal_dbm", "Signal of the station.", labels, station.rssi,
                       Sum::kSenseless);
        families.counter("quorvel_wifi_station_sent_bytes_total", "Bytes sent to the station.", labels,
                         static_cast<double>(station.txBytes));
        families.counter("quorvel_wifi_station_received_bytes_total", "Bytes from the station.", labels,
                         static_cast<double>(station.rxBytes));
        families.counter("quorvel_wifi_station_retries_total", "Frames that were sent again.", labels,
                         static_cast<double>(station.retries));
    }
}

// "recordsReceived" -> "records_received"; other characters have no place in a metric's name.
std::string snakeCase(const std::string& name) {
    std::string result;
    for (const char c : name) {
        if (c >= 'A' && c <= 'Z') {
            if (!result.empty() && result.back() != '_') result += '_';
            result += static_cast<char>(c - 'A' + 'a');
        } else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) {
            result += c;
        } else if (!result.empty() && result.back() != '_') {
            result += '_';
        }
    }
    return result;
}

// The agent's counters are those that it reports itself.
void addAgent(Families& families, const Picture& picture) {
    if (!picture.agent) return;
    const Labels gateway{{"gateway", picture.name}};
    families.gauge("quorvel_wifi_agent_connected", "Whether the USP agent is connected to the host process.", gateway,
                   picture.agent->connected ? 1 : 0, Sum::kAllowed);
    const auto counters = picture.agent->status.find("counters");
    if (counters == picture.agent->status.end() || !counters->is_object()) return;
    for (const auto& [name, value] : counters->items()) {
        if (!value.is_number()) continue;
        families.counter("quorvel_wifi_agent_" + snakeCase(name) + "_total", "Reported by the USP agent.", gateway,
                         value.get<double>());
    }
}

// "get" -> 'call="get"': a series for each kind of call.
void addCalls(Families& families, const Picture& picture, const std::vector<hostd::protocol::CallCount>& calls,
              const std::string& metric, const char* help, const char* label) {
    for (const auto& one : calls) {
        families.histogram(metric, help, {{"gateway", picture.name}, {label, snakeCase(one.name)}},
                           {picture.counts.bounds, one.classes, one.seconds});
    }
}

void addCounts(Families& families, const Picture& picture) {
    addCalls(families, picture, picture.counts.pluginCalls, "quorvel_wifi_plugin_call_duration_seconds",
             "Time that calls of the plug-in's functions took.", "call");
    addCalls(families, picture, picture.counts.managerRequests, "quorvel_wifi_manager_request_duration_seconds",
             "Time that the WLAN manager took to carry out requests.", "request");
    for (const auto& one : picture.counts.pluginCalls) {
        families.counter("quorvel_wifi_plugin_failed_calls_total", "Calls of the plug-in's functions that failed.",
                         {{"gateway", picture.name}, {"call", snakeCase(one.name)}}, static_cast<double>(one.failed));
    }
    for (const auto& one : picture.counts.requests) {
        families.counter("quorvel_wifi_host_requests_total", "Requests of the host process's clients.",
                         {{"gateway", picture.name}, {"request", snakeCase(one.name)}}, static_cast<double>(one.count));
    }
}

void addServer(Families& families, const ServerCounts& server) {
    const auto count = [&](const char* name, const char* help, std::uint64_t value) {
        families.counter(name, help, {}, static_cast<double>(value));
    };
    count("quorvel_wifi_web_requests_total", "Requests that this server has read.", server.requests);
    count("quorvel_wifi_web_refused_requests_total", "Requests that it has refused.", server.refused);
    count("quorvel_wifi_web_dropped_connections_total", "Connections that were too slow or too many.", server.dropped);
    families.gauge("quorvel_wifi_web_connections", "Open connections.", {}, static_cast<double>(server.connections),
                   Sum::kAllowed);
    families.gauge("quorvel_wifi_web_streams", "Pages that follow the board.", {}, static_cast<double>(server.streams),
                   Sum::kAllowed);
}

}  // namespace

std::string metricsText(const std::vector<const Picture*>& gateways, const ServerCounts& server,
                        const MetricsOptions& options) {
    Families families;
    for (const Picture* const picture : gateways) {
        const bool up = picture->state == BoardState::kUp;
        families.gauge("quorvel_wifi_board_up", "Whether the board and its WLAN manager answer.",
                       {{"gateway", picture->name}}, up ? 1 : 0, Sum::kAllowed);
        if (!up) continue;
        families.gauge("quorvel_wifi_board_uptime_seconds", "Board time since power-on.", {{"gateway", picture->name}},
                       picture->live.clock.time, Sum::kSenseless);
        addRadios(families, *picture);
        addAccessPoints(families, *picture);
        addStations(families, *picture, options.stations);
        addAgent(families, *picture);
        addCounts(families, *picture);
    }
    addServer(families, server);
    return prometheus::TextSerializer().Serialize(families.bounded(options.mostSeries));
}

}  // namespace quorvel::web
