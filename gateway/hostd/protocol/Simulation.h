#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "gateway/hostd/protocol/Records.h"

/// The answers of the simulated surroundings, as far as clients read them; gateway/manager/README.md describes them
/// all.
namespace quorvel::hostd::protocol {

struct StationState {
    std::string mac;
    unsigned accessPoint = 0;
    std::string interface;
    bool associated = false;
    bool wanted = false;
    int rssi = 0;
    std::string standard;
    unsigned bandwidth = 0;
    unsigned downlinkRate = 0;
    unsigned uplinkRate = 0;
    unsigned downlinkTraffic = 0;
    unsigned uplinkTraffic = 0;
    std::uint64_t txBytes = 0;
    std::uint64_t rxBytes = 0;
    std::uint64_t retries = 0;
    std::uint64_t associations = 0;
    std::uint64_t seconds = 0;
    std::optional<std::string> refusal;

    static constexpr auto members() {
        return std::tuple(
            required("mac", &StationState::mac, ""),
            required("accessPoint", &StationState::accessPoint, "the one that it is on or wants"),
            required("interface", &StationState::interface, ""), required("associated", &StationState::associated, ""),
            required("wanted", &StationState::wanted, "whether it wants to be associated"),
            required("rssi", &StationState::rssi, "dBm"), required("standard", &StationState::standard, ""),
            required("bandwidth", &StationState::bandwidth, "MHz"),
            required("downlinkRate", &StationState::downlinkRate, "kbit/s"),
            required("uplinkRate", &StationState::uplinkRate, "kbit/s"),
            required("downlinkTraffic", &StationState::downlinkTraffic, "kbit/s"),
            required("uplinkTraffic", &StationState::uplinkTraffic, "kbit/s"),
            required("txBytes", &StationState::txBytes, ""), required("rxBytes", &StationState::rxBytes, ""),
            required("retries", &StationState::retries, ""),
            required("associations", &StationState::associations, "so far"),
            required("seconds", &StationState::seconds, "since it associated"),
            optional("refusal", &StationState::refusal, "why it is not let in"));
    }
};

struct BssState {
    unsigned accessPoint = 0;
    std::string interface;
    std::string ssid;
    std::string bssid;
    std::string status;
    std::string security;
    unsigned stations = 0;

    static constexpr auto members() {
        return std::tuple(required("accessPoint", &BssState::accessPoint, "instance"),
                          required("interface", &BssState::interface, ""), required("ssid", &BssState::ssid, ""),
                          required("bssid", &BssState::bssid, ""), required("status", &BssState::status, "Up or Down"),
                          required("security", &BssState::security, "the manager's word for the mode"),
                          required("stations", &BssState::stations, "associated"));
    }
};

struct RadioState {
    unsigned radio = 0;
    std::string interface;
    std::string band;
    std::string status;
    unsigned channel = 0;
    unsigned bandwidth = 0;
    bool autoChannel = false;
    std::uint64_t upTime = 0;
    int noise = 0;
    int utilization = 0;
    unsigned stations = 0;
    std::vector<BssState> bss;

    static constexpr auto members() {
        return std::tuple(
            required("radio", &RadioState::radio, "instance"), required("interface", &RadioState::interface, ""),
            required("band", &RadioState::band, "2.4GHz or 5GHz"),
            required("status", &RadioState::status, "Up or Down"), required("channel", &RadioState::channel, ""),
            required("bandwidth", &RadioState::bandwidth, "MHz"), required("autoChannel", &RadioState::autoChannel, ""),
            required("upTime", &RadioState::upTime, "seconds"), required("noise", &RadioState::noise, "dBm"),
            required("utilization", &RadioState::utilization, "percent of the air time of its channel"),
            required("stations", &RadioState::stations, "associated"), required("bss", &RadioState::bss, ""));
    }
};

struct NeighbourState {
    std::string ssid;
    std::string bssid;
    std::string channel;
    unsigned width = 0;
    int rssi = 0;
    int noise = 0;
    std::string security;

    static constexpr auto members() {
        return std::tuple(
            required("ssid", &NeighbourState::ssid, ""), required("bssid", &NeighbourState::bssid, ""),
            required("channel", &NeighbourState::channel, "as scans print it: 6, 6l, 36/80"),
            required("width", &NeighbourState::width, "MHz"), required("rssi", &NeighbourState::rssi, "dBm"),
            required("noise", &NeighbourState::noise, "dBm"), required("security", &NeighbourState::security, ""));
    }
};

/// An entry of the simulation's own log.
struct SimulationEvent {
    std::uint64_t number = 0;
    double time = 0;
    std::string kind;
    std::string text;

