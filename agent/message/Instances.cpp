#include "agent/message/Instances.h"

#include <set>

namespace quorvel::agent {
namespace {

std::set<std::string> keyNames(const Object& object) {
    std::set<std::string> names;
    for (const auto& key : object.keys)
        names.insert(key.begin(), key.end());
    return names;
}

// Appends the rows of a table, with those of the tables below them when `nested`.
Task<Problem> listTable(Context& context, Place table, bool nested, std::vector<Place>& rows);

// Appends the rows of the tables below an object instance.
Task<Problem> listBelow(Context& context, Place place, std::vector<Place>& rows) {
    for (const Object* const child : place.object->children) {
        const Place below{child, place.path + std::string(child->name()) + ".", child->isTable()};
        Problem problem;
        if (child->isTable()) {
            problem = co_await listTable(context, below, true, rows);
        } else {
            problem = co_await listBelow(context, below, rows);
        }
        if (problem) co_return problem;
    }
    co_return Problem{};
}

Task<Problem> listTable(Context& context, Place table, bool nested, std::vector<Place>& rows) {
    std::vector<std::uint32_t> numbers;
    if (table.object->wifi) {
        WifiView::Rows found = co_await context.wifi.rows(table.path);
        if (found.problem) co_return found.problem;
        numbers = std::move(found.instances);
    } else {
        numbers = context.store.instances(table.path);
    }
    for (const std::uint32_t number : numbers) {
        const Place row{table.object, table.path + std::to_string(number) + ".", false};
        rows.push_back(row);
        if (!nested) continue;
        const Problem problem = co_await listBelow(context, row, rows);
        if (problem) co_return problem;
    }
    co_return Problem{};
}

Task<Problem> listPath(Context& context, const std::string& path, bool nested, std::vector<Place>& rows) {
    const Resolution resolved = co_await context.resolver.resolve(path, Resolver::Numbers::kLookUp);
    if (resolved.problem) co_return resolved.problem;
    if (resolved.kind != Path::Kind::kObject || (resolved.shape != nullptr && !resolved.shape->isTable())) {
        co_return Problem{kNotATable, path + " is not a table"};
    }
    for (const Place& place : resolved.places) {
        Problem problem;
        if (place.table) {
            problem = co_await listTable(context, place, nested, rows);
        } else {
            rows.push_back(place);
            if (nested) problem = co_await listBelow(context, place, rows);
        }
        if (problem) co_return problem;
    }
    co_return Problem{};
}

}  // namespace

Keys ownKeys(const Context& context, const Place& row) {
    Keys keys;
    for (const std::string& name : keyNames(*row.object)) {
        std::string value = context.store.value(row.path, name);
        if (!value.empty()) keys[name] = std::move(value);
    }
    return keys;
}

Task<std::vector<Keys>> keysOf(Context& context, std::vector<Place> rows) {
    std::vector<Keys> keys(rows.size());
    std::map<std::string, std::size_t> places;
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (!rows[i].object->wifi) {
            keys[i] = ownKeys(context, rows[i]);
            continue;
        }
        places[rows[i].path] = i;
        for (const std::string& name : keyNames(*rows[i].object))
            paths.push_back(rows[i].path + name);
    }
    if (paths.empty()) co_return keys;
    Readings readings = co_await context.wifi.read(std::move(paths), 0);
    for (Reading& reading : readings.values) {
        const auto place = places.find(reading.object);
        if (place != places.end() && !reading.value.empty())
            keys[place->second][reading.parameter] = std::move(reading.value);
    }
    co_return keys;
}

Task<void> answerGetInstances(Context& context, const usp::GetInstances& request, usp::GetInstancesResp& answer) {
    for (const std::string& path : request.obj_paths()) {
        std::vector<Place> rows;
        const Problem problem = co_await listPath(context, path, !request.first_level_only(), rows);
        auto& result = *answer.add_req_path_results();
        result.set_requested_path(path);
        result.set_err_code(problem.code);
        result.set_err_msg(problem.text);
        if (problem) continue;
        const std::vector<Keys> keys = co_await keysOf(context, rows);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            auto& instance = *result.add_curr_insts();
            instance.set_instantiated_obj_path(rows[i].path);
            instance.mutable_unique_keys()->insert(keys[i].begin(), keys[i].end());
        }
    }
}

}  // namespace quorvel::agent
