#include "console/session/Session.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "console/session/ProgramName.h"
#include "console/terminal/Interrupt.h"
#include "console/terminal/Progress.h"

namespace quorvel::console {
namespace {

// Options for the boot have no effect on a board that is up.
void warnOfIdleOptions(const Options& options) {
    std::string idle;
    const auto add = [&idle](bool given, const char* name) {
        if (given) idle += (idle.empty() ? "" : ", ") + std::string(name);
    };
    add(!options.plugin.empty(), "--plugin");
    add(!options.configuration.empty(), "--configuration");
    add(options.logLevel >= 0, "--log-level");
    add(!options.logFile.empty(), "--log-file");
    add(!options.sandbox.empty(), "--sandbox");
    if (!idle.empty()) {
        std::cerr << "quorvel-wifi: warning: the board is up already: " << idle
                  << " would have to be given to \"up\"\n";
    }
}

}  // namespace

Session::~Session() = default;

Style Session::outStyle() const {
    return {!options.noColor, STDOUT_FILENO};
}

Style Session::errorStyle() const {
    return {!options.noColor, STDERR_FILENO};
}

std::string Session::commandFor(const std::string& verb) const {
    if (nested) return verb;
    const auto quoted = [](const std::string& word) {
        return word.find_first_of(" \t'\"$\\&;()<>|*?[]#~`") == std::string::npos ? word : "\"" + word + "\"";
    };
    std::string command = programName() + " " + verb;
    if (options.board != Options{}.board) command += " --board " + quoted(options.board);
    if (!options.state.empty()) command += " --state " + quoted(options.state);
    return command;
}

void Session::refuseLateRecording() const {
    if (options.record.empty()) return;
    throw GatewayError(
        "cannot record into " + options.record +
        ": the board is up already, and a recording begins when a board is started; switch it off with " +
        commandFor("down") + " first");
}

Gateway& Session::gateway() {
    if (gateway_ != nullptr) return *gateway_;
    Progress progress(errorStyle());
    progress.say("starting the board " + options.board + " ...");
    auto found = Gateway::open(options);
    progress.clear();
    if (found->inBackground()) {
        refuseLateRecording();
        warnOfIdleOptions(options);
    }
    gateway_ = std::move(found);
    if (!gateway_->notice().empty()) std::cerr << "quorvel-wifi: " << gateway_->notice() << '\n';
    if (!gateway_->bootTrouble().empty()) std::cerr << "quorvel-wifi: warning: " << gateway_->bootTrouble() << '\n';
    return *gateway_;
}

std::vector<Fault> Session::ask(const protocol::Request& request, const Client::OnPart& onPart) {
    Client& client = gateway().client();
    Progress progress(errorStyle());
    progress.await("waiting for the board ...");
    const Interrupt interrupt;
    const struct Idle {
        Client& client;
        ~Idle() {
            client.idle = nullptr;
        }
    } idle{client};
    client.idle = [&] {
        interrupt.giveUpIfMine();
        progress.tick();
    };
    return client.ask(request, [&](const Part& part) {
        if (part.wait) progress.expect(*part.wait);
        // The output begins on a clean line.
        if (!part.wait) progress.clear();
        if (onPart) onPart(part);
    });
}

void Session::letTimePass(unsigned seconds, bool quiet) {
    // With --real-time, do not skip ahead.
    if (gateway().runsAhead() && !options.realTime) {
        (void)ask(protocol::Control{{{"op", "time"}, {"advance", seconds}}});  // without a manager no time passes
        return;
    }
    Progress progress(errorStyle());
    const Interrupt interrupt;
    if (!quiet) progress.expect(seconds);
    for (unsigned waited = 0; waited < seconds * 10 && !Interrupt::happened(); ++waited) {
        (void)poll(nullptr, 0, 100);
        progress.tick();
    }
    interrupt.giveUpIfMine();
}

void Readings::add(const std::vector<protocol::PathValue>& values) {
    for (const protocol::PathValue& each : values)
        values_.emplace_back(each.path, each.value);
}

Json Readings::at(const std::string& path) const {
    const auto found =
        std::find_if(values_.begin(), values_.end(), [&path](const auto& value) { return value.first == path; });
    return found == values_.end() ? Json(nullptr) : found->second;
}

std::string Readings::text(const std::string& path) const {
    const Json value = at(path);
    return value.is_null() ? "-" : textOf(value);
}

Readings readPaths(Session& session, const std::vector<std::string>& paths, std::vector<Fault>* faults) {
    Readings readings;
    bool managerLost = false;
    protocol::Get request;
    request.paths = paths;
    const std::vector<Fault> failed = session.ask(request, [&](const Part& part) {
        readings.add(part.values);
        managerLost = managerLost || part.managerLost;
    });
    if (faults == nullptr) return readings;
    for (const Fault& fault : failed) {
        if (fault.path.empty() || std::find(paths.begin(), paths.end(), fault.path) != paths.end())
            faults->push_back(fault);
    }
    // Without a manager, values that are missing are at fault as well.
    if (managerLost && faults->empty() && !failed.empty()) faults->push_back(failed.front());
    return readings;
}

void endInterruptedLine(const Session& session) {
    if (Interrupt::happened() && session.errorStyle().onTerminal()) std::cerr << '\n';
}

std::string textOf(const Json& value) {
    if (value.is_string()) return value.get<std::string>();
    return value.dump();
}

}  // namespace quorvel::console
