#include "gateway/hostd/DataModel.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace quorvel::hostd {
namespace {

constexpr std::string_view kRoot = "Device.";
constexpr std::string_view kInstance = "{i}";
constexpr std::uint32_t kHashSeed = 2166136261U;
constexpr std::uint32_t kHashFactor = 16777619U;
// More digits than any instance has would only invite overflow.
constexpr std::size_t kMaxDigits = 9;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::uint32_t hashOf(std::uint32_t hash, std::string_view text) {
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * kHashFactor;
    return hash;
}

// The calls that a table cannot tell apart from ordinary ones.
Call callOf(std::string_view name) {
    if (name == "AssociatedDeviceRSSI" || name == "AssociatedDeviceRxRate" || name == "AssociatedDeviceTxRate") {
        return Call::kPerStation;
    }
    if (name == "DcsChannelMetrics") return Call::kChannelMetrics;
    if (name == "RadioChannelStats") return Call::kChannelStats;
    return Call::kOrdinary;
}

Type typeOf(const TableEntry& entry) {
    switch (entry.typeCode()) {
        case 0:
            return Type::kText;
        case 2:
            return Type::kBoolean;
        case 3:
            return Type::kUnsignedInt;
        case 4:
            return Type::kInt;
        default:
            throw std::runtime_error(std::string("parameter table: ") + entry.objectPath() + "." +
                                     entry.parameterName() + " has the unknown type code " +
                                     std::to_string(entry.typeCode()));
    }
}

}  // namespace

DataModel::DataModel(std::span<const TableEntry> table) {
    Node root;
    root.name = "Device";
    root.path = kRoot;
    nodes_.push_back(root);
    for (const TableEntry& entry : table)
        addParameter(entry);
    buildIndex();
}

int DataModel::child(int node, std::string_view name) const {
    for (const int index : nodes_[static_cast<std::size_t>(node)].children) {
        if (nodes_[static_cast<std::size_t>(index)].name == name) return index;
    }
    return -1;
}

int DataModel::parameter(int node, std::string_view name) const {
    for (const int index : nodes_[static_cast<std::size_t>(node)].parameters) {
        if (parameters_[static_cast<std::size_t>(index)].name == name) return index;
    }
    return -1;
}

int DataModel::addNode(std::string_view objectPath) {
    int current = 0;
    while (!objectPath.empty()) {
        const std::size_t dot = std::min(objectPath.find('.'), objectPath.size());
        const std::string_view name = objectPath.substr(0, dot);
        objectPath.remove_prefix(std::min(dot + 1, objectPath.size()));
        int next = child(current, name);
        if (next < 0) {
            next = static_cast<int>(nodes_.size());
            Node& parent = nodes_[static_cast<std::size_t>(current)];
            Node node;
            node.name = name;
            node.path = parent.path + node.name + ".";
            node.parent = current;
            node.depth = static_cast<std::uint8_t>(parent.depth + (name == kInstance ? 1 : 0));
            parent.children.push_back(next);
            nodes_.push_back(std::move(node));
        }
        current = next;
    }
    return current;
}

void DataModel::addParameter(const TableEntry& entry) {
    if (entry.objectPath() == nullptr || entry.parameterName() == nullptr) {
        throw std::runtime_error("parameter table: entry " + std::to_string(parameters_.size()) + " has no name");
    }
    const int index = addNode(entry.objectPath());
    Node& node = nodes_[static_cast<std::size_t>(index)];
    if (node.depth > 2) throw std::runtime_error("parameter table: " + node.path + " has more than two instances");

    Parameter added{};
    added.name = entry.parameterName();
    added.type = typeOf(entry);
    added.call = callOf(added.name);
    added.writable = entry.writable();
    added.depth = node.depth;
    added.node = static_cast<std::uint16_t>(index);
    added.getter = entry.getter(added.type, node.depth);
    added.setter = entry.setter(added.type, node.depth);
    added.writesAtOnce = entry.writesAtOnce(added.type, node.depth);
    node.parameters.push_back(static_cast<int>(parameters_.size()));
    if (added.writable) {
        node.initContext = entry.initContext(node.depth);
        node.applyContext = entry.applyContext(node.depth);
        node.contextSize = entry.contextSize();
    }
    parameters_.push_back(added);
}

