#include "gateway/hostd/Counter.h"

#include <algorithm>

#include "gateway/hostd/Accessors.h"

namespace quorvel::hostd {
namespace {

// No gateway has more; a count beyond it is not worth walking.
constexpr std::uint32_t kMaxEntries = 4096;
constexpr std::uint32_t kMaxProbed = 8;
constexpr std::string_view kSuffix = "NumberOfEntries";

std::size_t at(int index) {
    return static_cast<std::size_t>(index);
}

}  // namespace

Counter::Count Counter::count(int node, const Instances& outer) {
    const std::pair<int, std::uint32_t> key(node, model_.nodes()[at(node)].depth > 1 ? outer[0] : 0);
    const auto found = known_.find(key);
    if (found != known_.end()) return found->second;
    const Count counted = ask(node, outer);
    known_[key] = counted;
    return counted;
}

int Counter::counterOf(int node) const {
    const Node& object = model_.nodes()[at(model_.nodes()[at(node)].parent)];
    const std::string own = object.name + std::string(kSuffix);
    const int near = model_.parameter(object.parent, own);
    if (near >= 0) return near;

    const std::string joined = model_.nodes()[at(object.parent)].name + own;
    const auto& parameters = model_.parameters();
    for (const std::string& name : {joined, own}) {
        const auto found = std::find_if(parameters.begin(), parameters.end(),
                                        [&name](const Parameter& candidate) { return candidate.name == name; });
        if (found != parameters.end()) return static_cast<int>(found - parameters.begin());
    }
    return -1;
}

Counter::Count Counter::ask(int node, const Instances& outer) {
    const int counter = counterOf(node);
    if (counter < 0) return {probe(node, outer), 0};

    const Parameter& parameter = model_.parameters()[at(counter)];
    const Node& object = model_.nodes()[at(model_.nodes()[at(node)].parent)];
    if (parameter.depth > 0 && parameter.node != at(object.parent)) return sum(parameter);
    Value value;
    const std::uint32_t result = read(parameter, outer, value);
    return {result == 0 ? std::min(value.number, kMaxEntries) : 0, result};
}

Counter::Count Counter::sum(const Parameter& parameter) {
    int node = parameter.node;
    while (!model_.nodes()[at(node)].isInstance())
        node = model_.nodes()[at(node)].parent;
    Count total = count(node, {});
    const std::uint32_t instances = total.entries;
    total.entries = 0;
    for (std::uint32_t instance = 1; instance <= instances; ++instance) {
        Value value;
        // An instance that cannot be read has nothing to count.
        if (read(parameter, {instance, 0}, value) == 0) total.entries += std::min(value.number, kMaxEntries);
    }
    total.entries = std::min(total.entries, kMaxEntries);
    return total;
}

std::uint32_t Counter::probe(int node, Instances instances) const {
    const Node& object = model_.nodes()[at(node)];
    const auto readable = std::find_if(object.parameters.begin(), object.parameters.end(), [this](int index) {
        const Parameter& candidate = model_.parameters()[at(index)];
        return candidate.getter != 0 && candidate.call == Call::kOrdinary;
    });
    if (readable == object.parameters.end()) return 0;
    std::uint32_t entries = 0;
    Value value;
    while (entries < kMaxProbed) {
        instances[object.depth - 1U] = entries + 1;
        if (read(model_.parameters()[at(*readable)], instances, value) != 0) break;
        ++entries;
    }
    return entries;
}

}  // namespace quorvel::hostd