    static constexpr auto members() {
        return std::tuple(required("number", &SimulationEvent::number, "from 1"),
                          required("time", &SimulationEvent::time, "seconds on the manager's clock"),
                          required("kind", &SimulationEvent::kind, "such as join or leave"),
                          required("text", &SimulationEvent::text, "for people"));
    }
};

/// How the simulation answered any command.
struct Outcome {
    bool ok = false;
    std::string error;

    static constexpr auto members() {
        return std::tuple(required("ok", &Outcome::ok, "whether it was carried out"),
                          optional("error", &Outcome::error, "what to change"));
    }
};

/// The answer to a control command: whether it was carried out, and what the command asks for.
struct SimulationAnswer {
    bool ok = false;
    std::string error;
    std::optional<double> time;
    bool isVirtual = false;
    std::vector<StationState> stations;
    std::optional<StationState> station;
    std::vector<NeighbourState> neighbours;
    std::vector<SimulationEvent> events;
    std::optional<std::uint64_t> last;

    static constexpr auto members() {
        return std::tuple(required("ok", &SimulationAnswer::ok, "whether it was carried out"),
                          optional("error", &SimulationAnswer::error, "what to change"),
                          optional("time", &SimulationAnswer::time, "time: seconds on the manager's clock"),
                          optional("virtual", &SimulationAnswer::isVirtual, "time: whether the clock is virtual"),
                          optional("stations", &SimulationAnswer::stations, "station.list"),
                          optional("station", &SimulationAnswer::station, "other station commands"),
                          optional("neighbours", &SimulationAnswer::neighbours, "neighbour.list"),
                          optional("events", &SimulationAnswer::events, "events"),
                          optional("last", &SimulationAnswer::last, "events: the number of the last one"));
    }
};

/// The answer to the command "state".
struct SimulationState {
    bool ok = false;
    double time = 0;
    bool isVirtual = false;
    unsigned listeners = 0;
    std::vector<RadioState> radios;

    static constexpr auto members() {
        return std::tuple(required("ok", &SimulationState::ok, ""),
                          optional("time", &SimulationState::time, "seconds on the manager's clock"),
                          optional("virtual", &SimulationState::isVirtual, ""),
                          optional("listeners", &SimulationState::listeners, "connections that hear station events"),
                          optional("radios", &SimulationState::radios, ""));
    }
};

/// The counters of an interface, as the plug-in sees them.
struct InterfaceCounters {
    std::string interface;
    std::uint64_t bytesReceived = 0;
    std::uint64_t packetsReceived = 0;
    std::uint64_t bytesSent = 0;
    std::uint64_t packetsSent = 0;

    static constexpr auto members() {
        return std::tuple(required("interface", &InterfaceCounters::interface, ""),
                          required("bytesReceived", &InterfaceCounters::bytesReceived, ""),
                          required("packetsReceived", &InterfaceCounters::packetsReceived, ""),
                          required("bytesSent", &InterfaceCounters::bytesSent, ""),
                          required("packetsSent", &InterfaceCounters::packetsSent, ""));
    }
};

/// The simulated surroundings at one moment.
struct LivePicture {
    BoardClock clock;
    Task manager;
    std::vector<RadioState> radios;
    std::vector<StationState> stations;
    std::vector<NeighbourState> neighbours;
    std::vector<InterfaceCounters> interfaces;

    static constexpr auto members() {
        return std::tuple(required("clock", &LivePicture::clock, "when it was computed"),
                          required("manager", &LivePicture::manager, "while it does not run, the lists are empty"),
                          required("radios", &LivePicture::radios, ""),
                          required("stations", &LivePicture::stations, ""),
                          required("neighbours", &LivePicture::neighbours, ""),
                          required("interfaces", &LivePicture::interfaces, "counters since power-on"));
    }
};

/// Reads whether a command was carried out. An answer of another form counts as a refusal.
[[nodiscard]] Outcome readOutcome(const Json& json);
/// Reads the simulation's answer to a command. Returns nothing when it has another form.
[[nodiscard]] std::optional<SimulationAnswer> readSimulationAnswer(const Json& json);
/// Reads the answer to the command "state". Returns nothing when it has another form.
[[nodiscard]] std::optional<SimulationState> readSimulationState(const Json& json);

}  // namespace quorvel::hostd::protocol
