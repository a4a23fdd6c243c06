#include "agent/message/SetPlan.h"

#include <algorithm>

#include "agent/model/OwnRules.h"

namespace quorvel::agent {
namespace {

bool cannotBeUndone(const Parameter& parameter) {
    return parameter.is(kAction) || parameter.access == Access::kWriteOnly;
}

// A search is all or nothing, so a part of it that cannot be taken back is refused before anything is applied.
void refuseActions(UpdateGroup& group) {
    if (!group.searched) return;
    for (Update& update : group.updates) {
        for (Assignment& each : update.assignments) {
            if (each.problem || each.parameter == nullptr || !cannotBeUndone(*each.parameter)) continue;
            each.problem = {kNotUpdated, each.name + " cannot be taken back; name the instance instead of searching"};
            each.required = true;
        }
    }
}

Task<UpdateGroup> planObject(Context& context, const usp::Set::UpdateObject& request) {
    UpdateGroup group{request.obj_path()};
    const Resolution resolved = co_await context.resolver.resolve(request.obj_path(), Resolver::Numbers::kTrust);
    group.problem = resolved.problem;
    group.searched = resolved.searched;
    if (!group.problem && resolved.kind != Path::Kind::kObject) {
        group.problem = {kInvalidPath, group.path + " is not an object"};
    }
    for (const Place& place : resolved.places) {
        if (place.table) group.problem = {kInvalidPath, group.path + " is a table; name its rows, or all of them by *"};
    }
    if (group.problem) co_return group;
    for (const Place& place : resolved.places) {
        Update update{place, {}};
        for (const auto& setting : request.param_settings()) {
            Assignment assignment{setting.param(), setting.value(), setting.required(), "", nullptr};
            locate(place, assignment);
            co_await checkAssignment(context, assignment, false);
            update.assignments.push_back(std::move(assignment));
        }
        group.updates.push_back(std::move(update));
    }
    refuseActions(group);
    co_return group;
}

// Has the library stage everything, and attaches what it refuses.
Task<void> stageWifi(Context& context, std::vector<UpdateGroup>& groups) {
    std::vector<Gateway::Setting> settings;
    for (const UpdateGroup& group : groups)
        for (const Update& update : group.updates)
            for (const Assignment& each : update.assignments)
                if (!each.problem && update.place.object->wifi)
                    settings.emplace_back(each.object + each.parameter->name, each.value);
    if (settings.empty()) co_return;
    const std::function<void(std::function<void(SetAnswer)>)> ask = [&](std::function<void(SetAnswer)> done) {
        context.gateway.check(settings, std::move(done));
    };
    Callback<SetAnswer> answered(ask);
    const SetAnswer answer = co_await answered;
    for (const GatewayFault& fault : answer.faults) {
        for (UpdateGroup& group : groups) {
            for (Update& update : group.updates) {
                if (!update.place.object->wifi) continue;
                for (Assignment& each : update.assignments) {
                    const bool meant = fault.path.empty() ||
                                       (each.parameter != nullptr && fault.path == each.object + each.parameter->name);
                    if (!meant || each.problem) continue;
                    // A row that is missing is not the parameter's fault.
                    Problem& problem = fault.code == kNoSuchObject ? update.problem : each.problem;
                    problem = {fault.code, fault.reason};
                }
            }
        }
    }
}

// The error in the row of a place after its parameter `name` was set, if there is one.
Problem wrongIn(const Store& store, const Place& place, const std::string& name) {
    const Object* row = place.object;
    std::string path = place.path;
    std::string prefix;
    while (!row->isTable() && row->parent != nullptr) {
        prefix = std::string(row->name()) + "." + prefix;
        path = tableOf(path);
        row = row->parent;
    }
    if (!row->isTable()) return {};
    for (PathProblem& problem : checkRow(store, path)) {
        if (problem.path == prefix + name) return std::move(problem.problem);
    }
    return {};
}

}  // namespace

bool Update::requiredFailed() const {
    return std::any_of(assignments.begin(), assignments.end(),
                       [](const Assignment& each) { return each.required && each.problem; });
}

bool UpdateGroup::failed() const {
    return problem || std::any_of(updates.begin(), updates.end(), [](const Update& update) { return update.failed(); });
}

bool touchesWifi(const usp::Set& request) {
    return std::any_of(request.update_objs().begin(), request.update_objs().end(),
                       [](const auto& object) { return object.obj_path().starts_with("Device.WiFi."); });
}

void setOwn(Context& context, UpdateGroup& group) {
    Store& store = context.store;
    for (Update& update : group.updates) {
        if (update.place.object->wifi) continue;
        // Each value on its own, so that one that does not fit is known, and kept out when it is optional.
        for (Assignment& each : update.assignments) {
            if (each.problem) continue;
            const std::size_t before = store.mark();
            store.set(each.object, each.parameter->name, each.value);
            each.problem = wrongIn(store, update.place, each.name);
            if (each.problem && !each.required) store.rollBack(before);
        }
    }
}

Task<std::vector<UpdateGroup>> planSet(Context& context, const usp::Set& request) {
    std::vector<UpdateGroup> groups;
    for (const auto& object : request.update_objs()) {
        UpdateGroup group = co_await planObject(context, object);
        groups.push_back(std::move(group));
    }
    co_await stageWifi(context, groups);
    // The agent's own objects say what is wrong when they are set.
    const std::size_t mark = context.store.mark();
    for (UpdateGroup& group : groups) {
        const std::size_t before = context.store.mark();
        setOwn(context, group);
        if (group.failed()) context.store.rollBack(before);
    }
    context.store.rollBack(mark);
    co_return groups;
}

}  // namespace quorvel::agent
