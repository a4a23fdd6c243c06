#pragma once

#include <functional>
#include <string>

#include "gateway/hostd/Plugin.h"

namespace quorvel::hostd {

/// The name that the WLAN manager's process goes by.
inline constexpr const char* kManager = "wlmngr2";

/// The WLAN manager's process, for scenarios in which it dies, hangs and comes back.
class Manager {
  public:
    /// `launched` is called when a new manager answers.
    Manager(const Plugin& plugin, std::function<void()> launched) : plugin_(plugin), launched_(std::move(launched)) {}

    /// Carries out a control request and returns its answer. The requests daemon.kill, daemon.stop, daemon.continue and
    /// daemon.restart are for the manager's process; all others go to the manager itself. A restart ends what is left
    /// of it and launches a new one with the plug-in's own function, as start-up does.
    [[nodiscard]] std::string control(const std::string& command);

  private:
    [[nodiscard]] std::string signalProcess(const std::string& op);
    [[nodiscard]] std::string restart();

    const Plugin& plugin_;
    std::function<void()> launched_;
};

}  // namespace quorvel::hostd
