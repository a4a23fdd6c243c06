// quorvel-wifi-host: the host process on the board.
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <mutex>
#include <nlohmann/json.hpp>

#include "common/UnixListener.h"
#include "gateway/board/Board.h"
#include "gateway/hostd/BoardFacts.h"
#include "gateway/hostd/BoardTime.h"
#include "gateway/hostd/LogTap.h"
#include "gateway/hostd/Manager.h"
#include "gateway/hostd/Plugin.h"
#include "gateway/hostd/Server.h"
#include "gateway/hostd/Service.h"
#include "gateway/hostd/Simulation.h"
#include "host/StationRecords.h"

// Takes the place of the C library's, for the plug-in too.
extern "C" __attribute__((visibility("default"))) unsigned sleep(unsigned seconds) {
    return quorvel::hostd::sleepOnBoard(seconds);
}

namespace {

using Json = nlohmann::ordered_json;
using namespace quorvel::hostd;

// Switching the plug-in off ends the daemon, which may take its time but not for ever.
constexpr unsigned kUnInitSeconds = 10;

// A WLAN manager that is launched anew may take its time.
constexpr std::chrono::seconds kLongestControl{15};

constexpr const char* kNotifySocket = "/tmp/notify-socket";

Server* theServer = nullptr;

struct Options {
    quorvel::board::Options board;
    int connected = -1;
    int listening = -1;
    int report = -1;
    bool noSandbox = false;
    bool realTime = false;
    std::uint32_t logLevel = 0;
};

void report(int descriptor, const Json& line) {
    const std::string text = line.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    if (send(descriptor, text.data(), text.size(), MSG_NOSIGNAL) >= 0 || errno != ENOTSOCK) return;
    (void)!write(descriptor, text.data(), text.size());  // nobody is left to be told
}

// The callback of station events. The plug-in's listener thread calls it.
std::uint32_t stationEvent(std::uint32_t accessPoint, std::uint32_t event, void* station) {
    StationEventRecord record{};
    // Only an association has the whole record.
    std::memcpy(&record, station, event == QUORVEL_EVENT_ASSOCIATED ? sizeof record : sizeof record.mac);
    Json line{{"accessPoint", accessPoint},
              {"event", event},
              {"kind", event == QUORVEL_EVENT_ASSOCIATED ? "associated" : "left"},
              {"station", presentable(std::string_view(record.mac, strnlen(record.mac, sizeof record.mac)))}};
    if (event == QUORVEL_EVENT_ASSOCIATED) {
        line["signalStrength"] = record.rssi;
        line["downlinkRate"] = record.downlinkRate;
        line["uplinkRate"] = record.uplinkRate;
        line["snr"] = record.snr;
        line["standard"] =
            presentable(std::string_view(record.standard, strnlen(record.standard, sizeof record.standard)));
        line["bandwidth"] = record.bandwidth;
    }
    theServer->publish(line);
    return 0;
}

std::uint32_t listenForEvents(const Plugin& plugin) {
    // The events' socket is there once the manager answers.
    (void)controlSimulation(R"({"op":"state"})");
    using Callback = std::uint32_t(std::uint32_t, std::uint32_t, void*);
    auto* const start = plugin.find<std::uint32_t(Callback*)>("WiFiNewAPAssociatedDeviceCallbackRegister");
    return start == nullptr ? 1 : start(stationEvent);
}

// A new manager knows nothing of those who listened to the old one.
void listenAnew(const Plugin& plugin, bool listening) {
    if (!listening) return;
    auto* const stop = plugin.find<std::uint32_t()>("WiFiNewAPAssociatedDeviceCallbackDeRegister");
    if (stop != nullptr) (void)stop();  // the old listener has nobody to listen to any more
    (void)listenForEvents(plugin);      // whoever waits for events sees whether there are any
}

void onSignal(int) {
    if (theServer != nullptr) theServer->stop();
}

// The plug-in's places in /tmp are fixed: without a sandbox a second board would take the first one's.
void refuseASecondBoard() {
    if (!quorvel::common::isServed(kNotifySocket)) return;
    throw quorvel::board::BoardError(
        std::string("Without a sandbox the machine has room for one board, and one is up: ") + kNotifySocket +
        " is served already. Switch that one off, or leave --no-sandbox out.");
}

int serve(const Options& options, const quorvel::board::Places& places) {
    setenv("QUORVEL_LOG_LEVEL", std::to_string(options.logLevel).c_str(), 1);
    LogTap::setOutputLevel(options.logLevel);
    const Plugin plugin(places.plugin);
    Heartbeat heartbeat;
    bool listening = false;
    Manager manager(plugin, [&] { listenAnew(plugin, listening); });
    const auto control = [&](const std::string& command) {
        heartbeat.expect(kLongestControl);
        return manager.control(command);
    };
    Service service(plugin, heartbeat, {control, [&places] { return boardFacts(places.boardFile); }, managerTrouble});
    const auto listen = [&] {
        listening = true;
        return listenForEvents(plugin);
    };
    Server server(service, heartbeat, {options.connected, options.listening, managerHealth, listen, managerAbsence});
    theServer = &server;
    setBoardTime({options.realTime, [&](unsigned seconds) {
                      heartbeat.expect(std::chrono::seconds(seconds));
                      server.announceWait(seconds);
                  }});

    auto* const init = plugin.find<std::uint32_t()>("WiFiInit");
    const std::uint32_t result = init == nullptr ? 0 : init();
    report(options.report, {{"ready", true}, {"result", result}, {"log", presentable(LogTap::errors())}});
    (void)std::signal(SIGTERM, onSignal);
    (void)std::signal(SIGINT, onSignal);
    (void)std::signal(SIGHUP, onSignal);
    if (!server.run()) _exit(1);  // a thread is inside the plug-in and will not come back

    (void)alarm(kUnInitSeconds);
    if (auto* const unInit = plugin.find<std::int32_t()>("WiFiUnInit"); unInit != nullptr) (void)unInit();
    // The plug-in's listener thread may still run: nothing is torn down under it.
    _exit(0);
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app("The host process of a simulated gateway. quorvel-wifi starts it.");
    app.add_option("--connected", options.connected, "Socket of the one client");
    app.add_option("--listening", options.listening, "Listening socket for clients");
    app.add_option("--report", options.report, "Where to report that the board is up");
    app.add_option("--board", options.board.board);
    app.add_option("--state", options.board.stateFolder);
    app.add_option("--programs", options.board.programFolder)->required();
    app.add_option("--plugin", options.board.plugin);
    app.add_option("--configuration", options.board.configuration);
    app.add_option("--writable", options.board.writableFolders);
    app.add_option("--emulator", options.board.emulator);
    app.add_flag("--no-sandbox", options.noSandbox);
    app.add_flag("--real-time", options.realTime);
    app.add_option("--log-level", options.logLevel);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    if ((options.connected < 0) == (options.listening < 0)) {
        std::cerr << "quorvel-wifi-host: give --connected or --listening with a socket; quorvel-wifi does\n";
        return 2;
    }
    if (options.report < 0) options.report = options.connected >= 0 ? options.connected : STDERR_FILENO;
    options.board.sandbox = !options.noSandbox;
    try {
        if (options.noSandbox) refuseASecondBoard();
        const quorvel::board::Places places = quorvel::board::enterBoard(options.board);
        return serve(options, places);
    } catch (const std::exception& error) {
        report(options.report, {{"error", error.what()}});
        return 1;
    }
}
