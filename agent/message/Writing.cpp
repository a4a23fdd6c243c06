#include "agent/message/Writing.h"

#include <algorithm>

#include "agent/model/OwnRules.h"
#include "agent/model/Values.h"

namespace quorvel::agent {

void locate(const Place& row, Assignment& assignment) {
    const Object* object = row.object;
    std::string path = row.path;
    std::string_view name = assignment.name;
    for (std::size_t dot = name.find('.'); dot != std::string_view::npos; dot = name.find('.')) {
        object = object->child(name.substr(0, dot));
        if (object == nullptr || object->isTable()) return;
        path.append(name.substr(0, dot + 1));
        name.remove_prefix(dot + 1);
    }
    assignment.object = path;
    assignment.parameter = object->parameter(name);
}

Task<void> checkAssignment(Context& context, Assignment& assignment, bool fresh) {
    const Parameter* const parameter = assignment.parameter;
    if (parameter == nullptr) {
        assignment.problem = {kUnsupportedParameter, assignment.name + " is not in the supported data model"};
        co_return;
    }
    if (parameter->access == Access::kReadOnly) {
        assignment.problem = {kNotWritable, assignment.name + " is read-only"};
        co_return;
    }
    if (parameter->is(kWriteOnce) && !fresh && !context.store.value(assignment.object, parameter->name).empty()) {
        assignment.problem = {kNotWritable, assignment.name + " cannot be changed once it is set"};
        co_return;
    }
    assignment.problem = normalize(*parameter, assignment.value);
    if (assignment.problem || !parameter->is(kReference) || assignment.value.empty()) co_return;
    std::string path = assignment.value.ends_with('.') ? assignment.value : assignment.value + ".";
    const Resolution target = co_await context.resolver.resolve(std::move(path), Resolver::Numbers::kLookUp);
    if (target.problem || target.places.size() != 1 || target.places.front().table) {
        assignment.problem = {kInvalidValue, "\"" + assignment.value + "\" does not name one row"};
        co_return;
    }
    assignment.value = referenceTo(target.places.front().path);
}

Problem attach(const std::vector<PathProblem>& problems, std::vector<Assignment>& assignments) {
    Problem rest;
    for (const PathProblem& each : problems) {
        const auto found = std::find_if(assignments.begin(), assignments.end(), [&each](const Assignment& assignment) {
            return assignment.name == each.path && !assignment.problem;
        });
        if (found != assignments.end()) {
            found->problem = each.problem;
        } else if (!rest) {
            rest = {each.problem.code, each.path + ": " + each.problem.text};
        }
    }
    return rest;
}

}  // namespace quorvel::agent
