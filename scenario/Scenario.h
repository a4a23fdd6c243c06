#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace quorvel::scenario {

using Json = nlohmann::ordered_json;

/// Board time since the scenario's first power-on, in milliseconds.
using Time = std::int64_t;

/// A value as a person reads it: a text without its quotes, anything else as JSON.
[[nodiscard]] std::string textOf(const Json& value);

/// Where a scenario is played.
enum class Venue {
    kNewBoard,      ///< a board for the scenario alone, whose clock runs ahead
    kRunningBoard,  ///< the board that is up in the background, in real time
};

/// Something that happens to the board.
struct Step {
    Time at = 0;
    std::string id;      ///< what expectations call it by; may be empty
    std::string action;  ///< "set", "station.join", ...
    Json members;        ///< the action's own members, checked by the reader
};

/// The rule that a value must meet.
struct Condition {
    enum class Kind { kEquals, kDiffers, kOneOf, kMatches, kAtLeast, kAtMost };
    Kind kind = Kind::kEquals;
    Json value;  ///< a list for kOneOf, a regular expression for kMatches
};

/// Something that must be seen. It is looked for from `after` to `by`.
struct Expectation {
    enum class Kind {
        kParameter,     ///< a parameter's value
        kUnreadable,    ///< reading a parameter gives a fault
        kEvent,         ///< the plug-in reported stations that come or go
        kLog,           ///< the WLAN manager's log has an entry
        kFault,         ///< a step gave a fault, or none
        kNotification,  ///< the controller got a notification
        kAnswer,        ///< the controller got the answer to a step
    };
    Kind kind = Kind::kParameter;
    Time after = 0;
    Time by = 0;
    std::string subject;       ///< path, kind of event or log entry, type of notification, or a step's id
    Condition condition;       ///< kParameter
    unsigned fault = 0;        ///< kUnreadable and kFault; 0: none
    unsigned accessPoint = 0;  ///< kEvent; 0: any
    std::string station;       ///< kEvent, lower case; empty: any
    std::string pattern;       ///< kLog: regular expression; empty: any text
    // kNotification and kAnswer:
    std::string path;                 ///< with * for any one name or number; empty: any
    std::string subscription;         ///< the notification's; empty: any
    std::string member;               ///< key or argument that `wanted` is about; empty: the value itself
    std::optional<Condition> wanted;  ///< of the value
    std::optional<unsigned> code;     ///< of the fault at the path, or of any; 0: none
    unsigned atLeast = 1;             ///< all that are counted
    std::optional<unsigned> atMost;

    /// Tells whether things are counted over the whole span, instead of a look at the present.
    [[nodiscard]] bool counts() const {
        return kind == Kind::kEvent || kind == Kind::kLog || isOfController();
    }
    /// Tells whether it is about what a USP controller gets.
    [[nodiscard]] bool isOfController() const {
        return kind == Kind::kNotification || kind == Kind::kAnswer;
    }
};

struct Scenario {
    std::string name;
    std::string file;   ///< as it was named, for reports
    std::string board;  ///< a shipped board's name; empty: `description` counts, or the console's own choice
    Json description;   ///< an inline board; null when there is none
    std::uint64_t seed = 1;
    Json state;  ///< values, by path, that were set and saved before the scenario begins
    std::vector<Step> timeline;
    std::vector<Expectation> expectations;
    Time end = 0;  ///< the scenario goes on to here

    /// Tells whether anything is expected of the plug-in's station events.
    [[nodiscard]] bool listens() const;
    /// Tells whether a USP controller takes part.
    [[nodiscard]] bool usesUsp() const;
};

/// Returns a step's words for people: "set Device.WiFi.Radio.1.Channel = 44, saved".
[[nodiscard]] std::string describe(const Step& step);

/// Returns an expectation's words for people, without its result.
[[nodiscard]] std::string describe(const Expectation& expectation);

/// Returns milliseconds as seconds with three digits: "12.500".
[[nodiscard]] std::string seconds(Time time);

}  // namespace quorvel::scenario
