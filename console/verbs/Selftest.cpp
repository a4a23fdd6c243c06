// selftest: the conformance check of a built plug-in, in a process of its own.
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>

#include "console/verbs/Verbs.h"

namespace quorvel::console {
namespace {

std::vector<std::string> selftestCommand(const Options& options) {
    const std::string programs = programFolder(options);
    std::vector<std::string> command;
    std::istringstream emulator(options.emulator);
    for (std::string word; emulator >> word;)
        command.push_back(word);
    command.push_back(programs + "/bin/quorvel-wifi-selftest");
    if (options.json) command.emplace_back("--json");
    if (options.plain) command.emplace_back("--plain");
    if (options.noColor) command.emplace_back("--no-color");
    command.push_back(options.plugin.empty() ? programs + "/lib/libquorvel_wifi.so"
                                             : std::filesystem::absolute(options.plugin).string());
    return command;
}

int selftest(const Session& session) {
    std::vector<std::string> command = selftestCommand(session.options);
    if (!std::filesystem::exists(command.back())) throw GatewayError("there is no plug-in " + command.back());
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& word : command)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::cout << std::flush;
    const pid_t process = fork();
    if (process < 0) throw GatewayError(std::string("cannot start a process: ") + std::strerror(errno));
    if (process == 0) {
        (void)execvp(arguments.front(), arguments.data());
        std::cerr << "quorvel-wifi: cannot start " << arguments.front() << ": " << std::strerror(errno) << '\n';
        _exit(kFailed);
    }
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFEXITED(status)) return WEXITSTATUS(status) == 0 ? kDone : kFailed;
    throw GatewayError("the conformance check was ended by signal " + std::to_string(WTERMSIG(status)) +
                       " before it could report");
}

}  // namespace

void addSelftestVerb(VerbContext& context) {
    Session& session = context.session;
    (void)context.add(kManyVerbs, "selftest", "Check a built plug-in (--plugin) against its interface",
                      "selftest\nselftest --plugin libquorvel_wifi.so", [&session] { return selftest(session); });
}

}  // namespace quorvel::console
