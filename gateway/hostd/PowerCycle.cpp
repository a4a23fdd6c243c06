#include "gateway/hostd/PowerCycle.h"

#include <fcntl.h>
#include <quorvel.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <optional>

#include "gateway/hostd/protocol/Codec.h"

namespace quorvel::hostd {
namespace {

// Arguments of one life only, each with its value.
constexpr std::array<const char*, 3> kOfOneLife{"--report", "--boots", "--cause"};

void unblockSignals() {
    sigset_t all;
    (void)sigfillset(&all);
    (void)sigprocmask(SIG_UNBLOCK, &all, nullptr);  // cannot fail with valid arguments
}

}  // namespace

PowerCycle::PowerCycle(std::vector<std::string> arguments, std::vector<std::string> emulator)
    : arguments_(std::move(arguments)), emulator_(std::move(emulator)) {
    if (pipe2(ends_, O_CLOEXEC | O_NONBLOCK) != 0) ends_[0] = ends_[1] = -1;  // then the cause gets lost
}

PowerCycle::~PowerCycle() {
    for (const int end : ends_)
        (void)close(end);
}

void PowerCycle::leave(const protocol::Boot& boot) const {
    const std::string text = protocol::encode(boot);
    (void)!write(ends_[1], text.data(), text.size());  // without it the cause gets lost
}

void PowerCycle::startAgain(int status) const {
    if (status != kPowerCycleStatus) return;
    std::array<char, 4096> text{};
    const ssize_t length = read(ends_[0], text.data(), text.size());
    protocol::Boot boot;
    const std::string_view left(text.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    (void)protocol::decode(protocol::Json::parse(left, nullptr, false), boot);  // without it, a life without a cause

    std::vector<std::string> command = emulator_;
    for (std::size_t i = 0; i < arguments_.size(); ++i) {
        if (std::find(kOfOneLife.begin(), kOfOneLife.end(), arguments_[i]) != kOfOneLife.end()) {
            ++i;
        } else {
            command.push_back(arguments_[i]);
        }
    }
    command.insert(command.end(), {"--boots", std::to_string(boot.number), "--cause", boot.cause});
    std::vector<char*> words;
    for (std::string& word : command)
        words.push_back(word.data());
    words.push_back(nullptr);
    unblockSignals();
    execvp(words.front(), words.data());
}

std::string savedConfiguration() {
    SpawnInfo info{};
    if (QuorvelUtilGetSpawnInfoFromCfg("Device.WiFi.Daemon", &info) != 0) return "";
    const std::string arguments(info.arguments, strnlen(info.arguments, sizeof info.arguments));
    constexpr std::string_view kStore = "-c";
    return arguments.starts_with(kStore) ? arguments.substr(kStore.size()) : "";
}

}  // namespace quorvel::hostd
