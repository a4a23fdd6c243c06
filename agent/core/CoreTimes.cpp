// Work that is due at a time: retries, Periodic!, on-boarding, stations, Boot!.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "agent/core/AgentCore.h"
#include "agent/message/Get.h"
#include "agent/model/OwnRules.h"
#include "agent/model/Values.h"

namespace quorvel::agent {
namespace {

constexpr std::chrono::seconds kPollStations{1};
// Periods that a jump of time has passed over are told up to so many.
constexpr std::int64_t kMaxMissedPeriods = 1000;

}  // namespace

void AgentCore::tick(BoardInstant now) {
    // Each timer sees its own time, so that a jump over an hour leaves the retries where they belong.
    while (auto due = timers_.take(now)) {
        context_.now = std::max(context_.now, due->first);
        due->second();
    }
    context_.now = std::max(context_.now, now);
    settle();
}

void AgentCore::onBoardTime(BoardInstant now) {
    wakeAt_.reset();
    tick(now);
}

// Ends what has been done: asks to be woken for what is next.
void AgentCore::settle() {
    const std::optional<BoardInstant> next = timers_.next();
    if (!next || next == wakeAt_) return;
    wakeAt_ = next;
    context_.gateway.wakeAt(*next);
}

void AgentCore::schedulePeriodic(const std::string& row) {
    timers_.cancel(periodic_[row]);
    periodic_.erase(row);
    const ControllerEntry* const controller = directory_.byRow(row);
    if (controller == nullptr || !controller->enabled) return;
    const std::chrono::seconds interval(
        std::max<std::uint32_t>(context_.store.number(row, "PeriodicNotifInterval"), 1));
    const BoardInstant phase = parseDateTime(context_.store.value(row, "PeriodicNotifTime")).value_or(startedAt_);
    const std::int64_t periods = std::chrono::floor<std::chrono::seconds>(context_.now - phase) / interval;
    BoardInstant due = phase + interval * periods;
    while (due <= context_.now)
        due += interval;
    periodic_[row] = timers_.at(due, [this, row, interval] {
        notifier_->tellEvent(
            "Device.LocalAgent.", "Periodic!", [](const ControllerEntry&) { return Keys{}; }, row);
        const BoardInstant real = context_.gateway.boardTime();
        // A clock that was set far ahead does not owe years of notifications.
        if ((real - context_.now) / interval > kMaxMissedPeriods) context_.now = real;
        schedulePeriodic(row);
    });
}

void AgentCore::onBoard(const std::string& row) {
    const ControllerEntry* const controller = directory_.byRow(row);
    if (controller == nullptr || !controller->enabled) return;
    context_.store.set(row, "OnBoardingComplete", "false");
    std::vector<Change> changes = context_.store.commit();
    context_.changes.insert(context_.changes.end(), changes.begin(), changes.end());
    notifier_->askOnBoard(*controller);
    publish();
    timers_.cancel(onBoarding_[row]);
    const std::uint32_t again = context_.store.number(row, "OnBoardingRestartTime");
    if (again == 0) return;
    onBoarding_[row] = timers_.at(context_.now + std::chrono::seconds(again), [this, row] {
        if (context_.store.has(row) && !context_.store.flag(row, "OnBoardingComplete")) onBoard(row);
    });
}

Task<void> AgentCore::announceBoot(BootCause cause) {
    std::map<std::string, std::string> parameters;  // by row of the controller
    std::vector<std::string> rows;
    for (const auto& [row, controller] : directory_.all())
        rows.push_back(row);
    for (const std::string& row : rows) {
        nlohmann::ordered_json values = nlohmann::ordered_json::object();
        for (const std::string& parameter : context_.store.rows(row + "BootParameter.")) {
            if (!context_.store.flag(parameter, "Enable")) continue;
            const PathReadings readings =
                co_await readPath(context_, context_.store.value(parameter, "ParameterName"), 0);
            for (const Reading& reading : readings.values)
                values[reading.object + reading.parameter] = reading.value;
        }
        parameters[row] = values.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    }
    notifier_->tellEvent("Device.", "Boot!", [&](const ControllerEntry& controller) {
        return Keys{{"CommandKey", cause.commandKey},
                    {"Cause", cause.cause},
                    {"Reason", cause.reason},
                    {"FirmwareUpdated", "false"},
                    {"ParameterMap", parameters[controller.row]}};
    });
}

void AgentCore::watchStationsLater() {
    if (pollingStations_ || !notifier_->watchesStations()) return;
    pollingStations_ = true;
    (void)timers_.at(context_.now + kPollStations, [this] {
        pollingStations_ = false;
        if (!comparing_) {
            comparing_ = true;
            tasks_.run(pollStations(true));
        }
        watchStationsLater();
    });
}

// Reads the lists of stations, all or those that events have named; the read notices who has come and gone. The values
// tell what has changed.
Task<void> AgentCore::pollStations(bool whole) {
    if (!notifier_->watchesStations()) {
        stationValues_.clear();
        while (whole || !changedAccessPoints_.empty()) {
            std::set<std::string> named;
            named.swap(changedAccessPoints_);
            if (std::exchange(whole, false)) named.clear();
            co_await context_.wifi.compareStations(std::move(named));
        }
        comparing_ = false;
        co_return;
    }
    changedAccessPoints_.clear();
    const std::vector<Reading> readings = co_await context_.wifi.readStations();
    std::map<std::string, std::string> values;
    for (const Reading& reading : readings) {
        const std::string path = reading.object + reading.parameter;
        const auto before = stationValues_.find(path);
        if (before != stationValues_.end() && before->second != reading.value) notifier_->tellValue(reading);
        values[path] = reading.value;
    }
    stationValues_ = std::move(values);
    comparing_ = false;
    settle();
}

}  // namespace quorvel::agent
