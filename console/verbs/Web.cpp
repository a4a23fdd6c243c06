// web: the live page of a board, served by a program of its own.
#include "console/verbs/Web.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

#include "console/terminal/Interrupt.h"
#include "console/terminal/Progress.h"
#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

constexpr int kCannotStart = 127;

// Waits for the program. An interrupt from the keyboard reaches it, too; a request to end is handed on.
int await(pid_t program) {
    int status = 0;
    bool passedOn = false;
    while (waitpid(program, &status, 0) < 0) {
        if (errno != EINTR) return kFailed;
        if (!Interrupt::happened() || passedOn) continue;
        (void)kill(program, SIGTERM);  // fails when it has ended already
        passedOn = true;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : kFailed;
}

std::string serverOf(const Session& session) {
    const std::string server = programFolder(session.options) + "/bin/quorvel-wifi-web";
    if (std::filesystem::exists(server)) return server;
    throw GatewayError("there is no " + server +
                       ": this build has no live page; configure it with QUORVEL_BUILD_WEB on");
}

int web(Session& session, const WebWishes& wishes) {
    (void)serverOf(session);  // no board is started in vain
    if (Gateway::findRunning(session.options) != nullptr) {
        session.refuseLateRecording();
        return servePage(session, wishes);
    }
    {
        Progress progress(session.errorStyle());
        progress.say("starting the board " + session.options.board + " ...");
        Options options = session.options;
        options.realTime = true;
        Gateway::startInBackground(options);
    }
    const int status = servePage(session, wishes);
    // The board was started for the page.
    if (auto running = Gateway::findRunning(session.options)) Gateway::stop(std::move(running), session.options);
    return status;
}

}  // namespace

int servePage(const Session& session, const WebWishes& wishes) {
    const std::string server = serverOf(session);
    const std::string share = programFolder(session.options) + "/share/quorvel-wifi/web";
    std::vector<std::string> words{server,     "--state",    stateFolder(session.options), "--share", share,
                                   "--listen", wishes.listen};
    if (!wishes.tokenFile.empty()) words.insert(words.end(), {"--token-file", wishes.tokenFile});
    for (const std::string& host : wishes.hosts)
        words.insert(words.end(), {"--allow-host", host});
    if (wishes.stationMetrics) words.emplace_back("--metrics-stations");
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const Interrupt interrupt;
    const pid_t program = fork();
    if (program < 0) throw GatewayError(std::string("cannot start ") + server + ": " + std::strerror(errno));
    if (program == 0) {
        (void)execv(arguments.front(), arguments.data());
        _exit(kCannotStart);
    }
    return await(program);
}

std::vector<CLI::Option*> addWebOptions(VerbContext& context, CLI::App& verb, WebWishes& wishes) {
    return {
        verb.add_option("--listen", wishes.listen, "Where to listen; any address but the loopback needs --token-file")
            ->type_name("HOST:PORT"),
        context
            .take(&verb, ArgumentKind::kFile, "--token-file", wishes.tokenFile,
                  "File with the token that requests must carry")
            ->type_name("FILE"),
        verb.add_option("--allow-host", wishes.hosts, "Answer requests to this name, too")->type_name("NAME"),
        verb.add_flag("--metrics-stations", wishes.stationMetrics, "Metrics for each station, with its MAC address")};
}

void addWebVerb(VerbContext& context) {
    Session& session = context.session;
    auto wishes = std::make_shared<WebWishes>();
    CLI::App* const verb = context.add(kBoardVerbs, "web", "Serve the live page of the board; starts one if none is up",
                                       "web\nweb --listen 127.0.0.1:9000\nweb --listen 0.0.0.0:8181 --token-file token",
                                       [&session, wishes] { return web(session, *wishes); });
    (void)addWebOptions(context, *verb, *wishes);
}

}  // namespace quorvel::console
