#include "agent/message/Add.h"

#include <algorithm>

#include "agent/message/Instances.h"
#include "agent/message/Writing.h"
#include "agent/model/OwnRules.h"

namespace quorvel::agent {
namespace {

/// One row to create: a CreateObject in one of the tables that its path leads to.
struct Creation {
    const usp::Add::CreateObject* request = nullptr;
    Problem problem;
    Place table;
    std::vector<Assignment> assignments;
    bool failed = false;  ///< a required parameter failed
    Place row;
};

Problem checkTable(const Resolution& resolved, const std::string& path) {
    if (resolved.problem) return resolved.problem;
    const bool table =
        resolved.kind == Path::Kind::kObject &&
        std::all_of(resolved.places.begin(), resolved.places.end(), [](const Place& place) { return place.table; });
    if (!table || (resolved.shape != nullptr && !resolved.shape->isTable()))
        return {kNotATable, path + " is not a table"};
    if (resolved.shape != nullptr && !resolved.shape->addDelete) {
        return {kNotCreatable, "rows of " + resolved.shape->path + " cannot be created"};
    }
    return {};
}

Task<std::vector<Creation>> prepare(Context& context, const usp::Add& request) {
    std::vector<Creation> creations;
    for (const auto& object : request.create_objs()) {
        const Resolution resolved = co_await context.resolver.resolve(object.obj_path(), Resolver::Numbers::kLookUp);
        Creation creation{&object, checkTable(resolved, object.obj_path()), {}, {}, false, {}};
        if (creation.problem) {
            creations.push_back(std::move(creation));
            continue;
        }
        for (const Place& table : resolved.places) {
            creation.table = table;
            creation.assignments.clear();
            for (const auto& setting : object.param_settings()) {
                Assignment assignment{setting.param(), setting.value(), setting.required(), "", nullptr};
                // The row does not exist yet; its model does.
                locate({table.object, table.path, false}, assignment);
                co_await checkAssignment(context, assignment, true);
                // A key that was given counts as required.
                if (table.object->isKey(setting.param())) assignment.required = true;
                creation.assignments.push_back(std::move(assignment));
            }
            creations.push_back(creation);
        }
    }
    co_return creations;
}

bool requiredFailed(const std::vector<Assignment>& assignments) {
    return std::any_of(assignments.begin(), assignments.end(),
                       [](const Assignment& each) { return each.required && each.problem; });
}

// Creates one row, or takes everything back.
void create(Context& context, const Originator& originator, Creation& creation) {
    Store& store = context.store;
    creation.failed = requiredFailed(creation.assignments);
    if (creation.problem || creation.failed) return;
    creation.problem = checkRoom(store, creation.table.path);
    if (creation.problem) return;
    const std::size_t mark = store.mark();
    creation.row = {creation.table.object, store.add(creation.table.path), false};
    std::vector<std::string> given;
    for (Assignment& assignment : creation.assignments) {
        if (assignment.problem) continue;
        locate(creation.row, assignment);
        store.set(assignment.object, assignment.parameter->name, assignment.value);
        given.push_back(assignment.name);
    }
    completeRow(context, creation.row.path, given, originator);
    std::vector<PathProblem> problems = checkRow(store, creation.row.path);
    // An error in an optional parameter leaves the row with the default.
    for (const PathProblem& each : problems) {
        const auto optional =
            std::find_if(creation.assignments.begin(), creation.assignments.end(),
                         [&each](const Assignment& a) { return a.name == each.path && !a.required && !a.problem; });
        if (optional == creation.assignments.end()) continue;
        optional->problem = each.problem;
        store.set(optional->object, optional->parameter->name, optional->parameter->initial);
    }
    creation.problem = attach(checkRow(store, creation.row.path), creation.assignments);
    creation.failed = requiredFailed(creation.assignments);
    if (creation.problem || creation.failed) store.rollBack(mark);
}

Refusal refusalOf(const std::vector<Creation>& creations) {
    std::vector<PathProblem> paths;
    Problem first;
    for (const Creation& creation : creations) {
        const std::string& path = creation.request->obj_path();
        const std::string dotted = path.ends_with('.') ? path : path + ".";
        if (creation.problem) paths.push_back({path, creation.problem});
        for (const Assignment& each : creation.assignments) {
            if (creation.failed && each.required && each.problem) paths.push_back({dotted + each.name, each.problem});
        }
    }
    if (!paths.empty()) first = paths.front().problem;
    return Refusal(first, std::move(paths));
}

void report(Context& context, const Creation& creation, usp::AddResp& answer) {
    auto& result = *answer.add_created_obj_results();
    result.set_requested_path(creation.request->obj_path());
    if (creation.problem || creation.failed) {
        auto& failure = *result.mutable_oper_status()->mutable_oper_failure();
        failure.set_err_code(creation.problem ? creation.problem.code : std::uint32_t{kRequiredFailed});
        failure.set_err_msg(creation.problem.text);
        for (const Assignment& each : creation.assignments) {
            if (creation.failed && each.required && each.problem) {
                failure.set_err_msg(each.name + ": " + each.problem.text);
                break;
            }
        }
        return;
    }
    auto& success = *result.mutable_oper_status()->mutable_oper_success();
    success.set_instantiated_path(creation.row.path);
    for (const Assignment& each : creation.assignments) {
        if (!each.problem) continue;
        auto& error = *success.add_param_errs();
        error.set_param(each.name);
        error.set_err_code(each.problem.code);
        error.set_err_msg(each.problem.text);
    }
    const Keys keys = ownKeys(context, creation.row);
    success.mutable_unique_keys()->insert(keys.begin(), keys.end());
}

}  // namespace

Task<void> answerAdd(Context& context, const Originator& originator, const usp::Add& request, usp::AddResp& answer) {
    std::vector<Creation> creations = co_await prepare(context, request);
    const std::size_t mark = context.store.mark();
    bool failed = false;
    for (Creation& creation : creations) {
        create(context, originator, creation);
        failed = failed || creation.problem || creation.failed;
    }
    if (failed && !request.allow_partial()) {
        context.store.rollBack(mark);
        throw refusalOf(creations);
    }
    for (const Creation& creation : creations)
        report(context, creation, answer);
    std::vector<Change> changes = context.store.commit();
    context.changes.insert(context.changes.end(), std::make_move_iterator(changes.begin()),
                           std::make_move_iterator(changes.end()));
}

}  // namespace quorvel::agent
