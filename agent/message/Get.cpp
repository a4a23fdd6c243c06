#include "agent/message/Get.h"

#include <algorithm>

namespace quorvel::agent {
namespace {

constexpr std::string_view kWifi = "Device.WiFi.";

// Appends the agent's own values at and below a place.
void collect(const Context& context, const Place& place, unsigned levels, std::vector<Reading>& values) {
    if (place.object->wifi) return;
    if (place.table) {
        for (const std::string& row : context.store.rows(place.path))
            collect(context, {place.object, row, false}, levels, values);
        return;
    }
    for (const Parameter& parameter : place.object->parameters) {
        values.push_back({place.path, parameter.name,
                          parameter.is(kSecured) ? "" : context.store.value(place.path, parameter.name)});
    }
    if (levels == 1) return;
    for (const Object* const child : place.object->children) {
        const Place below{child, place.path + std::string(child->name()) + ".", child->isTable()};
        collect(context, below, levels == 0 ? 0 : levels - 1, values);
    }
}

// A fault counts where nothing could be read; a search passes over rows that have just left.
Problem problemOf(const Readings& readings, bool searched) {
    if (!readings.values.empty() || readings.faults.empty()) return {};
    const GatewayFault& fault = readings.faults.front();
    if (searched && fault.code == kNoSuchObject) return {};
    return {fault.code, fault.reason};
}

}  // namespace

Task<PathReadings> readPath(Context& context, std::string path, unsigned levels) {
    PathReadings found;
    const Resolution resolved = co_await context.resolver.resolve(path, Resolver::Numbers::kTrust);
    found.problem = resolved.problem;
    if (found.problem) co_return found;
    if (resolved.kind == Path::Kind::kCommand || resolved.kind == Path::Kind::kEvent) {
        found.problem = {kInvalidPath, path + " has no value"};
        co_return found;
    }
    std::vector<std::string> asked;
    unsigned depth = levels;
    for (const Place& place : resolved.places) {
        if (resolved.kind == Path::Kind::kParameter) {
            const Parameter* const parameter = place.object->parameter(resolved.leaf);
            if (parameter->access == Access::kWriteOnly) continue;
            if (place.object->wifi) {
                asked.push_back(place.path + resolved.leaf);
            } else {
                found.values.push_back({place.path, resolved.leaf,
                                        parameter->is(kSecured) ? "" : context.store.value(place.path, resolved.leaf)});
            }
            continue;
        }
        if (place.object->wifi) asked.push_back(place.path);
        collect(context, place, levels, found.values);
        // The library's part of the root object.
        if (place.object->parent == nullptr && levels != 1 && context.schema->find(kWifi) != nullptr) {
            asked.emplace_back(kWifi);
            if (levels > 1) depth = levels - 1;
        }
    }
    if (asked.empty()) co_return found;
    Readings readings = co_await context.wifi.read(std::move(asked), depth);
    if (found.values.empty()) found.problem = problemOf(readings, resolved.searched);
    found.values.insert(found.values.end(), std::make_move_iterator(readings.values.begin()),
                        std::make_move_iterator(readings.values.end()));
    co_return found;
}

Task<void> answerGet(Context& context, const usp::Get& request, usp::GetResp& answer) {
    for (const std::string& path : request.param_paths()) {
        PathReadings readings = co_await readPath(context, path, request.max_depth());
        auto& result = *answer.add_req_path_results();
        result.set_requested_path(path);
        result.set_err_code(readings.problem.code);
        result.set_err_msg(readings.problem.text);
        usp::GetResp::ResolvedPathResult* group = nullptr;
        for (Reading& reading : readings.values) {
            if (group == nullptr || group->resolved_path() != reading.object) {
                group = result.add_resolved_path_results();
                group->set_resolved_path(std::move(reading.object));
            }
            (*group->mutable_result_params())[std::move(reading.parameter)] = std::move(reading.value);
        }
    }
}

}  // namespace quorvel::agent
