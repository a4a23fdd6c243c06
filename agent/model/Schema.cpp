#include "agent/model/Schema.h"

#include <algorithm>

#include "agent/path/Path.h"

namespace quorvel::agent {
namespace {

constexpr std::string_view kInstances = "{i}.";

template <typename List>
auto named(const List& list, std::string_view name) -> decltype(list.data()) {
    const auto found = std::find_if(list.begin(), list.end(), [name](const auto& each) { return each.name == name; });
    return found == list.end() ? nullptr : &*found;
}

ValueType typeOf(const std::string& type) {
    if (type == "boolean") return ValueType::kBoolean;
    if (type == "unsignedInt") return ValueType::kUnsignedInt;
    if (type == "int") return ValueType::kInt;
    return ValueType::kString;
}

Access accessOf(const std::string& access) {
    if (access == "readWrite") return Access::kReadWrite;
    return access == "writeOnly" ? Access::kWriteOnly : Access::kReadOnly;
}

// The path of the object that holds this one: without the last name and its "{i}".
std::string parentPath(std::string_view path) {
    if (path.ends_with(kInstances)) path.remove_suffix(kInstances.size());
    path.remove_suffix(1);
    return std::string(path.substr(0, path.rfind('.') + 1));
}

}  // namespace

std::string_view Object::name() const {
    std::string_view text = path;
    if (text.ends_with(kInstances)) text.remove_suffix(kInstances.size());
    text.remove_suffix(1);
    return text.substr(text.rfind('.') + 1);
}

const Parameter* Object::parameter(std::string_view wanted) const {
    return named(parameters, wanted);
}

const Command* Object::command(std::string_view wanted) const {
    return named(commands, wanted);
}

const Event* Object::event(std::string_view wanted) const {
    return named(events, wanted);
}

Object* Object::child(std::string_view wanted) const {
    const auto found =
        std::find_if(children.begin(), children.end(), [wanted](const Object* each) { return each->name() == wanted; });
    return found == children.end() ? nullptr : *found;
}

bool Object::isKey(std::string_view wanted) const {
    return std::any_of(keys.begin(), keys.end(),
                       [wanted](const auto& key) { return std::find(key.begin(), key.end(), wanted) != key.end(); });
}

Object& Schema::add(Object object) {
    const std::string path = object.path;
    Object* const parent = path == "Device." ? nullptr : &reach(parentPath(path));
    objects_.push_back(std::make_unique<Object>(std::move(object)));
    Object* const added = objects_.back().get();
    added->parent = parent;
    byPath_[path] = added;
    if (parent == nullptr) return *added;
    parent->children.push_back(added);
    const std::string count = std::string(added->name()) + "NumberOfEntries";
    if (added->isTable() && parent->parameter(count) != nullptr) added->countedBy = count;
    return *added;
}

Object& Schema::reach(const std::string& path) {
    const auto found = byPath_.find(path);
    if (found != byPath_.end()) return *found->second;
    Object object{path};
    object.wifi = path.starts_with("Device.WiFi.");
    return add(std::move(object));
}

void Schema::addWifi(const std::vector<TableRow>& table) {
    for (const TableRow& row : table) {
        if (!row.ordinary) continue;
        reach(row.object).parameters.push_back({row.parameter, typeOf(row.type), accessOf(row.access)});
    }
    for (const auto& object : objects_) {
        if (!object->wifi) continue;
        completeWifiObject(*object);
        const std::string count = std::string(object->name()) + "NumberOfEntries";
        if (object->isTable() && object->parent->parameter(count) != nullptr) object->countedBy = count;
    }
}

Schema::Schema(const std::vector<TableRow>& table) {
    for (Object& object : ownObjects())
        (void)add(std::move(object));
    addWifi(table);
}

const Object* Schema::find(std::string_view path) const {
    const auto found = byPath_.find(path);
    return found == byPath_.end() ? nullptr : found->second;
}

const Object* Schema::ofInstance(std::string_view path) const {
    return find(schemaPath(path));
}

std::string schemaPath(std::string_view path) {
    std::string text;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t dot = std::min(path.find('.', begin), path.size());
        const std::string_view segment = path.substr(begin, dot - begin);
        text += isNumber(segment) ? std::string_view("{i}") : segment;
        if (dot < path.size()) text += '.';
        begin = dot + 1;
    }
    return text;
}

}  // namespace quorvel::agent
