#include "gateway/launch/UspAgent.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <utility>

#include "common/Descriptor.h"
#include "gateway/board/Board.h"

namespace quorvel::launch {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kStartMilliseconds = 10000;
constexpr int kCannotStart = 127;
constexpr int kCannotRun = 1;
constexpr int kLookMilliseconds = 10;
constexpr int kAnswerMilliseconds = 60000;

std::string agentProgram(const Options& options) {
    const std::string program = programFolder(options) + "/bin/quorvel-wifi-agent";
    if (access(program.c_str(), X_OK) == 0) return program;
    throw GatewayError("this build has no USP agent (" + program +
                       " is missing): install the agent's packages (script/common.sh names them) and build again");
}

std::vector<std::string> agentCommand(const Options& options, const UspOptions& usp) {
    board::Options asked;
    asked.board = options.board;
    asked.programFolder = programFolder(options);
    std::vector<std::string> command = {agentProgram(options), "--state", stateFolder(options), "--board",
                                        board::findBoard(asked)};
    const auto add = [&command](const char* name, const std::string& value) {
        if (!value.empty()) command.insert(command.end(), {name, value});
    };
    for (const std::string& url : usp.urls)
        add("--usp", url);
    add("--usp-endpoint", usp.endpoint);
    add("--usp-controller", usp.controller);
    add("--usp-topic", usp.topic);
    add("--usp-controller-topic", usp.controllerTopic);
    add("--usp-config", usp.configFile.empty() ? "" : std::filesystem::absolute(usp.configFile).string());
    add("--usp-password-file", usp.passwordFile.empty() ? "" : std::filesystem::absolute(usp.passwordFile).string());
    return command;
}

// In the new process: never returns.
[[noreturn]] void become(std::vector<std::string>& command) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& word : command)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    (void)execv(arguments.front(), arguments.data());
    _exit(kCannotStart);
}

std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw GatewayError(std::string("cannot make a pipe: ") + strerror(errno));
    return ends;
}

// Reads until the writers have closed their ends, a whole line has come, or time is over.
std::string readLine(int descriptor) {
    std::string text;
    std::array<char, 4096> piece{};
    pollfd entry{descriptor, POLLIN, 0};
    while (text.find('\n') == std::string::npos && poll(&entry, 1, kStartMilliseconds) > 0) {
        const ssize_t count = read(descriptor, piece.data(), piece.size());
        if (count <= 0) break;
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
    return text.substr(0, text.find('\n'));
}

std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 4096> piece{};
    for (ssize_t count = 0; (count = read(descriptor, piece.data(), piece.size())) > 0;)
        text.append(piece.data(), static_cast<std::size_t>(count));
    return text;
}

std::string withoutEnd(std::string text) {
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

}  // namespace

std::string UspOptions::firstIdle() const {
    if (any()) return "";
    const std::array<std::pair<const char*, const std::string*>, 5> others = {
        {{"--usp-endpoint", &endpoint},
         {"--usp-controller", &controller},
         {"--usp-topic", &topic},
         {"--usp-controller-topic", &controllerTopic},
         {"--usp-password-file", &passwordFile}}};
    for (const auto& [name, value] : others) {
        if (!value->empty()) return name;
    }
    return "";
}

std::string checkUsp(const Options& options, const UspOptions& usp) {
    std::vector<std::string> command = agentCommand(options, usp);
    command.emplace_back("--check");
    const std::array<int, 2> ends = makePipe();
    const pid_t process = fork();
    if (process == 0) {
        (void)dup2(ends[1], STDOUT_FILENO);
        (void)dup2(ends[1], STDERR_FILENO);
        become(command);
    }
    (void)close(ends[1]);
    const common::Descriptor reader(ends[0]);
    const std::string text = withoutEnd(readAll(reader.get()));
    int status = 0;
    (void)waitpid(process, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw GatewayError(text.empty() ? "the USP agent cannot be started" : text);
    }
    return text;
}

