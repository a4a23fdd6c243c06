#include "gateway/launch/Gateway.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <vector>

#include "common/Descriptor.h"
#include "gateway/board/Board.h"
#include "gateway/board/StateFolder.h"
#include "gateway/hostd/client/BoardSocket.h"
#include "gateway/launch/UspAgent.h"

namespace quorvel::launch {

using common::Descriptor;

namespace {

constexpr const char* kProgram = "quorvel-wifi";
constexpr int kBootMilliseconds = 30000;
constexpr int kDownMilliseconds = 15000;

board::Options boardOptions(const Options& options) {
    board::Options asked;
    asked.board = options.board;
    asked.stateFolder = options.state;
    asked.programFolder = programFolder(options);
    asked.plugin = options.plugin;
    asked.configuration = options.configuration;
    return asked;
}

std::vector<std::string> words(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> found;
    for (std::string word; in >> word;)
        found.push_back(word);
    return found;
}

std::vector<std::string> hostCommand(const Options& options) {
    const std::string programs = programFolder(options);
    std::vector<std::string> command = words(options.emulator);
    command.push_back(programs + "/bin/quorvel-wifi-host");
    const auto add = [&command](const char* name, const std::string& value) {
        if (!value.empty()) command.insert(command.end(), {name, value});
    };
    add("--programs", programs);
    add("--board", options.board);
    add("--state", options.state.empty() ? "" : std::filesystem::absolute(options.state).string());
    add("--plugin", options.plugin.empty() ? "" : std::filesystem::absolute(options.plugin).string());
    add("--configuration", options.configuration);
    add("--sandbox", options.sandbox);
    add("--record", options.record.empty() ? "" : std::filesystem::absolute(options.record).string());
    if (options.logLevel >= 0) add("--log-level", std::to_string(options.logLevel));
    if (!options.logFile.empty()) {
        add("--writable", std::filesystem::absolute(options.logFile).parent_path().string());
    }
    for (const std::string& word : words(options.emulator))
        command.push_back("--emulator=" + word);
    return command;
}

// Start-up of the plug-in prints on both outputs; they are the log's unless somebody asks for it.
void redirectOutput(const Options& options) {
    int target = -1;
    if (!options.logFile.empty()) {
        target = open(options.logFile.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    } else if (options.logLevel < 0) {
        target = open("/dev/null", O_WRONLY);
    }
    (void)dup2(target < 0 ? STDERR_FILENO : target, STDOUT_FILENO);
    if (target >= 0) (void)dup2(target, STDERR_FILENO);
    setenv("QUORVEL_LOG_FILE", "stderr", 1);
}

pid_t startHost(const Options& options, std::vector<std::string> command, std::vector<int> kept, bool background) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& word : command)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const pid_t process = fork();
    if (process != 0) return process;
    // An interrupt from the terminal is for the console, which then switches the board off.
    (void)(background ? setsid() : setpgid(0, 0));
    const int nothing = open("/dev/null", O_RDONLY);
    (void)dup2(nothing, STDIN_FILENO);
    redirectOutput(options);
    for (const int descriptor : kept)
        (void)fcntl(descriptor, F_SETFD, 0);
    (void)execvp(arguments.front(), arguments.data());
    const std::string trouble = protocol::reportLine(
        {false, 0, "", std::string("cannot start ") + arguments.front() + ": " + std::strerror(errno), ""});
    (void)!write(kept.back(), trouble.data(), trouble.size());  // the caller may be gone
    _exit(127);
}

// Waits for the report that the board is up.
protocol::BootReport awaitReport(Client& client) {
    std::string text;
    for (int waited = 0; !client.line(text, 1000);) {
        waited += 1000;
        if (waited >= kBootMilliseconds) throw GatewayError("the board did not come up within 30 seconds");
    }
    const auto report = protocol::parseReport(text);
    if (report && !report->error.empty()) throw GatewayError(report->error);
    if (!report || !report->ready) throw GatewayError("the host process says \"" + text + "\"");
    return *report;
}

std::string troubleOf(const protocol::BootReport& report) {
    if (report.result == 0) return "";
    return "the plug-in's start-up returned " + std::to_string(report.result) + " (" + report.log + ")";
}

void makePair(int (&ends)[2]) {
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        throw GatewayError(std::string("cannot make a socket: ") + std::strerror(errno));
    }
}

// Listens in the state folder, which is made when it is missing.
Descriptor listenIn(const std::string& folder) {
    std::filesystem::create_directories(std::filesystem::path(folder).parent_path());
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        throw GatewayError("cannot create the state folder " + folder + ": " + std::strerror(errno));
    }
    std::string problem;
    Descriptor listening = hostd::listenForClients(folder, problem);
    if (!listening) throw GatewayError("cannot listen in the state folder " + folder + ": " + problem);
    return listening;
}

