#include "agent/model/OwnRules.h"

#include <algorithm>

#include "agent/model/Values.h"

namespace quorvel::agent {
namespace {

bool isOneOf(std::string_view characters, char c) {
    return characters.find(c) != std::string_view::npos;
}

bool isAlphanumeric(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool isTaken(const Store& store, const std::string& row, const std::vector<std::string>& key) {
    // The last part of a key tells rows apart best.
    const std::vector<std::string> parts(key.rbegin(), key.rend());
    std::vector<std::string> values;
    for (const std::string& name : parts)
        values.push_back(store.value(row, name));
    for (const std::string& other : store.rows(tableOf(row))) {
        if (other == row) continue;
        bool same = true;
        for (std::size_t i = 0; same && i < parts.size(); ++i)
            same = store.value(other, parts[i]) == values[i];
        if (same) return true;
    }
    return false;
}

std::string checkAlias(const std::string& alias) {
    const bool letter =
        !alias.empty() && isAlphanumeric(alias.front()) && !(alias.front() >= '0' && alias.front() <= '9');
    return letter ? "" : "an Alias begins with a letter";
}

std::string checkReferences(const Store& store, const std::string& row) {
    for (const std::string& item : listItems(store.value(row, "ReferenceList"))) {
        const Path path = parsePath(item);
        if (!path.wrong.empty()) return "\"" + item + "\": " + path.wrong;
    }
    return "";
}

std::string checkBootParameter(const std::string& name) {
    if (name.starts_with("cpe-")) return "";
    const Path path = parsePath(name);
    return path.wrong.empty() ? "" : "\"" + name + "\": " + path.wrong;
}

// The text of what is wrong with one parameter's value in its row.
std::string checkValue(const Store& store, const std::string& row, const Parameter& parameter,
                       const std::string& value) {
    if (parameter.is(kReference) && !value.empty() && parameter.name != "Recipient") {
        const std::string expected = parameter.name == "Reference" ? kMqttClients : kAgentMtps;
        const std::string target = value + ".";
        return store.has(target) && tableOf(target) == expected ? "" : "\"" + value + "\" is not a row of " + expected;
    }
    if (parameter.name == "Alias") return checkAlias(value);
    if (parameter.name == "EndpointID" && row != "Device.LocalAgent.") return checkEndpointId(value);
    if (parameter.name == "ReferenceList") return checkReferences(store, row);
    if (parameter.name == "ParameterName") return checkBootParameter(value);
    return "";
}

void checkObject(const Store& store, const std::string& path, const Object& object, const std::string& prefix,
                 std::vector<PathProblem>& problems) {
    for (const Parameter& parameter : object.parameters) {
        if (parameter.is(kComputed)) continue;
        std::string wrong = checkValue(store, path, parameter, store.value(path, parameter.name));
        if (!wrong.empty()) problems.push_back({prefix + parameter.name, {kInvalidValue, std::move(wrong)}});
    }
    for (const Object* const child : object.children) {
        if (child->isTable()) continue;
        const std::string name = std::string(child->name()) + ".";
        checkObject(store, path + name, *child, prefix + name, problems);
    }
}

// A value for a key that the controller left out; unique, because the row's number is.
std::string generatedKey(const Store& store, const std::string& row, const Parameter& parameter) {
    const std::string number = row.substr(tableOf(row).size(), row.size() - tableOf(row).size() - 1);
    if (parameter.name == "EndpointID") return "proto::cpe-" + number;
    if (!parameter.choices.empty()) {
        // The first that is free.
        for (const std::string& choice : parameter.choices) {
            const auto others = store.rows(tableOf(row));
            if (std::none_of(others.begin(), others.end(), [&](const std::string& other) {
                    return other != row && store.value(other, parameter.name) == choice;
                })) {
                return choice;
            }
        }
    }
    return "cpe-" + number;
}

}  // namespace

std::string referenceTo(std::string_view row) {
    if (row.ends_with('.')) row.remove_suffix(1);
    return std::string(row);
}

std::string checkEndpointId(const std::string& id) {
    const std::size_t scheme = id.find(':');
    const std::size_t authority = scheme == std::string::npos ? scheme : id.find(':', scheme + 1);
    if (authority == std::string::npos || scheme == 0)
        return "an Endpoint ID is scheme:authority:instance, such as os::001122-1";
    const std::string_view instance = std::string_view(id).substr(authority + 1);
    if (instance.empty() || instance.size() > 50) return "the last part of an Endpoint ID has 1 to 50 characters";
    for (std::size_t i = 0; i < instance.size(); ++i) {
        if (!isAlphanumeric(instance[i]) && !isOneOf("._-%:", instance[i])) {
            return "the last part of an Endpoint ID consists of A-Z a-z 0-9 . _ - and %XX";
        }
    }
    return "";
}

Problem checkRoom(const Store& store, const std::string& table) {
    const std::size_t most = table == kSubscriptions ? kMaxSubscriptions
                             : table == kControllers ? kMaxControllers
                                                     : kMaxRows;
    if (store.count(table) < most) return {};
    return {kResourcesExceeded, table + " holds at most " + std::to_string(most) + " rows"};
}

void completeRow(Context& context, const std::string& row, const std::vector<std::string>& given,
                 const Originator& originator) {
    Store& store = context.store;
    const Object* const object = store.schema().ofInstance(row);
    if (tableOf(row) == kSubscriptions) {
        store.set(row, "Recipient", referenceTo(originator.row));
        store.set(row, "CreationDate", dateTimeText(context.now));
    }
    for (const Parameter& parameter : object->parameters) {
        if (!object->isKey(parameter.name) || parameter.access == Access::kReadOnly) continue;
        if (std::find(given.begin(), given.end(), parameter.name) != given.end()) continue;
        std::string value = generatedKey(store, row, parameter);
        store.set(row, parameter.name, value);
        // Somebody may have used what would be generated.
        for (int n = 2; parameter.choices.empty() && isTaken(store, row, {parameter.name}); ++n)
            store.set(row, parameter.name, value + "-" + std::to_string(n));
    }
}

std::vector<PathProblem> checkRow(const Store& store, const std::string& row) {
    std::vector<PathProblem> problems;
    const Object* const object = store.schema().ofInstance(row);
    checkObject(store, row, *object, "", problems);
    for (const auto& key : object->keys) {
        if (!isTaken(store, row, key)) continue;
        problems.push_back({key.back(),
                            {kDuplicateKey, "another row of " + std::string(tableOf(row)) + " has the " + key.back() +
                                                " \"" + store.value(row, key.back()) + "\""}});
    }
    return problems;
}

void removeRow(Store& store, const std::string& row) {
    const std::string reference = referenceTo(row);
    store.remove(row);
    if (tableOf(row) == kControllers) {
        for (const std::string& subscription : store.rows(kSubscriptions)) {
            if (store.value(subscription, "Recipient") == reference) store.remove(subscription);
        }
    }
    if (tableOf(row) == kMqttClients) {
        for (const std::string& mtp : store.rows(kAgentMtps)) {
            if (store.value(mtp + "MQTT.", "Reference") == reference) store.set(mtp + "MQTT.", "Reference", "");
        }
    }
    if (tableOf(row) == kAgentMtps) {
        for (const std::string& controller : store.rows(kControllers)) {
            for (const std::string& mtp : store.rows(controller + "MTP.")) {
                if (store.value(mtp + "MQTT.", "AgentMTPReference") != reference) continue;
                store.set(mtp + "MQTT.", "AgentMTPReference", "");
            }
        }
    }
}

}  // namespace quorvel::agent
