#pragma once

#include <map>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace quorvel::console {

// The headings of the help, in its order.
inline constexpr const char* kDataModelVerbs = "Data model";
inline constexpr const char* kAirVerbs = "Radios and stations";
inline constexpr const char* kBoardVerbs = "The board";
inline constexpr const char* kManyVerbs = "Many commands, checks and help";

/// The kind of an argument or an option's value: completion offers values by it.
enum class ArgumentKind {
    kOther,  ///< nothing to offer
    kAccessPoint,
    kAssignment,  ///< PATH=VALUE
    kBoard,       ///< a shipped board's name, or a file
    kChannel,     ///< of the radio given before it
    kFile,
    kFolder,
    kLogLevel,
    kMac,  ///< of a station
    kPath,
    kRadio,
    kRadioOrPath,
    kSandbox,
    kScenario,  ///< a shipped scenario's name, or a file
    kVerb,
    kWpsAction,
};

/// The kinds of the arguments and options that have one.
using ArgumentKinds = std::map<const CLI::Option*, ArgumentKind>;

/// The parts of a command line: of the program, a verb, or a verb's verb. Help and completion are made from it.
struct CommandShape {
    struct Option {
        std::string name;   ///< "--board"
        std::string value;  ///< "NAME|FILE"; empty for a flag
        std::string description;
        ArgumentKind kind = ArgumentKind::kOther;  ///< of the value
    };
    struct Positional {
        std::string name;  ///< "PATH"
        std::string description;
        bool required = false;
        bool many = false;
        ArgumentKind kind = ArgumentKind::kOther;
    };

    std::string name;
    std::string heading;
    std::string description;
    std::vector<std::string> examples;  ///< the words behind the program's name
    std::vector<Option> options;
    std::vector<Positional> positionals;
    std::vector<CommandShape> verbs;

    /// Returns the verb of this name, or null.
    [[nodiscard]] const CommandShape* verb(const std::string& wanted) const;
    [[nodiscard]] std::vector<std::string> verbNames() const;
    [[nodiscard]] std::vector<std::string> optionNames() const;
};

/// Returns the shape of a command line that CLI11 parses, whose arguments have these kinds.
[[nodiscard]] CommandShape shapeOf(const CLI::App& app, const ArgumentKinds& kinds);

}  // namespace quorvel::console
