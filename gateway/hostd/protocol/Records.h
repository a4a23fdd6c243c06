#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "gateway/hostd/protocol/Member.h"

namespace quorvel::hostd::protocol {

using Json = nlohmann::ordered_json;

/// USP fault codes that the host process gives.
enum class FaultCode : std::uint16_t {
    kNone = 0,
    kInternal = 7003,        ///< the plug-in or the host process could not do it
    kBadSyntax = 7008,       ///< the search expression is malformed
    kWrongType = 7011,       ///< the text is not a value of the parameter's type
    kValueRefused = 7012,    ///< the plug-in refused the value
    kReadOnly = 7013,        ///< the parameter cannot be written
    kNoSuchInstance = 7016,  ///< the object instance does not exist
    kNoSuchPath = 7026,      ///< the data model has no such path
};

/// A failure of one path, or of a whole request (the path is empty then).
struct Fault {
    FaultCode code = FaultCode::kNone;
    std::string path;
    std::string reason;
    std::string suggestion;    ///< the nearest existing path, when there is one
    std::uint32_t result = 0;  ///< the plug-in's own result code, 0 when it was not called
    std::string log;           ///< the plug-in's error lines, joined by "; "

    static constexpr auto members() {
        return std::tuple(required("path", &Fault::path, "the path at fault, empty for a whole request"),
                          required("code", &Fault::code, "the USP fault code"),
                          required("reason", &Fault::reason, "for people"),
                          optional("suggestion", &Fault::suggestion, "the nearest existing path"),
                          optional("result", &Fault::result, "the plug-in's result code, when it is not 0"),
                          optional("log", &Fault::log, "the plug-in's error lines, joined by \"; \""));
    }
};

/// A value that was read or written: a text, boolean or number by the parameter's type, an object for a measurement.
/// Bytes of a text that are no UTF-8, and control characters, are written as \xNN.
struct PathValue {
    std::string path;
    Json value;

    static constexpr auto members() {
        return std::tuple(
            required("path", &PathValue::path, "the full path"),
            required("value", &PathValue::value, "a text, boolean or number; a measurement is an object"));
    }
};

/// An access point that a measurement heard.
struct HeardNetwork {
    std::string bssid;
    std::uint32_t width = 0;
    std::int32_t rssi = 0;

    static constexpr auto members() {
        return std::tuple(required("bssid", &HeardNetwork::bssid, ""),
                          required("width", &HeardNetwork::width, "as the radio reports it"),
                          required("rssi", &HeardNetwork::rssi, "dBm"));
    }
};

/// The value of a parameter that measures a channel's metrics.
struct ChannelMetrics {
    std::uint32_t channel = 0;
    std::int32_t noise = 0;
    std::int32_t utilization = 0;
    std::int32_t transmitPower = 0;
    std::vector<HeardNetwork> accessPoints;

    static constexpr auto members() {
        return std::tuple(required("channel", &ChannelMetrics::channel, ""),
                          required("noise", &ChannelMetrics::noise, "dBm"),
                          required("utilization", &ChannelMetrics::utilization, "percent"),
                          required("transmitPower", &ChannelMetrics::transmitPower, "dBm"),
                          required("accessPoints", &ChannelMetrics::accessPoints, "heard on the channel"));
    }
};

/// The value of a parameter that measures a channel's air time.
struct ChannelStatistics {
    std::uint32_t channel = 0;
    std::int32_t noise = 0;
    std::int32_t utilization = 0;
    std::uint64_t total = 0;
    std::uint64_t busy = 0;
    std::uint64_t busyTransmitting = 0;
    std::uint64_t busyReceiving = 0;
    std::uint64_t busySelf = 0;
    std::uint64_t busyOther = 0;

    static constexpr auto members() {
        return std::tuple(required("channel", &ChannelStatistics::channel, ""),
                          required("noise", &ChannelStatistics::noise, "dBm"),
                          required("utilization", &ChannelStatistics::utilization, "percent"),
                          required("total", &ChannelStatistics::total, "microseconds of the measurement"),
                          required("busy", &ChannelStatistics::busy, "of these, microseconds"),
                          required("busyTransmitting", &ChannelStatistics::busyTransmitting, "microseconds"),
                          required("busyReceiving", &ChannelStatistics::busyReceiving, "microseconds"),
                          required("busySelf", &ChannelStatistics::busySelf, "microseconds, this BSS"),
                          required("busyOther", &ChannelStatistics::busyOther, "microseconds, others"));
    }
};

/// One value to write.
struct Setting {
    std::string path;  ///< a parameter; wildcards and search expressions name several
    std::string value;
    bool needed = true;

