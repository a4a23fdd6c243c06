// up, down, status, version: the board itself.
#include <filesystem>
#include <iostream>
#include <memory>

#include "console/commandline/NearestWord.h"
#include "console/session/Faults.h"
#include "console/session/ProgramName.h"
#include "console/session/Version.h"
#include "console/terminal/Progress.h"
#include "console/verbs/Verbs.h"
#include "console/verbs/Web.h"
#include "gateway/launch/UspAgent.h"

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

std::string nameOf(const Session& session) {
    return std::filesystem::path(session.options.board).stem();
}

struct UpWishes {
    launch::UspOptions usp;
    bool web = false;
    WebWishes page;
};

// The agent is checked before the board starts, so that a mistake costs nothing.
std::string warnOf(const Session& session, const launch::UspOptions& usp) {
    const std::string idle = usp.firstIdle();
    if (!idle.empty()) throw CLI::ValidationError(idle, "needs --usp URL or --usp-config FILE");
    return usp.any() ? launch::checkUsp(session.options, usp) : "";
}

int start(const Session& session, const launch::UspOptions& usp) {
    const std::string warnings = warnOf(session, usp);
    if (!warnings.empty()) std::cerr << warnings << '\n';
    const std::string state = stateFolder(session.options);
    const std::string where = " (state in " + state + ")";
    const bool running = Gateway::findRunning(session.options) != nullptr;
    if (running) session.refuseLateRecording();
    std::string endpoint;
    {
        Progress progress(session.errorStyle());
        progress.say("starting the board " + session.options.board + " ...");
        // People live in real time.
        Options options = session.options;
        options.realTime = true;
        if (!running) {
            const std::string notice = Gateway::startInBackground(options);
            progress.clear();
            if (!notice.empty()) std::cerr << "quorvel-wifi: " << notice << '\n';
        }
        if (usp.any()) endpoint = launch::startUsp(session.options, usp);
    }
    Json result = {{"up", true}, {"state", state}};
    std::string text = "the board " + nameOf(session) + " is up" + (running ? " already" : "") + where + "; " +
                       session.commandFor("down") + " ends it";
    if (usp.any()) {
        result["uspEndpoint"] = endpoint;
        text += "\nUSP endpoint " + endpoint + "; " + session.commandFor("usp status") + " shows its transports";
    }
    tell(session, result, text);
    return kDone;
}

int up(const Session& session, const UpWishes& wishes) {
    const int status = start(session, wishes.usp);
    return status != kDone || !wishes.web ? status : servePage(session, wishes.page);
}

int down(const Session& session) {
    auto running = Gateway::findRunning(session.options);
    const std::string state = stateFolder(session.options);
    if (running == nullptr) {
        tell(session, {{"up", false}, {"state", state}}, "no board is up (state in " + state + ")");
        return kDone;
    }
    Progress progress(session.errorStyle());
    progress.say("switching the board off ...");
    Gateway::stop(std::move(running), session.options);
    progress.clear();
    tell(session, {{"up", false}, {"state", state}}, "the board " + nameOf(session) + " is down");
    return kDone;
}

// Names the other boards that are up, for a user who has given another --state before.
std::string othersText(const Session& session, const std::vector<std::string>& others) {
    if (others.empty()) return "";
    return "\nalso up: " + listed(others) + " (" + programName(session.nested) + (session.nested ? "" : " ") +
           "status --board NAME)";
}

int status(Session& session) {
    const std::string state = stateFolder(session.options);
    std::unique_ptr<Gateway> found;
    // A shell's or a batch's own board is not for others.
    const bool own = session.hasGateway() && !session.gateway().inBackground();
    if (!own) found = Gateway::findRunning(session.options);
    const std::vector<std::string> others =
        session.options.state.empty() ? Gateway::othersRunning(session.options) : std::vector<std::string>{};
    if (!own && found == nullptr) {
        tell(session, {{"up", false}, {"state", state}, {"others", others}},
             "no board " + nameOf(session) + " is up (state in " + state + "); " + session.commandFor("up") +
                 " starts one" + othersText(session, others));
        return kDone;
    }
    protocol::BoardFacts board;
    Gateway& gateway = own ? session.gateway() : *found;
    const std::vector<Fault> faults = gateway.client().ask(protocol::ReadBoard{}, [&board](const Part& part) {
        if (part.board) board = *part.board;
    });
    if (!faults.empty()) return reportFaults(session, faults);
    tell(session, {{"up", true}, {"state", state}, {"board", protocol::toJson(board)}, {"others", others}},
         "the board " + textOf(board.name) + " is up" + (own ? " as long as this session lasts" : "") + " (state in " +
             state + "); the WLAN manager is " + board.manager.state + othersText(session, others));
    return kDone;
}

}  // namespace

void addUspOptions(CLI::App* verb, launch::UspOptions& usp) {
    verb->add_option("--usp", usp.urls, "Start a USP agent that meets its controller there: mqtt:, ws:, ws-listen:")
        ->type_name("URL");
    verb->add_option("--usp-endpoint", usp.endpoint, "The agent's Endpoint ID")->type_name("ID");
    verb->add_option("--usp-controller", usp.controller, "The controller's Endpoint ID")->type_name("ID");
    verb->add_option("--usp-topic", usp.topic, "Where the agent listens")->type_name("TOPIC");
    verb->add_option("--usp-controller-topic", usp.controllerTopic, "Where the controller listens")->type_name("TOPIC");
    verb->add_option("--usp-config", usp.configFile, "A configuration of the agent as JSON")->type_name("FILE");
    verb->add_option("--usp-password-file", usp.passwordFile, "A file with the brokers' password")->type_name("FILE");
}

void addBoardVerbs(VerbContext& context) {
    Session& session = context.session;
    auto wishes = std::make_shared<UpWishes>();
    launch::UspOptions* const usp = &wishes->usp;
    CLI::App* const verb = context.add(kBoardVerbs, "up", "Start a board that stays up; later commands talk to it",
                                       "up\nup --board dual-band\nup --web\nup --usp mqtt://127.0.0.1",
                                       [&session, wishes] { return up(session, *wishes); });
    addUspOptions(verb, *usp);
    CLI::Option* const web = verb->add_flag("--web", wishes->web, "Serve its live page until interrupted");
    for (CLI::Option* const option : addWebOptions(context, *verb, wishes->page))
        option->needs(web);
    (void)context.add(kBoardVerbs, "down", "Switch it off; what is not saved is lost", "down\ndown --board dual-band",
                      [&session] { return down(session); });
    (void)context.add(kBoardVerbs, "status", "Tell whether a board is up, and which", "status",
                      [&session] { return status(session); });
    (void)context.add(kManyVerbs, "version", "Tell the version", "version", [&session] {
        tell(session, {{"version", kVersion}}, std::string("quorvel-wifi ") + kVersion);
        return kDone;
    });
}

}  // namespace quorvel::console
