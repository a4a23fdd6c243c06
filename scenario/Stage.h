#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "gateway/launch/Gateway.h"
#include "scenario/Result.h"
#include "scenario/Scenario.h"

namespace quorvel::scenario {

/// A station event as the plug-in told it.
struct StationEvent {
    Time time = 0;  ///< when it was noticed
    std::string kind;
    std::string station;  ///< lower case
    unsigned accessPoint = 0;
};

/// The board that a scenario plays on: new, with a clock of its own that moves only when it is told to, and gone with
/// this object. What cannot be asked of it comes back as faults; GatewayError is thrown when the board itself is lost.
class Stage {
  public:
    Stage(const launch::Options& options, const Scenario& scenario, std::uint64_t seed);
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage();

    void powerOn();
    /// Switches off as a pulled plug does: nothing on the board gets to do anything about it.
    void cutPower();
    [[nodiscard]] bool isOn() const {
        return gateway_ != nullptr;
    }

    /// Asks the host process. Values and the like go to `onPart`; returns the faults.
    std::vector<Json> ask(
        const Json& request, const launch::Client::OnPart& onPart = [](const Json&) {});
    /// Asks the simulation. Returns the faults: its refusal, or that it does not answer.
    std::vector<Json> control(const Json& command, Json* answer = nullptr);
    /// Kills, stops, continues or restarts the WLAN manager. Returns the faults.
    std::vector<Json> steerManager(const std::string& what);
    /// Has a tool of the board misbehave: `wl` at once, the others from the next power-on.
    std::vector<Json> setToolFault(const std::string& tool, const std::string& how);

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
    [[nodiscard]] std::uint64_t seed() const {
        return seed_;
    }

  private:
    enum class Manager { kRunning, kStopped, kGone };

    void open();
    void prepareState(const Json& values);
    void listen();
    void takeLog();
    void awaitEvents();
    void takeEvent(const Json& part);

    std::filesystem::path folder_;
    launch::Options options_;
    Json board_;
    std::uint64_t seed_;
    bool listens_;
    bool listening_ = false;
    std::unique_ptr<launch::Gateway> gateway_;
    Manager manager_ = Manager::kGone;
    Time now_ = 0;
    Time started_ = 0;  // when the WLAN manager's clock was 0
    std::uint64_t lastEntry_ = 0;
    std::size_t owedEvents_ = 0;
    std::size_t seenEvents_ = 0;
    std::vector<LogLine> log_;
    std::vector<StationEvent> events_;
};

}  // namespace quorvel::scenario
