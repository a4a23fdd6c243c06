#include "tests/console/Terminal.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include "tests/console/Command.h"

namespace quorvel::console_test {
Terminal::Terminal(std::vector<std::string> words, const std::map<std::string, std::string>& environment,
                   unsigned short columns) {
    words.insert(words.begin(), QUORVEL_CONSOLE);
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    winsize size{40, columns, 0, 0};
    process_ = forkpty(&descriptor_, nullptr, nullptr, &size);
    if (process_ < 0) throw std::runtime_error("no terminal");
    if (process_ != 0) return;
    unsetenv("NO_COLOR");
    unsetenv("LC_ALL");
    unsetenv("LC_CTYPE");
    setenv("LANG", "C.UTF-8", 1);
    setenv("TERM", "xterm", 1);
    for (const auto& [name, value] : environment)
        setenv(name.c_str(), value.c_str(), 1);
    (void)execv(arguments.front(), arguments.data());
    _exit(127);
}

Terminal::~Terminal() {
    (void)close(descriptor_);
    if (status_ != -1000) return;
    (void)kill(process_, SIGKILL);
    (void)waitpid(process_, nullptr, 0);
}

void Terminal::type(const std::string& text) const {
    (void)!write(descriptor_, text.data(), text.size());
}

bool Terminal::take() {
    pollfd waiting{descriptor_, POLLIN, 0};
    if (poll(&waiting, 1, 1000) == 0) return true;
    std::array<char, 4096> buffer{};
    const ssize_t count = read(descriptor_, buffer.data(), buffer.size());
    if (count <= 0) return false;
    shown_.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
}

std::string Terminal::until(const std::string& text) {
    const auto deadline = std::chrono::steady_clock::now() + kLongest;
    std::size_t found = std::string::npos;
    while ((found = shown_.find(text)) == std::string::npos) {
        if (std::chrono::steady_clock::now() > deadline || !take()) break;
    }
    if (found == std::string::npos) ADD_FAILURE() << "\"" << text << "\" was never shown, but:\n" << shown_;
    const std::size_t end = found == std::string::npos ? shown_.size() : found + text.size();
    const std::string seen = shown_.substr(0, end);
    shown_.erase(0, end);
    return seen;
}

std::string Terminal::rest() {
    const auto deadline = std::chrono::steady_clock::now() + kLongest;
    while (std::chrono::steady_clock::now() < deadline && take()) {
    }
    if (std::chrono::steady_clock::now() >= deadline) (void)kill(process_, SIGKILL);
    int status = 0;
    (void)waitpid(process_, &status, 0);
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return shown_;
}

}  // namespace quorvel::console_test