void DataModel::buildIndex() {
    std::size_t size = 16;
    while (size < parameters_.size() * 4)
        size *= 2;
    slots_.resize(size);
    templates_.reserve(parameters_.size());
    for (std::size_t i = 0; i < parameters_.size(); ++i) {
        const Parameter& added = parameters_[i];
        templates_.push_back(nodes_[added.node].path + std::string(added.name));
        Slot slot;
        slot.parameter = static_cast<std::int32_t>(i);
        slot.hash = kHashSeed;
        std::string_view rest = templates_.back();
        for (std::size_t piece = 0; piece <= added.depth; ++piece) {
            const std::size_t end = std::min(rest.find(kInstance), rest.size());
            slot.pieces[piece] = rest.substr(0, end);
            // The root is compared and not hashed: it is the same in all.
            slot.hash = hashOf(slot.hash, slot.pieces[piece].substr(piece == 0 ? kRoot.size() : 0));
            rest.remove_prefix(std::min(end + kInstance.size(), rest.size()));
        }
        std::size_t at = slot.hash & (size - 1);
        while (slots_[at].parameter >= 0)
            at = (at + 1) & (size - 1);
        slots_[at] = slot;
    }
}

bool DataModel::resolve(std::string_view path, ResolvedPath& resolved) const {
    if (path.size() < kRoot.size()) return false;
    const char* at = path.data() + kRoot.size();
    const char* const end = path.data() + path.size();

    // One pass, segment by segment, hashes the literal text and picks the instances out of it: a segment that begins
    // with a digit is one.
    std::array<std::string_view, 3> pieces;
    Instances instances{};
    std::size_t depth = 0;
    std::uint32_t hash = kHashSeed;
    const char* piece = path.data();
    while (at != end) {
        if (isDigit(*at)) {
            if (depth == instances.size()) return false;
            pieces[depth] = std::string_view(piece, static_cast<std::size_t>(at - piece));
            const char* const first = at;
            std::uint32_t instance = 0;
            while (at != end && isDigit(*at))
                instance = instance * 10 + static_cast<std::uint32_t>(*at++ - '0');
            if (at == end || *at != '.' || static_cast<std::size_t>(at - first) > kMaxDigits) return false;
            instances[depth++] = instance;
            piece = at;
        }
        char last = 0;
        do {
            last = *at++;
            hash = (hash ^ static_cast<unsigned char>(last)) * kHashFactor;
        } while (last != '.' && at != end);
    }
    pieces[depth] = std::string_view(piece, static_cast<std::size_t>(end - piece));

    const std::size_t mask = slots_.size() - 1;
    for (std::size_t index = hash & mask; slots_[index].parameter >= 0; index = (index + 1) & mask) {
        const Slot& slot = slots_[index];
        if (slot.hash != hash || slot.pieces != pieces) continue;
        resolved.parameter = &parameters_[static_cast<std::size_t>(slot.parameter)];
        resolved.instances = instances;
        return true;
    }
    return false;
}

std::string DataModel::concrete(std::string_view path, const Instances& instances) {
    std::string text(path);
    std::size_t at = 0;
    for (const std::uint32_t instance : instances) {
        at = text.find(kInstance, at);
        if (at == std::string::npos) break;
        text.replace(at, kInstance.size(), std::to_string(instance));
    }
    return text;
}

std::string DataModel::concrete(const Parameter& parameter, const Instances& instances) const {
    return concrete(nodeOf(parameter).path, instances) + std::string(parameter.name);
}

}  // namespace quorvel::hostd