std::string startUsp(const Options& options, const UspOptions& usp) {
    std::vector<std::string> command = agentCommand(options, usp);
    const std::array<int, 2> ends = makePipe();
    command.insert(command.end(), {"--report", std::to_string(ends[1])});
    const std::string folder = stateFolder(options) + "/usp";
    (void)mkdir(folder.c_str(), 0700);  // the agent says when it is not usable
    const pid_t process = fork();
    if (process == 0) {
        (void)setsid();
        const int nothing = open("/dev/null", O_RDWR);
        const int log = open((folder + "/log").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        (void)dup2(nothing, STDIN_FILENO);
        (void)dup2(nothing, STDOUT_FILENO);
        (void)dup2(log < 0 ? nothing : log, STDERR_FILENO);
        (void)fcntl(ends[1], F_SETFD, 0);
        become(command);
    }
    (void)close(ends[1]);
    const common::Descriptor reader(ends[0]);
    const Json report = Json::parse(readLine(reader.get()), nullptr, false);
    if (report.is_object() && report.contains("ready")) return report.value("endpoint", "");
    if (report.is_object() && report.contains("error"))
        throw GatewayError("the USP agent: " + report.value("error", ""));
    throw GatewayError("the USP agent did not start; " + folder + "/log may say why");
}

int runUspProgram(const Options& options, const std::vector<std::string>& words) {
    std::vector<std::string> command = {agentProgram(options)};
    command.insert(command.end(), words.begin(), words.end());
    const pid_t process = fork();
    if (process == 0) become(command);
    int status = 0;
    (void)waitpid(process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : kCannotRun;
}

void awaitUspEnd(const std::string& stateFolder, int milliseconds) {
    // The agent locks this file as long as it lives.
    const common::Descriptor lock(open((stateFolder + "/usp/lock").c_str(), O_RDONLY | O_CLOEXEC));
    if (!lock) return;
    for (int waited = 0; waited < milliseconds; waited += kLookMilliseconds) {
        if (flock(lock.get(), LOCK_SH | LOCK_NB) == 0) return;
        (void)poll(nullptr, 0, kLookMilliseconds);
    }
}

UspScript::UspScript(const Options& options, std::uint64_t seed, std::int64_t start) {
    std::vector<std::string> command = agentCommand(options, {});
    command.insert(command.end(), {"scripted", "--seed", std::to_string(seed), "--start", std::to_string(start)});
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw GatewayError(std::string("cannot make a socket: ") + strerror(errno));
    socket_ = common::Descriptor(ends[0]);
    common::Descriptor theirs(ends[1]);
    process_ = fork();
    if (process_ == 0) {
        (void)setpgid(0, 0);  // an interrupt from the terminal is for the player
        (void)dup2(ends[1], STDIN_FILENO);
        (void)dup2(ends[1], STDOUT_FILENO);
        (void)dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
        become(command);
    }
    if (process_ < 0) throw GatewayError("cannot start a process");
    theirs.reset();
    const Json report = answer();
    if (!report.contains("ready")) throw GatewayError("the USP agent: " + report.value("error", report.dump()));
}

UspScript::~UspScript() {
    socket_.reset();
    if (process_ <= 0) return;
    // It has nothing to finish.
    (void)kill(process_, SIGKILL);
    (void)waitpid(process_, nullptr, 0);
}

Json UspScript::ask(const Json& command) {
    const std::string line = command.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
    for (std::size_t sent = 0; sent < line.size();) {
        const ssize_t count = send(socket_.get(), line.data() + sent, line.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) throw GatewayError("the scenario's USP agent has ended");
        sent += static_cast<std::size_t>(count);
    }
    return answer();
}

Json UspScript::answer() {
    std::array<char, 16384> piece{};
    pollfd entry{socket_.get(), POLLIN, 0};
    std::size_t end = 0;
    while ((end = received_.find('\n')) == std::string::npos) {
        if (poll(&entry, 1, kAnswerMilliseconds) <= 0) throw GatewayError("the scenario's USP agent does not answer");
        const ssize_t count = read(socket_.get(), piece.data(), piece.size());
        if (count <= 0) throw GatewayError("the scenario's USP agent has ended");
        received_.append(piece.data(), static_cast<std::size_t>(count));
    }
    const Json parsed = Json::parse(received_.substr(0, end), nullptr, false);
    received_.erase(0, end + 1);
    if (!parsed.is_object()) throw GatewayError("the scenario's USP agent says something that is not JSON");
    return parsed;
}

}  // namespace quorvel::launch
