#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gateway/launch/UspAgent.h"
#include "scenario/Scenario.h"

namespace quorvel::scenario {

/// Something that the scenario's controller got: a notification, or the answer to a step.
struct UspArrival {
    enum class Kind { kNotification, kAnswer, kOther };
    struct Fault {
        unsigned code = 0;
        std::string path;
    };
    Time time = 0;
    Kind kind = Kind::kOther;
    std::string subject;       ///< type of the notification; the id of the step that is answered
    std::string subscription;  ///< the notification's
    std::string path;          ///< the notification's
    Json value;                ///< of a ValueChange
    Json values;               ///< keys and arguments by name; an answer's values by path
    std::vector<Fault> faults;
    std::string text;  ///< for the log
};

/// The board through the eyes of a USP controller: an agent with a scripted broker, beside the board and as long as it
/// has power. Throws GatewayError when the agent is lost.
class UspView {
  public:
    /// `seed` decides what varies by chance.
    explicit UspView(std::uint64_t seed) : seed_(seed) {}

    /// Starts the agent of a board that has come up, at this time. The broker is as it was.
    void start(const launch::Options& options, Time now);
    /// Ends it, as a pulled plug does.
    void end() {
        script_.reset();
    }

    /// Does a step "usp.broker" or "usp.request". Returns why it cannot be done, or the empty text.
    [[nodiscard]] std::string perform(const Step& step);

    /// Has the agent do everything that is due until now. Returns what the controller got meanwhile.
    [[nodiscard]] std::vector<UspArrival> follow(Time now);

    /// Returns when a record arrives or the agent tries to connect; nothing: not by itself.
    [[nodiscard]] std::optional<Time> nextDue() const {
        return script_ == nullptr ? std::nullopt : nextDue_;
    }

  private:
    [[nodiscard]] std::string steerBroker(const Json& members);

    std::uint64_t seed_;
    std::unique_ptr<launch::UspScript> script_;
    Json broker_;  // the last command for it; null: none
    unsigned requests_ = 0;
    std::optional<Time> nextDue_;
};

}  // namespace quorvel::scenario
