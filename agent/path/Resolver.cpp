#include "agent/path/Resolver.h"

#include <algorithm>

#include "agent/model/Values.h"

namespace quorvel::agent {
namespace {

using Kind = Segment::Kind;

Problem noSuchPath(const std::string& where) {
    return {kInvalidPath, where + " is not in the supported data model"};
}

bool hasReference(const Condition& condition) {
    return condition.path.find('+') != std::string::npos;
}

Place childOf(const Place& place, const Object& child) {
    return {&child, place.path + std::string(child.name()) + ".", child.isTable()};
}

Place rowOf(const Place& table, std::uint32_t instance) {
    return {table.object, table.path + std::to_string(instance) + ".", false};
}

}  // namespace

const Parameter* relativeParameter(const Object& object, std::string_view path) {
    const Object* at = &object;
    for (std::size_t dot = path.find('.'); dot != std::string_view::npos; dot = path.find('.')) {
        at = at->child(path.substr(0, dot));
        if (at == nullptr || at->isTable()) return nullptr;
        path.remove_prefix(dot + 1);
    }
    return at->parameter(path);
}

Problem Resolver::enterName(const std::string& name, Resolution& at) {
    if (at.shape == nullptr) return {};
    for (Place& place : at.places) {
        const Object* const child = place.table ? nullptr : place.object->child(name);
        if (child == nullptr) return noSuchPath(place.path + name + ".");
        place = childOf(place, *child);
    }
    const Object* const child = at.shape->child(name);
    if (child == nullptr) return noSuchPath(at.shape->path + name + ".");
    at.shape = child;
    return {};
}

Task<Problem> Resolver::enterNumber(std::uint32_t number, Resolution& at, Numbers numbers, bool several) {
    std::vector<Place> found;
    for (const Place& place : at.places) {
        const Place row = rowOf(place, number);
        bool there = true;
        if (!place.object->wifi) {
            there = store_.has(row.path);
        } else if (numbers == Numbers::kLookUp || several) {
            const WifiView::Rows rows = co_await wifi_.rows(place.path);
            there = std::find(rows.instances.begin(), rows.instances.end(), number) != rows.instances.end();
        }
        if (there) {
            found.push_back(row);
            continue;
        }
        if (!several) co_return Problem{kNoSuchObject, "there is no object " + row.path};
    }
    at.places = std::move(found);
    co_return Problem{};
}

Task<Problem> Resolver::expand(Resolution& at, bool several) {
    std::vector<Place> found;
    for (const Place& place : at.places) {
        if (!place.object->wifi) {
            for (const std::uint32_t instance : store_.instances(place.path))
                found.push_back(rowOf(place, instance));
            continue;
        }
        const WifiView::Rows rows = co_await wifi_.rows(place.path);
        if (rows.problem && !(several && rows.problem.code == kNoSuchObject)) co_return rows.problem;
        for (const std::uint32_t instance : rows.instances)
            found.push_back(rowOf(place, instance));
    }
    at.places = std::move(found);
    co_return Problem{};
}

Problem Resolver::checkConditions(const std::vector<Condition>& conditions, const Object& object) {
    for (const Condition& condition : conditions) {
        // Where a reference leads shows only when it is followed.
        if (hasReference(condition)) continue;
        const Parameter* const parameter = relativeParameter(object, condition.path);
        if (parameter == nullptr) return noSuchPath(object.path + condition.path);
        if (parameter->access == Access::kWriteOnly) return {kInvalidSyntax, condition.path + " can only be written"};
        if (std::string wrong = checkCondition(condition, *parameter); !wrong.empty()) return {kInvalidSyntax, wrong};
    }
    return {};
}

Task<bool> Resolver::meetsOne(const Condition& condition, const Place& place) {
    std::string path = place.path + condition.path;
    const Resolution target = co_await resolve(std::move(path), Numbers::kTrust);
    if (target.problem || target.kind != Path::Kind::kParameter) co_return false;
    for (const Place& end : target.places) {
        const Parameter* const parameter = end.object->parameter(target.leaf);
        if (parameter == nullptr || !checkCondition(condition, *parameter).empty()) continue;
        const std::optional<std::string> read = co_await value(end, target.leaf);
        if (read && meets(condition, *parameter, *read)) co_return true;
    }
    co_return false;
}

Task<bool> Resolver::meetsAll(const std::vector<Condition>& conditions, const Place& place) {
    for (const Condition& condition : conditions) {
        const bool met = co_await meetsOne(condition, place);
        if (!met) co_return false;
    }
    co_return true;
}

// Reads what the conditions ask of all rows of the library at once.
Task<void> Resolver::narrow(const std::vector<Condition>& conditions, std::vector<Place>& places) {
    std::vector<std::string> paths;
    for (const Place& place : places)
        for (const Condition& condition : conditions)
            paths.push_back(place.path + condition.path);
    if (paths.empty()) co_return;
    const Readings readings = co_await wifi_.read(std::move(paths), 0);
    std::map<std::string, const std::string*> values;
    for (const Reading& reading : readings.values)
        values[reading.object + reading.parameter] = &reading.value;
    std::erase_if(places, [&](const Place& place) {
        return !std::all_of(conditions.begin(), conditions.end(), [&](const Condition& condition) {
            const auto found = values.find(place.path + condition.path);
            return found != values.end() &&
                   meets(condition, *relativeParameter(*place.object, condition.path), *found->second);
        });
    });
}

Task<Problem> Resolver::search(const std::vector<Condition>& conditions, Resolution& at) {
    if (at.shape != nullptr) {
        Problem problem = checkConditions(conditions, *at.shape);
        if (problem) co_return problem;
    }
    const bool plain = std::none_of(conditions.begin(), conditions.end(), hasReference);
    if (plain && at.shape != nullptr && at.shape->wifi) {
        co_await narrow(conditions, at.places);
        co_return Problem{};
    }
    std::vector<Place> found;
    for (const Place& place : at.places) {
        const bool met = co_await meetsAll(conditions, place);
        if (met) found.push_back(place);
    }
    at.places = std::move(found);
    co_return Problem{};
}

Task<Problem> Resolver::follow(const Segment& segment, Resolution& at, bool several) {
    if (at.shape != nullptr) {
        const Parameter* const parameter = at.shape->parameter(segment.name);
        if (parameter == nullptr || parameter->type != ValueType::kString) {
            co_return noSuchPath("the reference " + at.shape->path + segment.name);
        }
    }
    std::vector<Place> found;
    for (const Place& place : at.places) {
        const std::optional<std::string> list = co_await value(place, segment.name);
        const std::vector<std::string> items = listItems(list.value_or(""));
        bool led = false;
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (segment.number != 0 && i + 1 != segment.number) continue;
            const std::string target = items[i].ends_with('.') ? items[i] : items[i] + ".";
            // A value may name an object, but not search or refer on.
            const Path path = parsePath(target);
            const bool plain =
                path.wrong.empty() && std::all_of(path.segments.begin(), path.segments.end(), [](const Segment& each) {
                    return each.kind == Kind::kName || each.kind == Kind::kNumber;
                });
            if (!plain) continue;
            Resolution end = co_await resolve(target, Numbers::kLookUp);
            if (end.problem || end.places.size() != 1 || end.places.front().table) continue;
            found.push_back(end.places.front());
            led = true;
        }
        if (!led && !several) co_return Problem{kNoSuchObject, place.path + segment.name + " refers to no object"};
    }
    at.places = std::move(found);
    at.shape = at.places.empty() ? nullptr : at.places.front().object;
    co_return Problem{};
}

