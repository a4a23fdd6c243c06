#include "agent/command/Commands.h"

#include <algorithm>

#include "agent/model/OwnRules.h"
#include "agent/model/Values.h"

namespace quorvel::agent {
namespace {

using Result = usp::OperateResp::OperationResult;

void fail(Result& result, const Problem& problem) {
    result.mutable_cmd_failure()->set_err_code(problem.code);
    result.mutable_cmd_failure()->set_err_msg(problem.text);
}

// The first error in the arguments: mandatory ones must be there, numbers must be numbers.
Problem checkArguments(const Command& command, const usp::Operate& request) {
    for (const std::string& name : command.mandatory) {
        if (!request.input_args().contains(name))
            return {kInvalidCommandArguments, "the argument " + name + " is missing"};
    }
    const auto delay = request.input_args().find("DelaySeconds");
    if (command.name != "ScheduleTimer()" || delay == request.input_args().end()) return {};
    if (numberOr(delay->second, 0) >= 1) return {};
    return {kInvalidCommandArguments, "DelaySeconds is \"" + delay->second + "\"; it must be a whole number from 1"};
}

std::string argumentOr(const usp::Operate& request, const char* name, const char* fallback) {
    const auto found = request.input_args().find(name);
    return found == request.input_args().end() || found->second.empty() ? fallback : found->second;
}

}  // namespace

Task<void> Commands::sleep(std::chrono::seconds time) {
    const std::function<void(std::function<void(bool)>)> ask = [&](std::function<void(bool)> done) {
        (void)timers_.at(context_.now + time, [done] { done(true); });  // nobody cancels it
    };
    Callback<bool> passed(ask);
    (void)co_await passed;
}

Task<std::string> Commands::read(std::string path) {
    std::vector<std::string> paths{std::move(path)};
    Readings readings = co_await context_.wifi.read(std::move(paths), 0, true);
    if (readings.values.empty()) co_return std::string();
    co_return std::move(readings.values.front().value);
}

// Writes true to a parameter that triggers something, and saves.
Task<Problem> Commands::write(std::string path) {
    const Queue::Turn turn = co_await context_.writes.turn();
    const std::function<void(std::function<void(SetAnswer)>)> ask = [&](std::function<void(SetAnswer)> done) {
        std::vector<Gateway::Setting> settings{{path, "true"}};
        context_.gateway.set(std::move(settings), std::move(done));
    };
    Callback<SetAnswer> answered(ask);
    const SetAnswer answer = co_await answered;
    if (!answer.faults.empty()) co_return Problem{kCommandFailed, answer.faults.front().reason};
    const std::function<void(std::function<void(SaveAnswer)>)> save = [&](std::function<void(SaveAnswer)> done) {
        context_.gateway.save(std::move(done));
    };
    Callback<SaveAnswer> kept(save);
    const SaveAnswer saved = co_await kept;
    if (!saved.saved) co_return Problem{kCommandFailed, "done, but not saved: " + saved.reason};
    co_return Problem{};
}

Task<Commands::Outcome> Commands::runAtOnce(Place place, const Command& command, const usp::Operate& request,
                                            std::vector<std::function<void()>>& afterwards) {
    Problem problem;
    if (command.name == "Reboot()" || command.name == "FactoryReset()") {
        const bool factory = command.name == "FactoryReset()";
        BootCause cause{argumentOr(request, "Cause", factory ? "RemoteFactoryReset" : "RemoteReboot"),
                        request.command_key(), argumentOr(request, "Reason", "")};
        afterwards.emplace_back([this, factory, cause] { effects_.powerCycle(factory, cause); });
    } else if (command.name == "SendOnBoardRequest()") {
        afterwards.emplace_back([this, row = place.path] { effects_.onBoard(row); });
    } else if (command.name == "Cancel()") {
        problem = cancel(place.path);
    } else if (place.path == "Device.WiFi.") {
        problem = co_await write("Device.WiFi.CommitSettings");
    } else if (place.object->wifi) {
        problem = co_await write(place.path + "Reset");
    } else {
        afterwards.emplace_back([this, row = place.path] { effects_.resetRetries(row); });
    }
    if (problem) co_return Outcome(problem);
    co_return Outcome(Keys{});
}

std::string Commands::begin(const Originator& originator, const Place& place, const usp::Operate& request,
                            const Command& command) {
    Store& store = context_.store;
    const std::string row = store.add(kRequests);
    store.set(
        row, "Alias",
        "cpe-" + row.substr(std::string_view(kRequests).size(), row.size() - std::string_view(kRequests).size() - 1));
    store.set(row, "Originator", originator.endpointId);
    store.set(row, "Command", place.path + command.name);
    store.set(row, "CommandKey", request.command_key());
    store.set(row, "Status", "Active");
    std::vector<Change> changes = store.commit();
    context_.changes.insert(context_.changes.end(), changes.begin(), changes.end());
    Running running{place.path, command.name, request.command_key()};
    if (command.name == "ScheduleTimer()") {
        const auto delay = std::chrono::seconds(numberOr(argumentOr(request, "DelaySeconds", "1"), 1));
        running.timer = timers_.at(context_.now + delay, [this, row] { finish(row, Keys{}); });
    }
    running_[row] = std::move(running);
    return row;
}

Task<void> Commands::answer(const Originator& originator, const usp::Operate& request, usp::OperateResp& answer,
                            std::vector<std::function<void()>>& afterwards) {
    const Resolution resolved = co_await context_.resolver.resolve(request.command(), Resolver::Numbers::kLookUp);
    Problem problem = resolved.problem;
    if (!problem && resolved.kind != Path::Kind::kCommand)
        problem = {kInvalidPath, request.command() + " is not a command"};
    if (problem) {
        auto& result = *answer.add_operation_results();
        result.set_executed_command(request.command());
        fail(result, problem);
        co_return;
    }
    for (const Place& place : resolved.places) {
        const Command& command = *place.object->command(resolved.leaf);
        auto& result = *answer.add_operation_results();
        result.set_executed_command(place.path + command.name);
        problem = checkArguments(command, request);
        if (!problem && command.asynchronous) problem = checkRoom(context_.store, kRequests);
        if (problem) {
            fail(result, problem);
            continue;
        }
        if (command.asynchronous) {
            const std::string row = begin(originator, place, request, command);
            result.set_req_obj_path(row);
            afterwards.emplace_back([this, row] { tasks_.run(perform(row)); });
            continue;
        }
        const Outcome outcome = co_await runAtOnce(place, command, request, afterwards);
        if (const auto* const failed = std::get_if<Problem>(&outcome)) {
            fail(result, *failed);
        } else {
            (void)result.mutable_req_output_args();  // empty, but there
        }
    }
}

Task<void> Commands::perform(std::string row) {
    const auto found = running_.find(row);
    if (found == running_.end() || found->second.timer != 0) co_return;
    const Running running = found->second;
    Outcome outcome;
    if (running.command == "InitiateWPSPBC()") {
        outcome = co_await pushButton(running.object);
    } else {
        outcome = co_await scan();
    }
    finish(row, outcome);
}

void Commands::finish(const std::string& row, const Outcome& outcome) {
    const auto found = running_.find(row);
    if (found == running_.end()) return;
    const Running running = std::move(found->second);
    running_.erase(found);
    effects_.complete(running.object, running.command, running.key, outcome);
    context_.store.remove(row);
    std::vector<Change> changes = context_.store.commit();
    context_.changes.insert(context_.changes.end(), changes.begin(), changes.end());
    effects_.changed();
}

Problem Commands::cancel(const std::string& row) {
    const auto found = running_.find(row);
    if (found == running_.end() || found->second.timer == 0) {
        return {kCommandFailed, row + " cannot be canceled: the library finishes what it has begun"};
    }
    timers_.cancel(found->second.timer);
    // Its end is reported after the answer to Cancel().
    found->second.timer = timers_.at(context_.now, [this, row] {
        finish(row, Problem{kCanceled, "canceled by Cancel()"});
    });
    return {};
}

void Commands::forget() {
    for (const auto& [row, running] : running_) {
        timers_.cancel(running.timer);
        context_.store.remove(row);
    }
    running_.clear();
}

Task<Problem> Commands::scanRadio(std::string radio) {
    using Faults = std::vector<GatewayFault>;
    const std::function<void(std::function<void(Faults)>)> ask = [&](std::function<void(Faults)> done) {
        context_.gateway.scan(radio, std::move(done));
    };
    Callback<Faults> answered(ask);
    const Faults faults = co_await answered;
    if (faults.empty()) co_return Problem{};
    co_return Problem{faults.front().code, faults.front().reason};
}

Task<Commands::Outcome> Commands::scan() {
    Keys outputs{{"Status", "Complete"}};
    const WifiView::Rows radios = co_await context_.wifi.rows("Device.WiFi.Radio.");
    bool any = false;
    for (const std::uint32_t instance : radios.instances) {
        const std::string radio = "Device.WiFi.Radio." + std::to_string(instance) + ".";
        const std::string status = co_await read(radio + "Status");
        if (status != "Up") continue;
        const Problem problem = co_await scanRadio(radio);
        if (problem) {
            context_.log("the scan of " + radio + " failed: " + problem.text);
            outputs["Status"] = "Error";
        }
        any = any || !problem;
    }
    if (!any) {
        outputs["Status"] = "Error";
        co_return Outcome(outputs);
    }
    // The library numbers the results of all radios in one row.
    std::vector<std::string> paths{"Device.WiFi.NeighboringWiFiDiagnostic.Result."};
    const Readings results = co_await context_.wifi.read(std::move(paths), 0);
    const Command& command = *context_.schema->find("Device.WiFi.")->command("NeighboringWiFiDiagnostic()");
    for (const Reading& reading : results.values) {
        const std::string general = "Result.{i}." + reading.parameter;
        if (std::find(command.outputs.begin(), command.outputs.end(), general) == command.outputs.end()) continue;
        outputs[reading.object.substr(reading.object.find("Result.")) + reading.parameter] = reading.value;
    }
    co_return Outcome(outputs);
}

Task<Commands::Outcome> Commands::pushButton(std::string object) {
    constexpr int kLongest = 150;  // s; a walk time is 120
    const auto status = [](const char* text) { return Outcome(Keys{{"Status", text}}); };
    const std::string enabled = co_await read(object + "Enable");
    if (!isTrue(enabled)) co_return status("Error_Not_Ready");
    using Faults = std::vector<GatewayFault>;
    const std::function<void(std::function<void(Faults)>)> ask = [&](std::function<void(Faults)> done) {
        context_.gateway.pushButton(object, std::move(done));
    };
    Callback<Faults> answered(ask);
    const Faults faults = co_await answered;
    if (!faults.empty()) co_return status("Error_Other");
    // 0 idle or canceled, 1 in progress, 2 a station was let in, 3 nobody came.
    std::string state = co_await read(object + "Status");
    if (state != "1") co_return status("Error_Not_Ready");
    for (int waited = 0; state == "1" && waited < kLongest; ++waited) {
        co_await sleep(std::chrono::seconds(1));
        state = co_await read(object + "Status");
    }
    if (state == "2") co_return status("Success");
    co_return status(state == "0" ? "Error_Other" : "Error_Timeout");
}

}  // namespace quorvel::agent