    static constexpr auto members() {
        return std::tuple(
            required("path", &Setting::path, "a parameter; a search names several"),
            required("value", &Setting::value, "its value as text"),
            optional("needed", &Setting::needed, "false: when it is refused, the others are set all the same"));
    }
};

enum class ParameterType : std::uint8_t { kText, kBoolean, kUnsignedInt, kInt };
constexpr auto names(ParameterType) {
    return std::array{std::pair(ParameterType::kText, "string"), std::pair(ParameterType::kBoolean, "boolean"),
                      std::pair(ParameterType::kUnsignedInt, "unsignedInt"), std::pair(ParameterType::kInt, "int")};
}

enum class Access : std::uint8_t { kReadOnly, kReadWrite, kWriteOnly };
constexpr auto names(Access) {
    return std::array{std::pair(Access::kReadOnly, "readOnly"), std::pair(Access::kReadWrite, "readWrite"),
                      std::pair(Access::kWriteOnly, "writeOnly")};
}

/// How a parameter is read. Searches and partial paths leave measurements out and read per-station ones as Name[MAC].
enum class ParameterKind : std::uint8_t { kOrdinary, kPerStation, kMeasurement };
constexpr auto names(ParameterKind) {
    return std::array{std::pair(ParameterKind::kOrdinary, "ordinary"),
                      std::pair(ParameterKind::kPerStation, "perStation"),
                      std::pair(ParameterKind::kMeasurement, "measurement")};
}

/// One row of the exported parameter table. Its object is the path up to the last dot; "{i}" marks a table.
struct ParameterDescription {
    std::string path;
    ParameterType type = ParameterType::kText;
    Access access = Access::kReadOnly;
    ParameterKind kind = ParameterKind::kOrdinary;
    bool atOnce = false;

    static constexpr auto members() {
        return std::tuple(
            required("path", &ParameterDescription::path, "with \"{i}\" for instances"),
            required("type", &ParameterDescription::type, ""), required("access", &ParameterDescription::access, ""),
            optional("kind", &ParameterDescription::kind, "how it is read, when it is not ordinary"),
            optional("atOnce", &ParameterDescription::atOnce, "true: its setter writes to the device at once"));
    }
};

/// A parameter's place in a snapshot.
struct SnapshotField {
    std::string path;
    std::uint32_t offset = 0;
    std::uint32_t size = 0;
    Json value;  ///< null for a measurement

    static constexpr auto members() {
        return std::tuple(required("path", &SnapshotField::path, ""), required("offset", &SnapshotField::offset, ""),
                          required("size", &SnapshotField::size, "bytes"),
                          required("value", &SnapshotField::value, "null for a measurement"));
    }
};

/// An object instance as the plug-in holds it in memory.
struct Snapshot {
    std::string path;
    std::uint32_t size = 0;
    std::vector<SnapshotField> fields;
    std::string hex;

    static constexpr auto members() {
        return std::tuple(required("path", &Snapshot::path, "the object instance"),
                          required("size", &Snapshot::size, "bytes"),
                          required("fields", &Snapshot::fields, "empty when the object's layout cannot be found out"),
                          required("hex", &Snapshot::hex, "the bytes, two digits each"));
    }
};

/// A task or daemon of the board.
struct Task {
    std::string name;
    std::optional<std::int32_t> pid;
    std::string state;

    static constexpr auto members() {
        return std::tuple(required("name", &Task::name, ""), required("pid", &Task::pid, "null when it is gone"),
                          required("state", &Task::state, "running, stopped or gone"));
    }
};

/// Facts about the board that no parameter says. Members that the board's description lacks are null.
struct BoardFacts {
    Json name;
    Json identifier;
    Json chips;
    std::optional<std::string> chipsFound;
    std::vector<Task> tasks;
    Task manager;
    std::vector<std::string> interfaces;

    static constexpr auto members() {
        return std::tuple(required("name", &BoardFacts::name, "of the board's description"),
                          required("identifier", &BoardFacts::identifier, "of the board's description"),
                          required("chips", &BoardFacts::chips, "of the board's description"),
                          required("chipsFound", &BoardFacts::chipsFound, "as start-up counted them"),
                          required("tasks", &BoardFacts::tasks, "the drivers' tasks"),
                          required("manager", &BoardFacts::manager, "the WLAN manager"),
                          required("interfaces", &BoardFacts::interfaces, "names of the wireless interfaces"));
    }
};

/// Board time: seconds since the board was switched on. It goes on when the WLAN manager is restarted.
struct BoardClock {
    double time = 0;
    bool isVirtual = false;

