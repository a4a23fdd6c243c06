#include "tests/agent/controller/Rig.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace quorvel::agent_test {
namespace {

std::string makeFolder(const char* name) {
    std::string folder = (std::filesystem::temp_directory_path() / (std::string(name) + "-XXXXXX")).string();
    if (mkdtemp(folder.data()) == nullptr) throw std::runtime_error("cannot make a folder for the test");
    return folder;
}

bool answers(int port) {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const bool connected = connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    (void)close(descriptor);
    return connected;
}

pid_t start(const std::vector<std::string>& command, int output, const std::string& folder) {
    std::vector<std::string> words = command;
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const pid_t process = fork();
    if (process != 0) return process;
    if (!folder.empty() && chdir(folder.c_str()) != 0) _exit(126);
    (void)dup2(output, STDOUT_FILENO);
    (void)dup2(output, STDERR_FILENO);
    (void)execvp(arguments.front(), arguments.data());
    _exit(127);
}

}  // namespace

int freePort() {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    (void)bind(descriptor, reinterpret_cast<sockaddr*>(&address), length);
    (void)getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length);
    (void)close(descriptor);
    return ntohs(address.sin_port);
}

Broker::Broker() : folder_(makeFolder("usp-broker")), port_(freePort()) {
    writeConfiguration("");
    start();
}

void Broker::writeConfiguration(const std::string& lines) const {
    std::ofstream(folder_ + "/conf") << "listener " << port_ << " 127.0.0.1\nallow_anonymous true\n"
                                     << (getuid() == 0 ? "user root\n" : "") << lines;
}

void Broker::configure(const std::string& lines) {
    kill();
    writeConfiguration(lines);
    start();
}

Broker::~Broker() {
    kill();
    std::filesystem::remove_all(folder_);
}

void Broker::start() {
    const int log = open((folder_ + "/log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    // Debian keeps the broker where only administrators look for programs.
    const std::string program = access("/usr/sbin/mosquitto", X_OK) == 0 ? "/usr/sbin/mosquitto" : "mosquitto";
    process_ = agent_test::start({program, "-c", folder_ + "/conf"}, log, "");
    (void)close(log);
    for (int tries = 0; tries < 500 && !answers(port_); ++tries)
        (void)poll(nullptr, 0, 10);
    if (!answers(port_)) throw std::runtime_error("the broker does not start; is the package mosquitto installed?");
}

void Broker::kill() {
    if (process_ <= 0) return;
    (void)::kill(process_, SIGKILL);
    (void)waitpid(process_, nullptr, 0);
    process_ = -1;
}

Board::Outcome runProgram(const std::vector<std::string>& command, const std::string& folder) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    const pid_t process = start(command, ends[1], folder);
    (void)close(ends[1]);
    Board::Outcome outcome;
    std::array<char, 4096> piece{};
    for (ssize_t count = 0; (count = read(ends[0], piece.data(), piece.size())) > 0;)
        outcome.output.append(piece.data(), static_cast<std::size_t>(count));
    (void)close(ends[0]);
    int status = 0;
    (void)waitpid(process, &status, 0);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return outcome;
}

Board::Board() : state_(makeFolder("usp-board")) {}

Board::~Board() {
    (void)run({"down"});
    std::filesystem::remove_all(state_);
}

Board::Outcome Board::run(const std::vector<std::string>& words) const {
    std::vector<std::string> command = {QUORVEL_CONSOLE_PROGRAM, "--state", state_};
    command.insert(command.end(), words.begin(), words.end());
    return runProgram(command);
}

std::string Board::mustRun(const std::vector<std::string>& words) const {
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.status, 0) << outcome.output;
    return outcome.output;
}

pid_t Board::agentProcess(const std::string& stateFolder) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "cmdline", std::ios::binary);
        const std::string line{std::istreambuf_iterator<char>(file), {}};
        if (line.find("quorvel-wifi-agent") != std::string::npos && line.find(stateFolder) != std::string::npos) {
            return static_cast<pid_t>(std::strtol(entry.path().filename().c_str(), nullptr, 10));
        }
    }
    return 0;
}

}  // namespace quorvel::agent_test
