#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "gateway/hostd/protocol/Records.h"
#include "gateway/hostd/protocol/Simulation.h"

/// The requests that the host process answers. On the wire each is a JSON object on a line of its own, with the
/// request's verb in the member kVerbMember and a number of the client's choice in kIdMember; the answer is any number
/// of lines with the same id (struct Part), of which the last has `done`. docs/protocol.md is written from this header.
namespace quorvel::hostd::protocol {

/// The version of the protocol. A host process talks to clients of its own version only.
inline constexpr unsigned kVersion = 1;

inline constexpr const char* kIdMember = "id";
inline constexpr const char* kVerbMember = "do";

/// Requests that need no member.
template <typename Request>
struct NoMembers {
    static constexpr auto members() {
        return std::tuple<>();
    }
};

struct Hello {
    static constexpr const char* kVerb = "hello";
    static constexpr const char* kMeaning =
        "Must be a client's first request. A client of another version is refused and disconnected. Answered with "
        "protocol, program and boot.";
    unsigned version = kVersion;
    std::string client;

    static constexpr auto members() {
        return std::tuple(required("protocol", &Hello::version, "the version that the client speaks"),
                          optional("client", &Hello::client, "its name, for messages"));
    }
};

struct Alive : NoMembers<Alive> {
    static constexpr const char* kVerb = "alive";
    static constexpr const char* kMeaning = "Answered at once, whatever the library does.";
};

struct Ping : NoMembers<Ping> {
    static constexpr const char* kVerb = "ping";
    static constexpr const char* kMeaning = "Answered when the library is free: earlier requests are done.";
};

struct Shutdown : NoMembers<Shutdown> {
    static constexpr const char* kVerb = "shutdown";
    static constexpr const char* kMeaning = "Switches the board off.";
};

struct CyclePower {
    static constexpr const char* kVerb = "power";
    static constexpr const char* kMeaning =
        "Switches the board off and on again; what was not saved is lost. Connections end; the socket stays and takes "
        "new ones. Only a board that stays up by itself can do it.";
    std::string cause;
    bool factoryReset = false;

    static constexpr auto members() {
        return std::tuple(optional("cause", &CyclePower::cause, "told to clients as boot.cause afterwards"),
                          optional("factoryReset", &CyclePower::factoryReset, "true: forget what was saved, too"));
    }
};

enum class Topic : std::uint8_t { kStations, kManager, kLog, kChanges, kTime, kFaults, kStatus, kTrace };
constexpr auto names(Topic) {
    return std::array{std::pair(Topic::kStations, "stations"), std::pair(Topic::kManager, "manager"),
                      std::pair(Topic::kLog, "log"),           std::pair(Topic::kChanges, "changes"),
                      std::pair(Topic::kTime, "time"),         std::pair(Topic::kFaults, "faults"),
                      std::pair(Topic::kStatus, "status"),     std::pair(Topic::kTrace, "trace")};
}

struct Subscribe {
    static constexpr const char* kVerb = "subscribe";
    static constexpr const char* kMeaning =
        "Follows topics: stations (parts event), manager (absence), log (log), changes (change), time (clock, whenever "
        "board time jumps), faults (faults of any client's request), status (status), trace (trace). Answered with "
        "listening, then with a part for each piece of news until the client unsubscribes. A client that lets 1 MiB "
        "of news pile up is disconnected.";
    std::vector<Topic> topics;
    std::uint32_t logLevel = 0;

    static constexpr auto members() {
        return std::tuple(required("topics", &Subscribe::topics, "at least one"),
                          optional("logLevel", &Subscribe::logLevel, "the highest level of log lines wanted, 0 to 3"));
    }
};

struct Unsubscribe {
    static constexpr const char* kVerb = "unsubscribe";
    static constexpr const char* kMeaning =
        "Ends the connection's open requests (subscribe, watch, wake), or one of them. Each gets its done first.";
    std::optional<std::int64_t> subscription;