    static constexpr auto members() {
        return std::tuple(
            required("time", &BoardClock::time, "seconds since the board was switched on"),
            required("virtual", &BoardClock::isVirtual, "true: time stands still until somebody advances it"));
    }
};

/// The life of the board that a client talks to.
struct Boot {
    unsigned number = 0;
    std::string cause;

    static constexpr auto members() {
        return std::tuple(required("number", &Boot::number, "power cycles since the board was started, from 0"),
                          required("cause", &Boot::cause, "of the last power cycle, as the client gave it"));
    }
};

enum class StationEventKind : std::uint8_t { kAssociated, kLeft };
constexpr auto names(StationEventKind) {
    return std::array{std::pair(StationEventKind::kAssociated, "associated"),
                      std::pair(StationEventKind::kLeft, "left")};
}

/// A station that came or left, as the plug-in's callback reports it. The details are those of an association.
struct StationEvent {
    std::uint32_t accessPoint = 0;
    std::uint32_t event = 0;  ///< the platform's code
    StationEventKind kind = StationEventKind::kLeft;
    std::string station;
    std::optional<std::int32_t> signalStrength;
    std::optional<std::int32_t> downlinkRate;
    std::optional<std::int32_t> uplinkRate;
    std::optional<std::int32_t> snr;
    std::optional<std::string> standard;
    std::optional<std::int32_t> bandwidth;

    static constexpr auto members() {
        return std::tuple(required("accessPoint", &StationEvent::accessPoint, "instance"),
                          required("event", &StationEvent::event, "the platform's code"),
                          required("kind", &StationEvent::kind, ""),
                          required("station", &StationEvent::station, "MAC address"),
                          optional("signalStrength", &StationEvent::signalStrength, "dBm, of an association"),
                          optional("downlinkRate", &StationEvent::downlinkRate, "kbit/s, of an association"),
                          optional("uplinkRate", &StationEvent::uplinkRate, "kbit/s, of an association"),
                          optional("snr", &StationEvent::snr, "dB, of an association"),
                          optional("standard", &StationEvent::standard, "of an association"),
                          optional("bandwidth", &StationEvent::bandwidth, "of an association"));
    }
};

/// A line that the plug-in or the framework has logged.
struct LogLine {
    std::uint32_t level = 0;
    std::string line;

    static constexpr auto members() {
        return std::tuple(required("level", &LogLine::level, "0 error, 1 warning, 2 notice, 3 tracing"),
                          required("line", &LogLine::line, "without its newline"));
    }
};

enum class ChangeKind : std::uint8_t { kValues, kSaved, kSimulation, kManager, kTime, kPower };
constexpr auto names(ChangeKind) {
    return std::array{std::pair(ChangeKind::kValues, "values"),
                      std::pair(ChangeKind::kSaved, "saved"),
                      std::pair(ChangeKind::kSimulation, "simulation"),
                      std::pair(ChangeKind::kManager, "manager"),
                      std::pair(ChangeKind::kTime, "time"),
                      std::pair(ChangeKind::kPower, "power")};
}

/// A change of the board that went through the host process. It carries no values; get reads them.
struct Change {
    ChangeKind kind = ChangeKind::kValues;
    std::vector<std::string> paths;
    std::string what;
    double time = 0;

    static constexpr auto members() {
        return std::tuple(required("kind", &Change::kind, ""),
                          optional("paths", &Change::paths, "parameters or objects written"),
                          optional("what", &Change::what, "simulation, manager: the operation; power: the cause"),
                          required("time", &Change::time, "board time, in seconds"));
    }
};

/// The status of a process beside the board, such as a management agent.
struct ServiceStatus {
    std::string service;
    bool connected = false;
    Json status;

    static constexpr auto members() {
        return std::tuple(required("service", &ServiceStatus::service, "its name"),
                          required("connected", &ServiceStatus::connected, "whether the process is connected now"),
                          required("status", &ServiceStatus::status, "the object that it has reported last"));
    }
};

/// One entry of a service's trace.
struct TraceEntry {
    std::uint64_t number = 0;  ///< given by the host process, from 1
    double time = 0;
    std::string service;
    Json entry;

    static constexpr auto members() {
        return std::tuple(required("number", &TraceEntry::number, "counted by the host process, from 1"),
                          required("time", &TraceEntry::time, "board time, in seconds"),
                          required("service", &TraceEntry::service, "its name"),
                          required("entry", &TraceEntry::entry, "the object that the service has reported"));
    }
};

}  // namespace quorvel::hostd::protocol
