#include "gateway/hostd/PathText.h"

#include <algorithm>

#include "common/OutsideBrackets.h"

namespace quorvel::hostd {
namespace {

constexpr std::string_view kRoot = "Device.";

}  // namespace

PathText::PathText(std::string_view path) : rooted(path.starts_with(kRoot)) {
    if (!rooted) return;
    std::size_t begin = kRoot.size();
    const auto nextDot = [&] { return common::findOutsideBrackets(path, '.', begin); };
    for (std::size_t end = nextDot(); end != std::string_view::npos; end = nextDot()) {
        objects.push_back({path.substr(begin, end - begin), end});
        begin = end + 1;
    }
    name = path.substr(begin);
    const std::size_t bracket = name.find('[');
    if (bracket == std::string_view::npos || bracket == 0 || !name.ends_with(']')) return;
    station = name.substr(bracket + 1, name.size() - bracket - 2);
    name = name.substr(0, bracket);
}

bool isInstanceNumber(std::string_view segment) {
    return !segment.empty() && std::all_of(segment.begin(), segment.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isExpression(std::string_view segment) {
    return segment.starts_with('[');
}

bool isReference(std::string_view segment) {
    return segment.size() > 1 && segment.ends_with('+');
}

bool standsForInstances(std::string_view segment) {
    return segment == "*" || isExpression(segment) || isInstanceNumber(segment);
}

}  // namespace quorvel::hostd
