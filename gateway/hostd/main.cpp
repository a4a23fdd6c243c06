// quorvel-wifi-host: the host process on the board.
#include <fcntl.h>
#include <quorvel.h>
#include <sys/socket.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <iostream>

#include "gateway/board/Board.h"
#include "gateway/hostd/BoardFacts.h"
#include "gateway/hostd/BoardTime.h"
#include "gateway/hostd/Clock.h"
#include "gateway/hostd/FolderCalls.h"
#include "gateway/hostd/LogTap.h"
#include "gateway/hostd/Manager.h"
#include "gateway/hostd/Plugin.h"
#include "gateway/hostd/PowerCycle.h"
#include "gateway/hostd/Recording.h"
#include "gateway/hostd/Server.h"
#include "gateway/hostd/Service.h"
#include "gateway/hostd/Simulation.h"
#include "gateway/hostd/StationEvents.h"
#include "gateway/hostd/Version.h"

// Takes the place of the C library's, for the plug-in too.
extern "C" __attribute__((visibility("default"))) unsigned sleep(unsigned seconds) {
    return quorvel::hostd::sleepOnBoard(seconds);
}

namespace {

using namespace quorvel::hostd;
using protocol::Part;
using protocol::Topic;

// Switching the plug-in off ends the daemon, which may take its time but not for ever.
constexpr unsigned kUnInitSeconds = 10;

Server* theServer = nullptr;

struct Options {
    quorvel::board::Options board;
    int connected = -1;
    int listening = -1;
    int report = -1;
    std::string record;
    std::string sandbox = "automatic";
    bool realTime = false;
    std::uint32_t logLevel = 0;
    protocol::Boot boot;
};

void report(const Options& options, const protocol::BootReport& line) {
    if (options.report < 0) return;
    const std::string text = protocol::reportLine(line);
    if (send(options.report, text.data(), text.size(), MSG_NOSIGNAL) >= 0 || errno != ENOTSOCK) return;
    (void)!write(options.report, text.data(), text.size());  // a starter that is gone needs no report
}

void onSignal(int) {
    if (theServer != nullptr) theServer->stop();
}

// Loads the plug-in. In the folder sandbox, its calls lead to the board's folder.
Plugin loadPlugin(const quorvel::board::Places& places) {
    if (places.root.empty()) return Plugin(places.plugin);
    setBoardFolder(places.root, places.interfaces);
    // A recorder in the plug-in's place passes calls on to where the recorded library's own lead.
    const char* const recorded = std::getenv("QUORVEL_RECORDER_LIBRARY");
    if (recorded != nullptr && recorded[0] != '\0') (void)Plugin(recorded, folderCalls());  // it stays loaded
    return Plugin(places.plugin, folderCalls());
}

// Loads the plug-in and, where it is recorded, the recorder in its place.
Plugin loadRecorded(const quorvel::board::Places& places, const Recording& recording) {
    const Plugin plugin = loadPlugin(places);
    plugin.requireSleep(::sleep);
    // The recorder finds the plug-in loaded, and its calls where they lead by now.
    return recording.isMade() ? Plugin(recording.begin(places)) : plugin;
}

// Ends the process with the status that leads to what comes next.
[[noreturn]] void end(const Plugin& plugin, const Server& server, const Options& options, const PowerCycle& cycle) {
    (void)alarm(kUnInitSeconds);
    const std::string saved = server.ending() == Ending::kFactoryReset ? savedConfiguration() : "";
    if (auto* const unInit = plugin.find<std::int32_t()>("WiFiUnInit"); unInit != nullptr) (void)unInit();
    if (!saved.empty()) (void)unlink(saved.c_str());  // nothing may have been saved yet
    // The plug-in's listener thread may still run: nothing is torn down under it.
    if (server.ending() == Ending::kShutdown) _exit(0);
    cycle.leave({options.boot.number + 1, server.cause()});
    _exit(kPowerCycleStatus);
}

int serve(const Options& options, const quorvel::board::Places& places, const Recording& recording,
          const PowerCycle& cycle) {
    setenv("QUORVEL_LOG_LEVEL", std::to_string(options.logLevel).c_str(), 1);
    LogTap::setOutputLevel(options.logLevel);
    const Plugin plugin = loadRecorded(places, recording);
    Heartbeat heartbeat;
    const char* const clockKind = std::getenv("QUORVEL_CLOCK");
    Clock clock(clockKind != nullptr && std::string_view(clockKind) == "virtual");
    bool listening = false;
    Manager manager(plugin, clock, [&] {
        if (listening) listenAnew(plugin);
    });
    Service service(plugin, heartbeat,
                    {managerTrouble, [](protocol::Change change) { theServer->publishChange(std::move(change)); }});
    Server::Settings settings;
    settings.connected = options.connected;
    settings.listening = options.listening;
    settings.program = kVersion;
    settings.boot = options.boot;
    settings.canCyclePower = options.connected < 0;
    settings.health = managerHealth;
    settings.absence = managerAbsence;
    settings.managerProcess = [] { return QuorvelUtilGetPidByName(kManager); };
    settings.listen = [&] {
        listening = true;
        return listenForEvents(plugin);
    };
    settings.control = [&manager](const protocol::Json& command) { return manager.control(command); };
    settings.board = [&places] { return boardFacts(places); };
    settings.look = [&places] { return lookAround(places); };
    Server server(service, heartbeat, clock, std::move(settings));
    theServer = &server;
    onStationEvents([&server](const protocol::StationEvent& event) {
        Part part;
        part.event = event;
        server.publish(Topic::kStations, std::move(part));
        server.boardChanged();
    });
    clock.onJump([&server, &clock] {
        Part part;
        part.clock = clock.now();
        server.publish(Topic::kTime, std::move(part));
        server.boardChanged();
    });
    setBoardTime({options.realTime,
                  [&](unsigned seconds) {
                      heartbeat.expect(std::chrono::seconds(seconds));
                      server.announceWait(seconds);
                  },
                  [&clock](const protocol::Json& answer) { learnTime(clock, answer); }});

    auto* const init = plugin.find<std::uint32_t()>("WiFiInit");
    const std::uint32_t result = init == nullptr ? 0 : init();
    learnTime(clock, askSimulation("time"));
    const std::string trouble = recording.trouble();
    const std::string notice = places.notice + (places.notice.empty() || trouble.empty() ? "" : "; ") + trouble;
    report(options, {true, result, presentable(LogTap::errors()), "", notice});
    (void)std::signal(SIGTERM, onSignal);
    (void)std::signal(SIGINT, onSignal);
    (void)std::signal(SIGHUP, onSignal);
    if (!server.run()) _exit(1);  // a thread is inside the plug-in and will not come back
    end(plugin, server, options, cycle);
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("The host process of a simulated gateway. quorvel-wifi starts it.");
    app.add_option("--connected", options.connected, "Socket of the client that the board lives for");
    app.add_option("--listening", options.listening, "Listening socket for clients");
    app.add_option("--report", options.report, "Where to report that the board is up");
    app.add_option("--board", options.board.board);
    app.add_option("--state", options.board.stateFolder);
    app.add_option("--programs", options.board.programFolder)->required();
    app.add_option("--plugin", options.board.plugin);
    app.add_option("--configuration", options.board.configuration);
    app.add_option("--writable", options.board.writableFolders);
    app.add_option("--emulator", options.board.emulator);
    app.add_option("--record", options.record, "Record the plug-in's calls into this file");
    app.add_option("--sandbox", options.sandbox)->check(CLI::IsMember({"automatic", "namespaces", "folder"}));
    app.add_flag("--real-time", options.realTime);
    app.add_option("--log-level", options.logLevel);
    app.add_option("--boots", options.boot.number, "Power cycles before this life");
    app.add_option("--cause", options.boot.cause, "Cause of the last power cycle");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    if (options.connected < 0 && options.listening < 0) {
        std::cerr << "quorvel-wifi-host: give --connected or --listening with a socket; quorvel-wifi does\n";
        return 2;
    }
    const bool firstLife = options.boot.number == 0;
    if (options.report < 0 && firstLife) {
        options.report = options.connected >= 0 ? options.connected : STDERR_FILENO;
    }
    options.board.sandbox = *quorvel::board::sandboxCalled(options.sandbox);
    const PowerCycle cycle({argv, argv + argc}, options.board.emulator);
    options.board.kept = {options.listening, cycle.descriptor()};
    options.board.ended = [&cycle](int status) { cycle.startAgain(status); };
    try {
        const Recording recording(options.record);
        const quorvel::board::Places places = quorvel::board::enterBoard(options.board);
        return serve(options, places, recording, cycle);
    } catch (const std::exception& error) {
        report(options, {false, 0, "", error.what(), ""});
        return 1;
    }
}
