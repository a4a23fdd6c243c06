#pragma once

#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "agent/Context.h"
#include "agent/Timers.h"
#include "agent/message/Instances.h"
#include "agent/notify/Delivery.h"
#include "agent/notify/Directory.h"
#include "agent/notify/Subscription.h"
#include "agent/proto/usp.pb.h"

namespace quorvel::agent {

/// Tells subscribers what has happened.
class Notifier {
  public:
    Notifier(Context& context, Timers& timers, TaskGroup& tasks, const Directory& directory, Delivery& delivery)
        : context_(context), timers_(timers), tasks_(tasks), directory_(directory), delivery_(delivery) {}

    /// `remove` removes a subscription whose time to live is over.
    void onExpiry(std::function<void(const std::string& row)> remove) {
        remove_ = std::move(remove);
    }

    /// Reads all subscriptions anew, after start().
    void reload();

    /// Tells what a transaction has changed, to those who were subscribed before it; then reads the subscriptions that
    /// it has changed.
    void tell(const std::vector<Change>& changes);

    /// Tells a value of the library that has changed.
    void tellValue(const Reading& reading);
    void tellCreated(const std::string& row, const Keys& keys);
    void tellDeleted(const std::string& row);
    using Outcome = std::variant<Keys, Problem>;  ///< output arguments, or why it failed
    void tellComplete(const std::string& object, const std::string& command, const std::string& key,
                      const Outcome& outcome);
    /// `parameters` is called for each recipient. With `only`, the row of a controller, nobody else is told.
    void tellEvent(const std::string& object, const std::string& event,
                   const std::function<Keys(const ControllerEntry&)>& parameters, const std::string& only = "");

    /// Asks a controller to take the device in; repeated until it responds.
    void askOnBoard(const ControllerEntry& controller);

    /// Looks again where searches and references of ReferenceLists lead.
    void resolveAgain();

    /// Returns the paths of the library that ValueChange subscriptions concern, stations left out.
    [[nodiscard]] std::vector<std::string> watched() const;
    /// Returns whether a subscription concerns what may come and go unheard: the library's rows, and what a search
    /// finds.
    [[nodiscard]] bool followsRows() const;
    /// Returns whether a ValueChange subscription concerns stations.
    [[nodiscard]] bool watchesStations() const;
    [[nodiscard]] const std::map<std::string, Subscription, PathLess>& subscriptions() const {
        return subscriptions_;
    }

  private:
    void load(const std::string& row);
    void unload(const std::string& row);
    Task<void> resolve(std::string row);
    void send(const Subscription& subscription, usp::Notify notify);
    template <typename Covers, typename Fill>
    void tellAll(Subscription::Type type, const Covers& covers, const Fill& fill);
    [[nodiscard]] usp::Notify begin(const Subscription& subscription) const;

    Context& context_;
    Timers& timers_;
    TaskGroup& tasks_;
    const Directory& directory_;
    Delivery& delivery_;
    std::function<void(const std::string&)> remove_;
    std::map<std::string, Subscription, PathLess> subscriptions_;
};

}  // namespace quorvel::agent
