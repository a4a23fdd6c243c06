#pragma once

#include <functional>
#include <string>

#include "gateway/hostd/Clock.h"
#include "gateway/hostd/Plugin.h"
#include "gateway/hostd/Server.h"

namespace quorvel::hostd {

/// The name that the WLAN manager's process goes by.
inline constexpr const char* kManager = "wlmngr2";

/// The WLAN manager and its process, for scenarios in which it dies, hangs and comes back.
class Manager {
  public:
    /// `clock` learns the board's time from the manager's answers. `launched` is called when a new manager answers.
    Manager(const Plugin& plugin, Clock& clock, std::function<void()> launched)
        : plugin_(plugin), clock_(clock), launched_(std::move(launched)) {}

    /// Carries out a control command. The operations daemon.kill, daemon.stop, daemon.continue and daemon.restart are
    /// for the manager's process; all others go to the manager itself. A restart ends a manager that is still there and
    /// launches a new one with the plug-in's own function, as start-up does: call it where the plug-in may be called.
    [[nodiscard]] Controlled control(const protocol::Json& command);

  private:
    [[nodiscard]] static protocol::Json signalProcess(const std::string& operation);
    [[nodiscard]] protocol::Json restart();

    const Plugin& plugin_;
    Clock& clock_;
    std::function<void()> launched_;
};

/// Has the clock learn from the manager's answer to a command about time.
void learnTime(Clock& clock, const protocol::Json& answer);

}  // namespace quorvel::hostd
