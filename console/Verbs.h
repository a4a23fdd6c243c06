#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "Session.h"

namespace quorvel::console {

/// A verb under construction: its command-line interface, and where its exit status goes.
struct VerbContext {
    CLI::App& app;
    Session& session;
    int& status;

    /// Adds a verb whose work is `run`.
    CLI::App* add(const char* name, const char* description, const std::function<int()>& run) {
        CLI::App* const verb = app.add_subcommand(name, description);
        verb->fallthrough();
        int* const to = &status;
        verb->callback([run, to] { *to = run(); });
        return verb;
    }
};

// Each adds the verbs of its subject.
void addValueVerbs(VerbContext& context);       // get, set, instances, dump
void addObjectVerbs(VerbContext& context);      // snapshot, security
void addExplainVerbs(VerbContext& context);     // explain
void addChangeVerbs(VerbContext& context);      // diff, watch, log
void addRadioVerbs(VerbContext& context);       // scan, channel
void addStatisticsVerbs(VerbContext& context);  // stats
void addStationVerbs(VerbContext& context);     // stations, station, simulate, events, wps
void addOverviewVerbs(VerbContext& context);    // overview, demo
void addBoardVerbs(VerbContext& context);       // up, down, status, version
void addPlayVerbs(VerbContext& context);        // play
void addSelftestVerb(VerbContext& context);     // selftest
void addShellVerbs(VerbContext& context);       // shell, batch

/// Prints the overview; the demonstration begins with it.
int showOverview(Session& session);

}  // namespace quorvel::console