    static constexpr auto members() {
        return std::tuple(optional("subscription", &Unsubscribe::subscription, "the id of one; without it, all"));
    }
};

struct Get {
    static constexpr const char* kVerb = "get";
    static constexpr const char* kMeaning =
        "Reads parameters. Each path is answered with parts values and faults whose member of is the path's position; "
        "parts of a path come together and in order. A search that finds nothing gives neither.";
    std::vector<std::string> paths;
    std::uint32_t maxDepth = 0;
    double maxAge = 0;

    static constexpr auto members() {
        return std::tuple(
            required("paths", &Get::paths,
                     "full paths, partial paths (with a dot at the end), wildcards, search expressions, references"),
            optional("maxDepth", &Get::maxDepth, "of partial paths, so many levels of objects; 0: all"),
            optional("maxAge", &Get::maxAge,
                     "seconds: values read so recently for another such request will do; 0: read now"));
    }
};

struct Set {
    static constexpr const char* kVerb = "set";
    static constexpr const char* kMeaning =
        "Writes parameters in one transaction: all are checked and staged, then each object instance is applied once; "
        "parameters that act at once are written last of all staging. When a needed one is refused nothing is applied. "
        "Answered with values as written, applied, readBack, faults, and undone.";
    std::vector<Setting> settings;
    bool save = false;
    bool checkOnly = false;
    bool everyFault = false;
    bool undo = false;

    static constexpr auto members() {
        return std::tuple(
            required("settings", &Set::settings, "in the order in which they are staged"),
            optional("save", &Set::save, "make the running configuration survive a power cycle"),
            optional("checkOnly", &Set::checkOnly,
                     "stage and apply nothing; values that act at once are checked for their type only"),
            optional("everyFault", &Set::everyFault, "report every value that the plug-in refuses, not only the first"),
            optional("undo", &Set::undo, "when an object instance cannot be applied, write back the values before"));
    }
};

struct Watch {
    static constexpr const char* kVerb = "watch";
    static constexpr const char* kMeaning =
        "Reads paths again and again and answers with values that have changed and paths that are gone. Looks at once "
        "after every change that the host process knows of, else at each interval. Answered with listening when the "
        "first values are known, which are not sent.";
    std::vector<std::string> paths;
    double interval = 5;

    static constexpr auto members() {
        return std::tuple(required("paths", &Watch::paths, "as for get"),
                          optional("interval", &Watch::interval, "seconds of real time, 0.2 to 3600"));
    }
};

struct Save : NoMembers<Save> {
    static constexpr const char* kVerb = "save";
    static constexpr const char* kMeaning = "Makes the running configuration survive a power cycle.";
};

struct Instances {
    static constexpr const char* kVerb = "instances";
    static constexpr const char* kMeaning = "Lists the object instances at and below paths, in instances.";
    std::vector<std::string> paths;

    static constexpr auto members() {
        return std::tuple(required("paths", &Instances::paths, "objects; searches are allowed"));
    }
};

struct Describe {
    static constexpr const char* kVerb = "describe";
    static constexpr const char* kMeaning =
        "Describes the rows of the plug-in's exported table below paths, in parameters. Needs no device.";
    std::vector<std::string> paths;

    static constexpr auto members() {
        return std::tuple(required("paths", &Describe::paths, "Device. describes all; instances stand for {i}"));
    }
};

struct Complete {
    static constexpr const char* kVerb = "complete";
    static constexpr const char* kMeaning = "Lists what a path that has been begun may go on with, in completions.";
    std::string path;

    static constexpr auto members() {
        return std::tuple(required("path", &Complete::path, "what has been typed"));
    }
};

struct Measure {
    static constexpr const char* kVerb = "measure";
    static constexpr const char* kMeaning = "Measures a channel: parameters of the kind measurement, in values.";
    std::vector<std::string> paths;
    std::uint32_t channel = 0;

    static constexpr auto members() {
        return std::tuple(required("paths", &Measure::paths, "measurements of radios"),
                          optional("channel", &Measure::channel, "0: the one that the radio is on"));
    }
};

struct TakeSnapshot {
    static constexpr const char* kVerb = "snapshot";
    static constexpr const char* kMeaning = "Takes one object instance as a whole, in snapshot.";
    std::string path;

