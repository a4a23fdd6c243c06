#include "agent/message/Set.h"

#include <algorithm>
#include <map>

#include "agent/message/SetPlan.h"

namespace quorvel::agent {
namespace {

using Groups = std::vector<UpdateGroup*>;

Refusal refusalOf(const std::vector<UpdateGroup>& groups) {
    std::vector<PathProblem> paths;
    for (const UpdateGroup& group : groups) {
        if (group.problem) paths.push_back({group.path, group.problem});
        for (const Update& update : group.updates) {
            if (update.problem) paths.push_back({update.place.path, update.problem});
            for (const Assignment& each : update.assignments) {
                if (each.required && each.problem) paths.push_back({update.place.path + each.name, each.problem});
            }
        }
    }
    const Problem first = paths.front().problem;
    return Refusal(first, std::move(paths));
}

// The settings of the library that groups make. Instances with an action go last: what went before can be taken back.
std::vector<Gateway::Setting> settingsOf(const Groups& groups) {
    std::vector<Gateway::Setting> settings;
    for (const bool actions : {false, true}) {
        for (const UpdateGroup* const group : groups) {
            for (const Update& update : group->updates) {
                if (!update.place.object->wifi) continue;
                const bool acts =
                    std::any_of(update.assignments.begin(), update.assignments.end(),
                                [](const Assignment& each) { return !each.problem && each.parameter->is(kAction); });
                if (acts != actions) continue;
                for (const Assignment& each : update.assignments) {
                    if (!each.problem) settings.emplace_back(each.object + each.parameter->name, each.value);
                }
            }
        }
    }
    return settings;
}

Task<SetAnswer> apply(Context& context, std::vector<Gateway::Setting> settings) {
    const std::function<void(std::function<void(SetAnswer)>)> ask = [&](std::function<void(SetAnswer)> done) {
        context.gateway.set(settings, std::move(done));
    };
    Callback<SetAnswer> answered(ask);
    co_return co_await answered;
}

// Reads the present values of what is about to be written; what cannot be read cannot be written back.
Task<std::vector<Gateway::Setting>> valuesBefore(Context& context, std::vector<Gateway::Setting> settings) {
    std::vector<std::string> paths;
    for (const auto& [path, value] : settings)
        paths.push_back(path);
    const Readings readings = co_await context.wifi.read(std::move(paths), 0, true);
    std::vector<Gateway::Setting> before;
    for (const Reading& reading : readings.values) {
        const Object* const object = context.schema->ofInstance(reading.object);
        if (object->parameter(reading.parameter)->is(kAction)) continue;
        before.emplace_back(reading.object + reading.parameter, reading.value);
    }
    co_return before;
}

// Writes back the earlier values of the objects that were applied.
Task<void> undo(Context& context, const SetAnswer& answer, std::vector<Gateway::Setting> before) {
    std::erase_if(before, [&answer](const Gateway::Setting& setting) {
        const std::string object = setting.first.substr(0, setting.first.rfind('.') + 1);
        return std::find(answer.applied.begin(), answer.applied.end(), object) == answer.applied.end();
    });
    if (before.empty()) co_return;
    const SetAnswer undone = co_await apply(context, std::move(before));
    for (const GatewayFault& fault : undone.faults)
        context.log("could not write back " + fault.path + ": " + fault.reason);
}

// Says where in the groups an apply has failed.
void attribute(const SetAnswer& answer, const Groups& groups) {
    bool found = false;
    for (const GatewayFault& fault : answer.faults) {
        for (UpdateGroup* const group : groups) {
            for (Update& update : group->updates) {
                if (!update.place.object->wifi || !fault.path.starts_with(update.place.path)) continue;
                if (!update.problem) update.problem = {kNotUpdated, fault.reason};
                found = true;
            }
        }
    }
    if (found) return;
    for (UpdateGroup* const group : groups)
        group->problem = {kInternalError, answer.faults.front().reason};
}

// Applies groups together; takes everything back when one fails.
Task<bool> applyTogether(Context& context, const Groups& groups, bool blame) {
    std::vector<Gateway::Setting> settings = settingsOf(groups);
    if (settings.empty()) co_return true;
    std::vector<Gateway::Setting> before = co_await valuesBefore(context, settings);
    const SetAnswer answer = co_await apply(context, std::move(settings));
    if (answer.faults.empty()) co_return true;
    co_await undo(context, answer, std::move(before));
    if (blame) attribute(answer, groups);
    co_return false;
}

// Applies everything at once, so that each instance is applied once. When that fails and groups stand for themselves,
// one group after the other shows which.
Task<bool> applyWifi(Context& context, std::vector<UpdateGroup>& groups, bool partial) {
    Groups good;
    for (UpdateGroup& group : groups) {
        if (!group.failed()) good.push_back(&group);
    }
    const bool single = !partial || good.size() == 1;
    const bool applied = co_await applyTogether(context, good, single);
    if (applied) co_return !settingsOf(good).empty();
    if (single) co_return false;
    bool any = false;
    for (UpdateGroup* const group : good) {
        const Groups alone{group};
        const bool done = co_await applyTogether(context, alone, true);
        any = any || (done && !settingsOf(alone).empty());
    }
    co_return any;
}

Task<void> saveWifi(Context& context, std::vector<UpdateGroup>& groups) {
    const std::function<void(std::function<void(SaveAnswer)>)> ask = [&](std::function<void(SaveAnswer)> done) {
        context.gateway.save(std::move(done));
    };
    Callback<SaveAnswer> answered(ask);
    const SaveAnswer answer = co_await answered;
    if (answer.saved) co_return;
    context.log("values could not be saved: " + answer.reason);
    for (UpdateGroup& group : groups) {
        for (Update& update : group.updates) {
            if (!update.place.object->wifi || group.failed()) continue;
            for (Assignment& each : update.assignments) {
                if (!each.problem) each.remark = {kInternalError, "the value is live but not saved: " + answer.reason};
            }
        }
    }
}

void reportFailure(const UpdateGroup& group, usp::SetResp::UpdatedObjectResult& result) {
    auto& failure = *result.mutable_oper_status()->mutable_oper_failure();
    Problem problem = group.problem;
    for (const Update& update : group.updates) {
        if (!problem && update.problem) problem = update.problem;
        if (!problem && update.requiredFailed()) {
            problem = {kRequiredFailed, "a required parameter of " + update.place.path + " cannot be set"};
        }
        if (!update.failed()) continue;
        auto& instance = *failure.add_updated_inst_failures();
        instance.set_affected_path(update.place.path);
        for (const Assignment& each : update.assignments) {
            const Problem& own = each.problem ? each.problem : update.problem;
            if (!own || (!each.required && each.problem)) continue;
            auto& error = *instance.add_param_errs();
            error.set_param(each.name);
            error.set_err_code(own.code);
            error.set_err_msg(own.text);
        }
    }
    failure.set_err_code(problem.code);
    failure.set_err_msg(problem.text);
}

void report(const UpdateGroup& group, usp::SetResp& answer) {
    auto& result = *answer.add_updated_obj_results();
    result.set_requested_path(group.path);
    if (group.failed()) return reportFailure(group, result);
    auto& success = *result.mutable_oper_status()->mutable_oper_success();
    for (const Update& update : group.updates) {
        auto& instance = *success.add_updated_inst_results();
        instance.set_affected_path(update.place.path);
        for (const Assignment& each : update.assignments) {
            const Problem& told = each.problem ? each.problem : each.remark;
            if (told) {
                auto& error = *instance.add_param_errs();
                error.set_param(each.name);
                error.set_err_code(told.code);
                error.set_err_msg(told.text);
            }
            if (each.problem) continue;
            (*instance.mutable_updated_params())[each.name] = each.parameter->is(kSecured) ? "" : each.value;
        }
    }
}

Task<void> perform(Context& context, const usp::Set& request, usp::SetResp& answer) {
    std::vector<UpdateGroup> groups = co_await planSet(context, request);
    const auto anyFailed = [&groups] {
        return std::any_of(groups.begin(), groups.end(), [](const UpdateGroup& group) { return group.failed(); });
    };
    if (anyFailed() && !request.allow_partial()) throw refusalOf(groups);
    const bool applied = co_await applyWifi(context, groups, request.allow_partial());
    if (anyFailed() && !request.allow_partial()) throw refusalOf(groups);
    if (applied) co_await saveWifi(context, groups);
    for (UpdateGroup& group : groups) {
        const std::size_t before = context.store.mark();
        if (!group.failed()) setOwn(context, group);
        if (group.failed()) context.store.rollBack(before);
    }
    for (const UpdateGroup& group : groups)
        report(group, answer);
    std::vector<Change> changes = context.store.commit();
    context.changes.insert(context.changes.end(), std::make_move_iterator(changes.begin()),
                           std::make_move_iterator(changes.end()));
}

}  // namespace

Task<void> answerSet(Context& context, const usp::Set& request, usp::SetResp& answer) {
    if (!touchesWifi(request)) {
        co_await perform(context, request, answer);
        co_return;
    }
    const Queue::Turn turn = co_await context.writes.turn();
    co_await perform(context, request, answer);
}

}  // namespace quorvel::agent
