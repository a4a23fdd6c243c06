#include "agent/model/Store.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "agent/model/Values.h"

namespace quorvel::agent {
namespace {

using Json = nlohmann::ordered_json;

bool isRow(std::string_view path) {
    path.remove_suffix(1);
    return isNumber(path.substr(path.rfind('.') + 1));
}

std::uint32_t instanceOf(std::string_view row) {
    row.remove_suffix(1);
    return numberOr(row.substr(row.rfind('.') + 1), 0);
}

}  // namespace

Store::Store(const Schema& schema) : schema_(&schema) {
    for (const auto& object : schema.objects()) {
        if (object->wifi || object->path.find("{i}") != std::string::npos) continue;
        insert(object->path, {object.get(), {}});
    }
}

void Store::adopt(const Schema& schema) {
    schema_ = &schema;
    for (auto& [path, row] : rows_)
        row.object = schema.find(row.object->path);
}

void Store::insert(const std::string& path, Row row) {
    if (isRow(path)) {
        const std::string table(tableOf(path));
        const std::uint32_t instance = instanceOf(path);
        tables_[table].insert(instance);
        highest_[table] = std::max(highest_[table], instance);
    }
    rows_[path] = std::move(row);
}

void Store::erase(const std::string& path) {
    if (isRow(path)) tables_[std::string(tableOf(path))].erase(instanceOf(path));
    rows_.erase(path);
}

std::vector<std::uint32_t> Store::instances(std::string_view table) const {
    const auto found = tables_.find(table);
    if (found == tables_.end()) return {};
    return {found->second.begin(), found->second.end()};
}

std::size_t Store::count(std::string_view table) const {
    const auto found = tables_.find(table);
    return found == tables_.end() ? 0 : found->second.size();
}

std::vector<std::string> Store::rows(std::string_view table) const {
    std::vector<std::string> paths;
    for (const std::uint32_t instance : instances(table))
        paths.push_back(std::string(table) + std::to_string(instance) + ".");
    return paths;
}

std::string Store::value(std::string_view object, std::string_view parameter) const {
    const auto row = rows_.find(object);
    if (row == rows_.end()) return "";
    const Parameter* const known = row->second.object->parameter(parameter);
    if (known == nullptr) return "";
    if (known->is(kComputed)) {
        const auto computed = computed_.find(std::string(object).append(parameter));
        if (computed != computed_.end()) return computed->second();
        for (const Object* const child : row->second.object->children) {
            if (child->countedBy != parameter) continue;
            return std::to_string(count(std::string(object).append(child->name()).append(".")));
        }
    }
    const auto value = row->second.values.find(parameter);
    return value == row->second.values.end() ? known->initial : value->second;
}

bool Store::flag(std::string_view object, std::string_view parameter) const {
    return isTrue(value(object, parameter));
}

std::uint32_t Store::number(std::string_view object, std::string_view parameter) const {
    return numberOr(value(object, parameter), 0);
}

void Store::compute(const std::string& object, const std::string& parameter, std::function<std::string()> value) {
    computed_[object + parameter] = std::move(value);
}

void Store::set(const std::string& object, const std::string& parameter, const std::string& value) {
    const auto row = rows_.find(object);
    if (row == rows_.end()) return;
    const std::string before = this->value(object, parameter);
    if (before == value) return;
    log_.push_back({Change::Kind::kValue, object, parameter, before, {}});
    row->second.values[parameter] = value;
}

void Store::addChildren(const std::string& path, const Object& object) {
    for (const Object* const child : object.children) {
        if (child->isTable()) continue;
        const std::string below = path + std::string(child->name()) + ".";
        insert(below, {child, {}});
        log_.push_back({Change::Kind::kAdded, below, "", "", {}});
        addChildren(below, *child);
    }
}

std::string Store::add(const std::string& table, std::uint32_t instance) {
    const Object* const object = schema_->find(schemaPath(table) + "{i}.");
    if (object == nullptr) return "";
    if (instance == 0) {
        const auto highest = highest_.find(table);
        instance = (highest == highest_.end() ? 0 : highest->second) + 1;
    }
    std::string path = table + std::to_string(instance) + ".";
    insert(path, {object, {}});
    log_.push_back({Change::Kind::kAdded, path, "", "", {}});
    addChildren(path, *object);
    return path;
}

void Store::remove(const std::string& row) {
    std::vector<std::string> below;
    for (auto at = rows_.lower_bound(row); at != rows_.end() && at->first.starts_with(row); ++at)
        below.push_back(at->first);
    // Children first, so that taking it back adds parents first.
    for (auto path = below.rbegin(); path != below.rend(); ++path) {
        log_.push_back({Change::Kind::kRemoved, *path, "", "", rows_[*path]});
        erase(*path);
    }
}

void Store::rollBack(std::size_t mark) {
    while (log_.size() > mark) {
        Undo undo = std::move(log_.back());
        log_.pop_back();
        switch (undo.kind) {
            case Change::Kind::kValue:
                rows_[undo.object].values[undo.parameter] = undo.before;
                break;
            case Change::Kind::kAdded:
                erase(undo.object);
                // The number was not used in the end.
                if (isRow(undo.object)) --highest_[std::string(tableOf(undo.object))];
                break;
            case Change::Kind::kRemoved:
                insert(undo.object, std::move(undo.row));
                break;
        }
    }
}

std::vector<Change> Store::commit() {
    std::vector<Change> changes;
    std::map<std::string, std::string> first;  // values before the transaction
    std::set<std::string> fresh;
    std::set<std::string> tables;
    for (const Undo& undo : log_) {
        switch (undo.kind) {
            case Change::Kind::kValue:
                if (!fresh.contains(undo.object)) first.emplace(undo.object + undo.parameter, undo.before);
                break;
            case Change::Kind::kAdded:
                fresh.insert(undo.object);
                if (!isRow(undo.object)) break;
                changes.push_back({Change::Kind::kAdded, undo.object, "", ""});
                tables.insert(std::string(tableOf(undo.object)));
                break;
            case Change::Kind::kRemoved:
                if (!isRow(undo.object)) break;
                changes.push_back({Change::Kind::kRemoved, undo.object, "", ""});
                tables.insert(std::string(tableOf(undo.object)));
                break;
        }
    }
    log_.clear();
    for (const auto& [path, before] : first) {
        const std::size_t dot = path.rfind('.') + 1;
        const std::string object = path.substr(0, dot);
        const std::string now = value(object, path.substr(dot));
        if (has(object) && now != before) changes.push_back({Change::Kind::kValue, object, path.substr(dot), now});
    }
    for (const std::string& table : tables) {
        const Object* const object = schema_->find(schemaPath(table) + "{i}.");
        const std::string parent(tableOf(table));
        if (object == nullptr || object->countedBy.empty() || !has(parent)) continue;
        changes.push_back({Change::Kind::kValue, parent, object->countedBy, value(parent, object->countedBy)});
    }
    return changes;
}

Json Store::save(const std::function<bool(const std::string&)>& keep) const {
    Json rows = Json::object();
    for (const auto& [path, row] : rows_) {
        if (!keep(path)) continue;
        Json values = Json::object();
        for (const auto& [name, value] : row.values) {
            const Parameter* const parameter = row.object->parameter(name);
            if (parameter != nullptr && !parameter->is(kComputed)) values[name] = value;
        }
        rows[path] = std::move(values);
    }
    Json highest = Json::object();
    for (const auto& [table, number] : highest_)
        highest[table] = number;
    return {{"rows", std::move(rows)}, {"highest", std::move(highest)}};
}

void Store::load(const Json& saved) {
    const auto rows = saved.find("rows");
    if (rows == saved.end() || !rows->is_object()) return;
    for (const auto& [path, values] : rows->items()) {
        if (!path.starts_with("Device.") || !path.ends_with('.') || !values.is_object()) continue;
        const Object* const object = schema_->ofInstance(path);
        // A row needs its parents; the order of the file has them first.
        if (object == nullptr || object->wifi || (object->path != "Device." && !has(tableOf(path)) && !isRow(path)))
            continue;
        if (isRow(path)) {
            const std::uint32_t instance = instanceOf(path);
            const std::string table(tableOf(path));
            if (instance == 0 || !has(tableOf(table))) continue;
            if (!has(path)) (void)add(table, instance);
        }
        if (!has(path)) continue;
        for (const auto& [name, value] : values.items()) {
            const Parameter* const parameter = object->parameter(name);
            if (parameter == nullptr || parameter->is(kComputed) || !value.is_string()) continue;
            std::string text = value.get<std::string>();
            if (text != parameter->initial && normalize(*parameter, text)) continue;
            rows_[path].values[name] = text;
        }
    }
    const auto highest = saved.find("highest");
    if (highest != saved.end() && highest->is_object()) {
        for (const auto& [table, number] : highest->items()) {
            if (number.is_number_unsigned() && number.get<std::uint64_t>() < 4294967295U) {
                highest_[table] = std::max(highest_[table], number.get<std::uint32_t>());
            }
        }
    }
    log_.clear();
}

}  // namespace quorvel::agent
