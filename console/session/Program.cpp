#include "console/session/Program.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>

#include "gateway/launch/Gateway.h"

namespace quorvel::console {

using launch::GatewayError;

std::vector<std::string> programCommand(const Options& options, const std::string& program) {
    std::vector<std::string> command;
    std::istringstream emulator(options.emulator);
    for (std::string word; emulator >> word;)
        command.push_back(word);
    command.push_back(launch::programFolder(options) + "/bin/" + program);
    return command;
}

std::string pluginFile(const Options& options) {
    std::string file = options.plugin.empty() ? launch::programFolder(options) + "/lib/libquorvel_wifi.so"
                                              : std::filesystem::absolute(options.plugin).string();
    if (!std::filesystem::exists(file)) throw GatewayError("there is no plug-in " + file);
    return file;
}

int runProgram(std::vector<std::string> command) {
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
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    throw GatewayError(std::filesystem::path(command.front()).filename().string() + " was ended by signal " +
                       std::to_string(WTERMSIG(status)) + " before it could report");
}

}  // namespace quorvel::console