Task<Problem> Resolver::step(const Segment& segment, Resolution& at, Numbers numbers, bool several) {
    const bool row = segment.kind == Kind::kNumber || segment.kind == Kind::kAll || segment.kind == Kind::kSearch;
    const bool atTable = at.places.empty() || at.places.front().table;
    if (row && (!atTable || (at.shape != nullptr && !at.shape->isTable()))) {
        co_return noSuchPath("an instance of " + (at.shape == nullptr ? std::string("it") : at.shape->path));
    }
    switch (segment.kind) {
        case Kind::kName:
            co_return enterName(segment.name, at);
        case Kind::kNumber:
            co_return co_await enterNumber(segment.number, at, numbers, several);
        case Kind::kAll:
            co_return co_await expand(at, several);
        case Kind::kSearch: {
            Problem problem = co_await expand(at, several);
            if (problem) co_return problem;
            co_return co_await search(segment.conditions, at);
        }
        case Kind::kReference:
            co_return co_await follow(segment, at, several);
    }
    co_return Problem{};
}

Problem Resolver::pickLeaf(const Path& path, Resolution& at) const {
    const auto lacks = [&](const Object& object) {
        switch (path.kind) {
            case Path::Kind::kObject:
                return false;
            case Path::Kind::kParameter:
                return object.parameter(path.leaf) == nullptr;
            case Path::Kind::kCommand:
                return object.command(path.leaf) == nullptr;
            case Path::Kind::kEvent:
                return object.event(path.leaf) == nullptr;
        }
        return true;
    };
    if (at.shape != nullptr && lacks(*at.shape)) return noSuchPath(at.shape->path + path.leaf);
    for (const Place& place : at.places) {
        if ((place.table && path.kind != Path::Kind::kObject) || lacks(*place.object))
            return noSuchPath(place.path + path.leaf);
    }
    return {};
}

