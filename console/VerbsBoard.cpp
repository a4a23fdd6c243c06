// up, down, status, version: the board itself.
#include <iostream>

#include "Faults.h"
#include "Verbs.h"
#include "Version.h"

namespace quorvel::console {
namespace {

void tell(const Session& session, const Json& result, const std::string& text) {
    if (session.options.json) {
        printJson(result, {});
    } else if (session.options.plain) {
        for (const auto& [name, value] : result.items()) {
            if (!value.is_structured()) std::cout << name << '\t' << textOf(value) << '\n';
        }
    } else {
        std::cout << text << '\n';
    }
}

int up(const Session& session) {
    const std::string state = stateFolder(session.options);
    if (Gateway::findRunning(session.options) != nullptr) {
        tell(session, {{"up", true}, {"state", state}}, "the board is up already (state in " + state + ")");
        return kDone;
    }
    if (session.errorStyle().onTerminal()) std::cerr << "starting the board " << session.options.board << " ...\n";
    // People live in real time.
    Options options = session.options;
    options.realTime = true;
    Gateway::startInBackground(options);
    tell(session, {{"up", true}, {"state", state}},
         "the board is up (state in " + state + "); quorvel-wifi down ends it");
    return kDone;
}

int down(const Session& session) {
    auto running = Gateway::findRunning(session.options);
    if (running == nullptr) {
        tell(session, {{"up", false}}, "no board is up for this state folder (" + stateFolder(session.options) + ")");
        return kDone;
    }
    Gateway::stop(std::move(running), session.options);
    tell(session, {{"up", false}}, "the board is down");
    return kDone;
}

int status(const Session& session) {
    auto running = Gateway::findRunning(session.options);
    const std::string state = stateFolder(session.options);
    if (running == nullptr) {
        tell(session, {{"up", false}, {"state", state}},
             "no board is up (state in " + state + "); quorvel-wifi up starts one");
        return kDone;
    }
    Json board;
    std::vector<Json> faults;
    running->client().ask({{"do", "board"}}, [&](const Json& part) {
        if (part.contains("board")) board = part.at("board");
        if (part.contains("faults")) faults = part.at("faults").get<std::vector<Json>>();
    });
    if (!faults.empty()) return reportFaults(session, faults);
    const Json manager = board.value("manager", Json::object());
    tell(session, {{"up", true}, {"state", state}, {"board", board}},
         "the board is up (state in " + state + "); the WLAN manager is " + manager.value("state", "unknown"));
    return kDone;
}

}  // namespace

void addBoardVerbs(VerbContext& context) {
    Session& session = context.session;
    (void)context.add("up", "Start a board that stays up; later commands talk to it",
                      [&session] { return up(session); });
    (void)context.add("down", "Switch it off; what is not saved is lost", [&session] { return down(session); });
    (void)context.add("status", "Tell whether a board is up", [&session] { return status(session); });
    (void)context.add("version", "Tell the version", [&session] {
        tell(session, {{"version", kVersion}}, std::string("quorvel-wifi ") + kVersion);
        return kDone;
    });
}

}  // namespace quorvel::console
