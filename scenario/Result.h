#pragma once

#include <optional>
#include <string>
#include <vector>

#include "scenario/Scenario.h"

namespace quorvel::scenario {

/// A line of the report: a step that was done, or an expectation that was decided.
struct Entry {
    enum class Kind {
        kStep,
        kStepFailed,  ///< a step gave a fault that nothing expects
        kHeld,
        kFailed,
    };
    Time time = 0;
    Kind kind = Kind::kStep;
    std::string text;
    std::string seen;                                       ///< what was seen; a step's faults
    std::optional<std::size_t> expectation = std::nullopt;  ///< its place in the scenario
};

/// An entry of the event log, as the report has it.
struct LogLine {
    Time time = 0;
    std::string kind;
    std::string text;
};

/// The kind of log entries that tell what a USP controller got.
inline constexpr const char* kControllerLog = "usp";

/// The values of a parameter over time; null while it cannot be read.
struct Course {
    struct Sample {
        Time time = 0;
        Json value;
    };
    std::string path;
    std::vector<Sample> samples;
};

/// A station at one moment.
struct StationSample {
    Time time = 0;
    std::string mac;
    unsigned accessPoint = 0;  ///< 0: not associated
    int rssi = 0;              ///< dBm
};

/// How the board went on while a scenario was played.
struct Recording {
    std::vector<Course> parameters;
    std::vector<StationSample> stations;
};

struct Result {
    std::vector<Entry> entries;  ///< in the order in which they were decided
    std::vector<LogLine> log;
    Recording recording;  ///< empty unless it was asked for
    Time end = 0;
    std::string notice;  ///< what the board had to say about its sandbox

    [[nodiscard]] std::size_t count(Entry::Kind kind) const;
    /// Tells whether every expectation held and no step failed.
    [[nodiscard]] bool passed() const;
};

}  // namespace quorvel::scenario
