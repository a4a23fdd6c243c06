#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "gateway/hostd/client/Client.h"
#include "gateway/launch/Options.h"

namespace quorvel::launch {

namespace protocol = hostd::protocol;
using hostd::Client;
using protocol::Fault;
using protocol::Part;

/// The board could not be reached, or was lost: what happened, and what to do next.
using GatewayError = hostd::ConnectionError;

/// A board that is up: one that runs in the background, or one that was booted for this program and goes with it.
class Gateway {
  public:
    /// Finds the background board of this board and state folder, else boots one. Throws GatewayError.
    [[nodiscard]] static std::unique_ptr<Gateway> open(const Options& options);

    /// Returns the background board, or null.
    [[nodiscard]] static std::unique_ptr<Gateway> findRunning(const Options& options);

    /// Returns the names of the state folders, beside the one of these options, whose boards are up in the background.
    [[nodiscard]] static std::vector<std::string> othersRunning(const Options& options);

    /// Boots a board that stays up in the background. Returns its notice. Throws GatewayError.
    static std::string startInBackground(const Options& options);

    /// Switches a background board off and waits until it is. Throws GatewayError when it will not end.
    static void stop(std::unique_ptr<Gateway> gateway, const Options& options);

    /// Switches a board that was booted for this program off as a pulled plug does: no process on it gets to do
    /// anything about it. Only the destructor may be called afterwards.
    void cutPower();

    Gateway(const Gateway&) = delete;
    Gateway& operator=(const Gateway&) = delete;
    ~Gateway();

    [[nodiscard]] Client& client() {
        return *client_;
    }
    /// Tells whether the board's clock runs ahead instead of waiting.
    [[nodiscard]] bool runsAhead() const {
        return runsAhead_;
    }
    [[nodiscard]] bool inBackground() const {
        return process_ <= 0;
    }
    /// Returns the complaint of start-up, or the empty text.
    [[nodiscard]] const std::string& bootTrouble() const {
        return bootTrouble_;
    }

    /// Returns what a board that was booted for this program has to say about its sandbox, or the empty text.
    [[nodiscard]] const std::string& notice() const {
        return notice_;
    }

  private:
    Gateway() = default;

    std::unique_ptr<Client> client_;
    pid_t process_ = -1;
    bool runsAhead_ = false;
    std::string bootTrouble_;
    std::string notice_;
};

/// Returns the state folder of the options.
[[nodiscard]] std::string stateFolder(const Options& options);

/// Returns the folder that holds bin/, lib/ and boards/.
[[nodiscard]] std::string programFolder(const Options& options);

}  // namespace quorvel::launch
