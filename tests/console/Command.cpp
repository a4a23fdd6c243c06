#include "tests/console/Command.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace quorvel::console_test {
namespace {

struct Pipe {
    Pipe() {
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    }
    std::array<int, 2> ends{};
};

// Reads what has come. Returns false at the end.
bool take(int descriptor, std::string& text) {
    std::array<char, 65536> buffer{};
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count > 0) text.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
}

void collect(Outcome& outcome, int out, int error, pid_t process) {
    const auto deadline = std::chrono::steady_clock::now() + kLongest;
    std::array<pollfd, 2> waiting{{{out, POLLIN, 0}, {error, POLLIN, 0}}};
    while (waiting[0].fd >= 0 || waiting[1].fd >= 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            (void)kill(process, SIGKILL);
            return;
        }
        if (poll(waiting.data(), waiting.size(), 1000) <= 0) continue;
        if (waiting[0].revents != 0 && !take(out, outcome.out)) waiting[0].fd = -1;
        if (waiting[1].revents != 0 && !take(error, outcome.error)) waiting[1].fd = -1;
    }
}

}  // namespace

Console::Console() {
    std::string name = (std::filesystem::temp_directory_path() / "quorvel-console-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    state_ = name;
}

Console::~Console() {
    if (std::filesystem::exists(state_ + "/console.socket")) (void)run({"down"});
    std::error_code ignored;
    std::filesystem::remove_all(state_, ignored);
}

Outcome Console::run(std::vector<std::string> words, const std::string& input) const {
    return runOn(state_, std::move(words), input);
}

Outcome Console::runOn(const std::string& state, std::vector<std::string> words, const std::string& input) {
    words.insert(words.begin(), {QUORVEL_CONSOLE, "--state", state});
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const Pipe in;
    const Pipe out;
    const Pipe error;
    const pid_t process = fork();
    if (process == 0) {
        (void)dup2(in.ends[0], STDIN_FILENO);
        (void)dup2(out.ends[1], STDOUT_FILENO);
        (void)dup2(error.ends[1], STDERR_FILENO);
        (void)execv(arguments.front(), arguments.data());
        _exit(127);
    }
    (void)close(in.ends[0]);
    (void)close(out.ends[1]);
    (void)close(error.ends[1]);
    (void)!write(in.ends[1], input.data(), input.size());
    (void)close(in.ends[1]);
    Outcome outcome;
    collect(outcome, out.ends[0], error.ends[0], process);
    (void)close(out.ends[0]);
    (void)close(error.ends[0]);
    int status = 0;
    (void)waitpid(process, &status, 0);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

const std::string& whyNoBoard() {
    static const std::string why = [] {
        const Console console;
        const Outcome outcome = console.run({"get", "Device.WiFi.RadioNumberOfEntries"});
        // Only a kernel that forbids namespaces is an excuse: boards come up then, but each command says so.
        return outcome.error.find("--sandbox namespaces") == std::string::npos ? std::string() : outcome.error;
    }();
    return why;
}

}  // namespace quorvel::console_test