    static constexpr auto members() {
        return std::tuple(required("path", &TakeSnapshot::path, "one object instance"));
    }
};

struct Operate {
    static constexpr const char* kVerb = "operate";
    static constexpr const char* kMeaning =
        "Calls one of the extra functions that the plug-in exports for an object, stages settings into the same "
        "context, and applies it.";
    std::string path;
    std::string function;
    std::optional<std::string> text;
    std::vector<Setting> settings;

    static constexpr auto members() {
        return std::tuple(
            required("path", &Operate::path, "the object instance"),
            required("function", &Operate::function, "what its name has behind the object's prefix"),
            optional("text", &Operate::text, "its argument, for those that take one"),
            optional("settings", &Operate::settings, "parameters of the same object, staged after the call"));
    }
};

struct ReadBoard : NoMembers<ReadBoard> {
    static constexpr const char* kVerb = "board";
    static constexpr const char* kMeaning = "Tells facts about the board, in board.";
};

struct Control {
    static constexpr const char* kVerb = "control";
    static constexpr const char* kMeaning =
        "Hands a command to the simulated surroundings, or controls the WLAN manager's process; answered in control. "
        "gateway/manager/README.md lists the commands; daemon.kill, daemon.stop, daemon.continue and daemon.restart "
        "are for the process.";
    Json command;

    static constexpr auto members() {
        return std::tuple(required("command", &Control::command, "an object with the member op"));
    }
};

struct LookAround : NoMembers<LookAround> {
    static constexpr const char* kVerb = "live";
    static constexpr const char* kMeaning =
        "Tells what is on the air and what the interfaces have counted, in live. Computed at most once a second "
        "however many clients ask; does not need the library.";
};

struct ReadTime : NoMembers<ReadTime> {
    static constexpr const char* kVerb = "time";
    static constexpr const char* kMeaning = "Tells the board's time, in clock.";
};

struct Wake {
    static constexpr const char* kVerb = "wake";
    static constexpr const char* kMeaning =
        "Answered, with clock, when the board's time has come; unsubscribe with its id ends it early.";
    double at = 0;

    static constexpr auto members() {
        return std::tuple(required("at", &Wake::at, "board time, in seconds"));
    }
};

struct ReportStatus {
    static constexpr const char* kVerb = "report";
    static constexpr const char* kMeaning =
        "Leaves a service's status with the host process, which offers it to clients. The last connection to report "
        "is the service's own: when it ends, the status is shown as not connected.";
    std::string service;
    Json status;

    static constexpr auto members() {
        return std::tuple(required("service", &ReportStatus::service, "such as \"usp\""),
                          required("status", &ReportStatus::status, "an object of at most 64 KiB"));
    }
};

struct ReportTrace {
    static constexpr const char* kVerb = "trace.add";
    static constexpr const char* kMeaning =
        "Adds entries to the trace. The host process keeps the latest 1,000 entries and at most 4 MiB of them.";
    std::string service;
    std::vector<Json> entries;

    static constexpr auto members() {
        return std::tuple(required("service", &ReportTrace::service, "such as \"usp\""),
                          required("entries", &ReportTrace::entries, "objects of at most 64 KiB each"));
    }
};

struct ReadStatus {
    static constexpr const char* kVerb = "status";
    static constexpr const char* kMeaning = "Tells what services have reported last, in status.";
    std::string service;

    static constexpr auto members() {
        return std::tuple(optional("service", &ReadStatus::service, "only this one"));
    }
};

struct ReadTrace {
    static constexpr const char* kVerb = "trace";
    static constexpr const char* kMeaning = "Tells the latest entries of the trace, oldest first, in trace.";
    std::string service;
    std::uint64_t since = 0;
    std::uint32_t count = 0;