Task<Resolution> Resolver::resolve(std::string text, Numbers numbers) {
    const Path path = parsePath(text);
    const Object& root = store_.schema().root();
    Resolution at;
    at.shape = &root;
    at.kind = path.kind;
    at.leaf = path.leaf;
    at.searched = path.searches();
    if (!path.wrong.empty()) {
        at.problem = {kInvalidSyntax, "\"" + text.substr(0, 256) + "\": " + path.wrong};
        co_return at;
    }
    at.places.push_back({&root, root.path, false});
    bool several = false;
    bool atTable = false;  // the names lead to a table
    for (const Segment& segment : path.segments) {
        if ((segment.kind == Kind::kName || segment.kind == Kind::kReference) && atTable) {
            at.problem = noSuchPath(at.shape->path + segment.name);
        } else {
            at.problem = co_await step(segment, at, numbers, several);
        }
        if (at.problem) {
            at.places.clear();
            co_return at;
        }
        several = several || segment.kind == Kind::kAll || segment.kind == Kind::kSearch ||
                  (segment.kind == Kind::kReference && segment.number == 0);
        atTable = segment.kind == Kind::kName && at.shape != nullptr && at.shape->isTable();
    }
    // An object's path may lack its last dot.
    if (path.kind == Path::Kind::kParameter && at.shape != nullptr && !atTable &&
        at.shape->parameter(path.leaf) == nullptr && at.shape->child(path.leaf) != nullptr) {
        at.kind = Path::Kind::kObject;
        at.leaf.clear();
        at.problem = enterName(path.leaf, at);
        co_return at;
    }
    at.problem =
        atTable && path.kind != Path::Kind::kObject ? noSuchPath(at.shape->path + path.leaf) : pickLeaf(path, at);
    if (at.problem) at.places.clear();
    co_return at;
}

Task<std::optional<std::string>> Resolver::value(Place place, std::string parameter) {
    const Parameter* const known = place.object->parameter(parameter);
    if (known == nullptr || known->access == Access::kWriteOnly) co_return std::nullopt;
    if (!place.object->wifi) {
        if (known->is(kSecured)) co_return std::string();
        co_return store_.value(place.path, parameter);
    }
    std::vector<std::string> paths{place.path + parameter};
    Readings readings = co_await wifi_.read(std::move(paths), 0);
    if (readings.values.size() != 1) co_return std::nullopt;
    co_return std::move(readings.values.front().value);
}

}  // namespace quorvel::agent
