#pragma once

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <utility>

#include "console/commandline/CommandShape.h"
#include "console/commandline/NearestWord.h"
#include "console/session/Session.h"
#include "gateway/launch/UspAgent.h"

namespace quorvel::console {

/// A verb under construction: its command-line interface, and where its exit status goes.
struct VerbContext {
    CLI::App& app;
    Session& session;
    int& status;
    ArgumentKinds& kinds;
    std::function<int(std::vector<std::string>, Session&)> dispatch;  ///< runs a command in a session
    std::function<CommandShape()> shape;                              ///< returns the shape of the whole command line

    /// Adds a verb under a heading of the help; its work is `run`. The examples are the words behind the program's
    /// name, one per line.
    CLI::App* add(const char* heading, const char* name, const char* description, const char* examples,
                  const std::function<int()>& run) {
        CLI::App* const verb = app.add_subcommand(name, description);
        verb->group(heading);
        verb->footer(examples);
        verb->fallthrough();
        int* const to = &status;
        verb->callback([run, to] { *to = run(); });
        return verb;
    }

    /// Adds an argument, or an option with a value, of a kind that completion knows.
    template <typename Value>
    CLI::Option* take(CLI::App* verb, ArgumentKind kind, const char* name, Value& value, const char* description) {
        CLI::Option* const option = verb->add_option(name, value, description);
        kinds[option] = kind;
        return option;
    }
};

/// Checks that a value is one of a few words.
inline CLI::Validator oneOf(std::vector<std::string> words) {
    return CLI::Validator(
        [words = std::move(words)](std::string& given) {
            if (std::find(words.begin(), words.end(), given) != words.end()) return std::string();
            return "\"" + given + "\" is not one of " + listed(words) + didYouMean(given, words);
        },
        "");
}

/// Checks that a value is a whole number from 1.
inline CLI::Validator positive() {
    return CLI::Validator(
        [](std::string& given) {
            const bool number = !given.empty() && given.find_first_not_of("0123456789") == std::string::npos;
            return number && given.find_first_not_of('0') != std::string::npos
                       ? std::string()
                       : "\"" + given + "\" must be a positive whole number";
        },
        "");
}

/// Adds the options that concern the USP agent of a board.
void addUspOptions(CLI::App* verb, launch::UspOptions& usp);

// Each adds the verbs of its subject.
void addValueVerbs(VerbContext& context);       // get, set, instances, dump
void addObjectVerbs(VerbContext& context);      // snapshot, security
void addExplainVerbs(VerbContext& context);     // explain
void addChangeVerbs(VerbContext& context);      // diff, watch
void addLogVerb(VerbContext& context);          // log
void addRadioVerbs(VerbContext& context);       // scan, channel
void addStatisticsVerbs(VerbContext& context);  // stats
void addStationVerbs(VerbContext& context);     // stations, station, events, wps, simulate
void addOverviewVerbs(VerbContext& context);    // overview, demo
void addBoardVerbs(VerbContext& context);       // up, down, status, version
void addUspVerbs(VerbContext& context);         // usp
void addWebVerb(VerbContext& context);          // web
void addPlayVerbs(VerbContext& context);        // play
void addFleetVerbs(VerbContext& context);       // fleet
void addSelftestVerb(VerbContext& context);     // selftest
void addRecordingVerbs(VerbContext& context);   // recording
void addReplayVerb(VerbContext& context);       // replay
void addShellVerbs(VerbContext& context);       // shell, batch
void addHelpVerb(VerbContext& context);         // help

/// Prints the overview; the demonstration begins with it. `result` is given the JSON instead of standard output.
int showOverview(Session& session, Json* result = nullptr);

}  // namespace quorvel::console