    static constexpr auto members() {
        return std::tuple(optional("service", &ReadTrace::service, "only this one's"),
                          optional("since", &ReadTrace::since, "only entries with higher numbers"),
                          optional("count", &ReadTrace::count, "at most so many of the latest; 0: all"));
    }
};

/// Every request. The host process dispatches on it in one place.
using Request = std::variant<Hello, Alive, Ping, Shutdown, CyclePower, Subscribe, Unsubscribe, Get, Set, Watch, Save,
                             Instances, Describe, Complete, Measure, TakeSnapshot, Operate, ReadBoard, Control,
                             LookAround, ReadTime, Wake, ReportStatus, ReportTrace, ReadStatus, ReadTrace>;

/// One line of an answer, without its id. Members that a line does not carry have their default values.
struct Part {
    std::optional<unsigned> version;
    std::string program;
    std::optional<Boot> boot;
    std::uint32_t of = 0;
    std::vector<PathValue> values;
    std::vector<std::string> gone;
    std::vector<std::string> applied;
    std::vector<PathValue> readBack;
    std::vector<std::string> undone;
    std::vector<Fault> faults;
    bool managerLost = false;
    std::vector<std::string> instances;
    std::vector<ParameterDescription> parameters;
    std::vector<std::string> completions;
    std::optional<Snapshot> snapshot;
    std::optional<BoardFacts> board;
    std::optional<Json> control;
    std::optional<LivePicture> live;
    std::optional<BoardClock> clock;
    std::optional<std::uint32_t> wait;
    std::optional<bool> listening;
    std::optional<StationEvent> event;
    std::optional<std::string> absence;
    std::optional<LogLine> log;
    std::optional<Change> change;
    std::vector<ServiceStatus> status;
    std::vector<TraceEntry> trace;
    bool done = false;

    static constexpr auto members() {
        return std::tuple(
            optional("protocol", &Part::version, "the version that the host process speaks"),
            optional("program", &Part::program, "the version of the host process"),
            optional("boot", &Part::boot, "the board's present life"),
            optional("of", &Part::of, "position, from 0, of the path that the part belongs to"),
            optional("values", &Part::values, "values read or written"),
            optional("gone", &Part::gone, "watched paths that cannot be read any more"),
            optional("applied", &Part::applied, "object instances that were applied, or may have been"),
            optional("readBack", &Part::readBack, "values that read differently now from what was written"),
            optional("undone", &Part::undone, "parameters whose earlier values were written back"),
            optional("faults", &Part::faults, "what went wrong"),
            optional("managerLost", &Part::managerLost, "true: reading ended early because the manager is gone"),
            optional("instances", &Part::instances, "object instances that exist"),
            optional("parameters", &Part::parameters, "rows of the exported table"),
            optional("completions", &Part::completions, "what the path may go on with"),
            optional("snapshot", &Part::snapshot, ""), optional("board", &Part::board, ""),
            optional("control", &Part::control, "the answer of the simulated surroundings"),
            optional("live", &Part::live, ""), optional("clock", &Part::clock, ""),
            optional("wait", &Part::wait, "the answer will take about so many seconds"),
            optional("listening", &Part::listening, "whether news of a subscription will come"),
            optional("event", &Part::event, "a station came or left"),
            optional("absence", &Part::absence, "why no event can come; an empty text: they can again"),
            optional("log", &Part::log, ""), optional("change", &Part::change, ""),
            optional("status", &Part::status, ""), optional("trace", &Part::trace, ""),
            optional("done", &Part::done, "true: the answer's last line"));
    }
};

/// The first line that a new host process writes to the client that started it, before any request.
struct BootReport {
    bool ready = false;
    std::uint32_t result = 0;
    std::string log;
    std::string error;
    std::string notice;

    static constexpr auto members() {
        return std::tuple(optional("ready", &BootReport::ready, "true: the board is up"),
                          optional("result", &BootReport::result, "what the plug-in's start-up returned, when not 0"),
                          optional("log", &BootReport::log, "the error lines of start-up, joined by \"; \""),
                          optional("error", &BootReport::error, "why there is no board"),
                          optional("notice", &BootReport::notice, "what is unlike what the user may expect"));
    }
};

}  // namespace quorvel::hostd::protocol
