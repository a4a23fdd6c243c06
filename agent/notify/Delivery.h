#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>

#include "agent/Context.h"
#include "agent/Timers.h"
#include "agent/notify/Directory.h"

namespace usp {
class Notify;
}

namespace quorvel::agent {

/// Delivers Notify Messages: once, or again and again until the controller responds.
class Delivery {
  public:
    /// Sends a Message to a controller; false when no way to it is open. `message` is the encoded Msg.
    using Send = std::function<bool(const ControllerEntry& controller, const std::string& message)>;

    Delivery(Context& context, Timers& timers, const Directory& directory, Send send, std::function<double()> random)
        : context_(context),
          timers_(timers),
          directory_(directory),
          send_(std::move(send)),
          random_(std::move(random)) {}

    /// Sends a Notify. One with send_resp is repeated with the controller's back-off until it is answered, `expiration`
    /// seconds have passed (0: for ever), or its subscription ends.
    void deliver(const ControllerEntry& controller, usp::Notify notify, const std::string& subscription,
                 std::uint32_t expiration);

    /// Takes a response, or an Error, to a Notify. Returns the subscription_id of the Notify when it was open.
    bool answered(const std::string& endpointId, const std::string& messageId);

    /// Ends the retries of a subscription's, or a controller's, Notifies.
    void endOf(const std::string& row);

    /// Sends what has waited for a controller's first connection.
    void opened(const ControllerEntry& controller);

    [[nodiscard]] std::size_t open() const {
        return open_.size();
    }
    [[nodiscard]] std::uint64_t sent() const {
        return sent_;
    }
    [[nodiscard]] std::uint64_t undeliverable() const {
        return undeliverable_;
    }

  private:
    struct Open {
        std::string controller;  ///< row
        std::string endpointId;
        std::string subscription;  ///< row
        std::string message;
        unsigned tries = 0;
        BoardInstant expires{};
        bool forever = true;
        Timers::Id timer = 0;
    };

    void schedule(const std::string& id, Open& open);
    void retry(const std::string& id);

    Context& context_;
    Timers& timers_;
    const Directory& directory_;
    Send send_;
    std::function<double()> random_;
    std::map<std::string, Open> open_;                            // by msg_id
    std::map<std::string, std::deque<std::string>> unconnected_;  // by controller row, until it is connected first
    std::map<std::string, bool> connected_;
    std::uint64_t lastId_ = 0;
    std::uint64_t sent_ = 0;
    std::uint64_t undeliverable_ = 0;
};

}  // namespace quorvel::agent