// Waits until the processes outside a board have cleaned up after it: the lock goes with the last of them.
void awaitFree(const std::string& folder) {
    for (int waited = 0; std::filesystem::exists(folder + "/.lock"); waited += 1000) {
        try {
            (void)board::takeStateFolder(folder);  // waits for about a second
            return;
        } catch (const board::BoardError& error) {
            if (waited >= kDownMilliseconds) throw GatewayError(error.what());
        }
    }
}

}  // namespace

std::string stateFolder(const Options& options) {
    return std::filesystem::absolute(board::findStateFolder(boardOptions(options))).string();
}

std::string programFolder(const Options& options) {
    if (!options.programs.empty()) return std::filesystem::absolute(options.programs).string();
    std::array<char, 4096> path{};
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    const std::filesystem::path program(std::string(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0));
    return program.parent_path().parent_path().string();
}

std::unique_ptr<Gateway> Gateway::findRunning(const Options& options) {
    const std::string folder = stateFolder(options);
    board::refuseForeignFolder(folder);
    Descriptor descriptor = hostd::connectToBoard(folder);
    if (!descriptor) return nullptr;
    std::unique_ptr<Gateway> gateway(new Gateway);
    gateway->client_ = std::make_unique<Client>(descriptor.release(), kProgram);
    return gateway;
}

std::vector<std::string> Gateway::othersRunning(const Options& options) {
    std::vector<std::string> names;
    const std::filesystem::path own = stateFolder(options);
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(own.parent_path(), ignored)) {
        if (entry.path() == own || !std::filesystem::exists(entry.path() / hostd::kBoardSocket, ignored)) continue;
        if (hostd::connectToBoard(entry.path())) names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::unique_ptr<Gateway> Gateway::open(const Options& options) {
    if (auto running = findRunning(options)) return running;
    int ends[2];
    makePair(ends);
    Descriptor theirs(ends[1]);
    std::unique_ptr<Gateway> gateway(new Gateway);
    gateway->client_ = std::make_unique<Client>(ends[0], kProgram);
    std::vector<std::string> command = hostCommand(options);
    command.insert(command.end(), {"--connected", std::to_string(theirs.get())});
    if (options.realTime) command.emplace_back("--real-time");
    std::vector<int> kept = {theirs.get()};
    Descriptor listening;
    if (options.takesClients) {
        listening = listenIn(stateFolder(options));
        command.insert(command.end(), {"--listening", std::to_string(listening.get())});
        kept.insert(kept.begin(), listening.get());
    }
    gateway->runsAhead_ = !options.realTime;
    gateway->process_ = startHost(options, command, kept, false);
    listening.reset();
    if (gateway->process_ < 0) throw GatewayError("cannot start a process");
    theirs.reset();
    const protocol::BootReport report = awaitReport(*gateway->client_);
    gateway->bootTrouble_ = troubleOf(report);
    gateway->notice_ = report.notice;
    return gateway;
}

std::string Gateway::startInBackground(const Options& options) {
    const std::string folder = stateFolder(options);
    const Descriptor listening = listenIn(folder);
    int ends[2];
    makePair(ends);
    Descriptor theirs(ends[1]);
    Client report(ends[0], kProgram);
    std::vector<std::string> command = hostCommand(options);
    command.insert(command.end(),
                   {"--listening", std::to_string(listening.get()), "--report", std::to_string(theirs.get())});
    if (options.realTime) command.emplace_back("--real-time");
    const pid_t process = startHost(options, command, {listening.get(), theirs.get()}, true);
    if (process < 0) throw GatewayError("cannot start a process");
    theirs.reset();
    try {
        return awaitReport(report).notice;
    } catch (const GatewayError&) {
        hostd::removeBoardSocket(folder);
        (void)waitpid(process, nullptr, WNOHANG);
        throw;
    }
}

void Gateway::stop(std::unique_ptr<Gateway> gateway, const Options& options) {
    (void)gateway->client_->ask(protocol::Shutdown{});  // there is nothing to go wrong with it
    // The connection ends with the host process.
    if (!gateway->client_->awaitEnd(kDownMilliseconds)) throw GatewayError("the board does not switch off");
    const std::string folder = stateFolder(options);
    awaitFree(folder);
    hostd::removeBoardSocket(folder);
    // The next agent takes the place of this one.
    awaitUspEnd(folder, kDownMilliseconds);
}

void Gateway::cutPower() {
    if (process_ <= 0) return;
    (void)kill(process_, SIGKILL);
    (void)waitpid(process_, nullptr, 0);
    process_ = -1;
    // The last process to go holds the connection; the state folder is free then.
    if (!client_->awaitEnd(kDownMilliseconds)) throw GatewayError("the board does not switch off");
}

Gateway::~Gateway() {
    client_.reset();
    if (process_ <= 0) return;
    // The host process ends with its connection; one that does not is ended, and its board with it.
    for (int waited = 0; waitpid(process_, nullptr, WNOHANG) == 0; waited += 5) {
        if (waited >= kDownMilliseconds) {
            (void)kill(process_, SIGKILL);
            (void)waitpid(process_, nullptr, 0);
            return;
        }
        (void)poll(nullptr, 0, 5);
    }
}

}  // namespace quorvel::launch
