#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "gateway/launch/Gateway.h"
#include "scenario/Result.h"
#include "scenario/Scenario.h"
#include "scenario/UspView.h"

namespace quorvel::scenario {

using hostd::protocol::Fault;

/// Returns a fault's code as a number.
[[nodiscard]] inline unsigned codeOf(const Fault& fault) {
    return static_cast<unsigned>(fault.code);
}

/// A station event as the plug-in's callback reported it.
struct StationEvent {
    Time time = 0;  ///< when it was noticed
    std::string kind;
    std::string station;  ///< lower case
    unsigned accessPoint = 0;
};

/// The board that a scenario plays on. Requests that it cannot answer come back as faults; GatewayError is thrown when
/// the board itself is lost.
class Stage {
  public:
    /// A new board has a clock of its own that moves only when it is advanced, and is gone with this object. A running
    /// one is the background board that the options name: it lives in real time and stays.
    Stage(const launch::Options& options, const Scenario& scenario, std::uint64_t seed, Venue venue);
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage();

    void powerOn();
    /// Switches a new board off as a pulled plug does: nothing on the board gets to do anything about it.
    void cutPower();
    /// Tells whether the board is there for others, too.
    [[nodiscard]] bool isShared() const {
        return venue_ == Venue::kRunningBoard;
    }
    [[nodiscard]] bool isOn() const {
        return gateway_ != nullptr;
    }

    /// Tells whether the board is on and its WLAN manager has not been ended or stopped by a step.
    [[nodiscard]] bool managerRuns() const {
        return isOn() && manager_ == Manager::kRunning;
    }

    /// Asks the host process. Parts of the answer go to `onPart`; returns the faults.
    std::vector<Fault> ask(const hostd::protocol::Request& request, const hostd::Client::OnPart& onPart = {});
    /// Asks the simulation. Returns the faults: its refusal, or that it does not answer.
    std::vector<Fault> control(const Json& command, Json* answer = nullptr);
    /// Kills, stops, continues or restarts the WLAN manager. Returns the faults.
    std::vector<Fault> steerManager(const std::string& what);
    /// Has a tool of the board misbehave: `wl` at once, the others from the next power-on.
    std::vector<Fault> setToolFault(const std::string& tool, const std::string& how);

    /// Does a step of the USP controller or its broker. Returns the faults.
    std::vector<Fault> performUsp(const Step& step);

    /// Lets board time go on to `time`; does nothing when it is there already.
    void advanceTo(Time time);
    /// Takes in what a step has brought about: time that has passed, log entries, station events.
    void catchUp();
    [[nodiscard]] Time now() const {
        return now_;
    }

    /// Adds an entry of the player's own to the event log.
    void note(const std::string& kind, const std::string& text);
    [[nodiscard]] const std::vector<LogLine>& log() const {
        return log_;
    }
    [[nodiscard]] const std::vector<StationEvent>& events() const {
        return events_;
    }
    /// Returns when the USP broker has something to do next, if one takes part.
    [[nodiscard]] std::optional<Time> nextDue() const {
        return usp_ ? usp_->nextDue() : std::nullopt;
    }
    /// Returns what the USP controller got.
    [[nodiscard]] const std::vector<UspArrival>& arrivals() const {
        return arrivals_;
    }
    /// Returns what the board has to say about its sandbox, or the empty text.
    [[nodiscard]] const std::string& notice() const {
        return notice_;
    }
    [[nodiscard]] std::uint64_t seed() const {
        return seed_;
    }

  private:
    enum class Manager { kRunning, kStopped, kGone };

    void open();
    void attach();
    void awaitTime(Time time);
    [[nodiscard]] std::optional<Time> managerTime();
    void prepareState(const Json& values);
    void setState(const Json& values, bool save);
    void listen();
    void takeLog();
    [[nodiscard]] bool takeArrivals();
    void awaitEvents();
    void takeEvent(const hostd::protocol::StationEvent& event);

    Venue venue_;
    std::filesystem::path folder_;  // of a new board
    launch::Options options_;
    std::string notice_;
    Json board_;
    Json prepared_;  // what a running board is set to first
    std::uint64_t seed_;
    bool listens_;
    bool subscribed_ = false;  // the host process hands station events on
    bool listening_ = false;   // and the plug-in hears them
    std::unique_ptr<launch::Gateway> gateway_;
    Manager manager_ = Manager::kGone;
    Time now_ = 0;
    Time started_ = 0;  // when the WLAN manager's clock was 0
    std::uint64_t lastEntry_ = 0;
    std::size_t owedEvents_ = 0;
    std::size_t seenEvents_ = 0;
    std::vector<LogLine> log_;
    std::vector<StationEvent> events_;
    std::optional<UspView> usp_;
    std::vector<UspArrival> arrivals_;
};

}  // namespace quorvel::scenario
