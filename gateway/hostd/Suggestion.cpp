#include "gateway/hostd/Suggestion.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <vector>

#include "common/EditDistance.h"

namespace quorvel::hostd {
namespace {

// The cost of a letter, see editDistance().
constexpr unsigned kLetter = 2;

bool isInstance(std::string_view segment) {
    return segment == "*" || (!segment.empty() && std::isdigit(static_cast<unsigned char>(segment.front())) != 0);
}

struct Nearest {
    std::string path;
    unsigned cost = std::numeric_limits<unsigned>::max();
};

std::vector<std::string_view> split(std::string_view path) {
    std::vector<std::string_view> segments;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t dot = std::min(path.find('.', begin), path.size());
        segments.push_back(path.substr(begin, dot - begin));
        begin = dot + 1;
    }
    return segments;
}

// Walks the tree along the segments, every branch at its cost.
void walk(const DataModel& model, int index, const std::vector<std::string_view>& segments, std::size_t depth,
          const Nearest& far, Nearest& best) {
    if (far.cost >= best.cost) return;
    if (depth == segments.size() || segments[depth].empty()) {
        best = far;
        return;
    }
    const std::string_view segment = segments[depth];
    const Node& node = model.nodes()[static_cast<std::size_t>(index)];
    for (const int child : node.children) {
        const Node& below = model.nodes()[static_cast<std::size_t>(child)];
        if (below.isInstance()) {
            // A forgotten instance costs as much as a letter and becomes {i}.
            const bool given = isInstance(segment);
            const Nearest next{far.path + (given ? std::string(segment) : "*") + ".", far.cost + (given ? 0 : kLetter)};
            walk(model, child, segments, depth + (given ? 1 : 0), next, best);
            continue;
        }
        const unsigned cost = common::editDistance(segment, below.name);
        if (cost > below.name.size()) continue;
        walk(model, child, segments, depth + 1, {far.path + below.name + ".", far.cost + cost}, best);
    }
    if (depth + 1 != segments.size()) return;
    for (const int parameter : node.parameters) {
        const std::string_view name = model.parameters()[static_cast<std::size_t>(parameter)].name;
        const unsigned cost = far.cost + common::editDistance(segment, name);
        if (cost - far.cost <= name.size() && cost < best.cost) best = {far.path + std::string(name), cost};
    }
}

}  // namespace

std::string suggestPath(const DataModel& model, std::string_view path) {
    std::vector<std::string_view> segments = split(path);
    // The root may have been forgotten, or be misspelt like anything else.
    if (!segments.empty() && common::editDistance(segments.front(), "Device") <= 2 * kLetter)
        segments.erase(segments.begin());
    Nearest best;
    walk(model, 0, segments, 0, {"Device.", 0}, best);
    return best.cost == std::numeric_limits<unsigned>::max() ? "" : best.path;
}

}  // namespace quorvel::hostd
