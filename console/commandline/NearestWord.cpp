#include "console/commandline/NearestWord.h"

#include <algorithm>

#include "common/EditDistance.h"

namespace quorvel::console {
namespace {

// Half letters; see editDistance(). More than half a word must not be wrong.
constexpr std::size_t kNear = 6;

}  // namespace

std::string nearestWord(std::string_view word, const std::vector<std::string>& known) {
    std::string nearest;
    std::size_t best = std::min(kNear, word.size()) + 1;
    for (const std::string& each : known) {
        const std::size_t cost = common::editDistance(word, each);
        if (cost >= best) continue;
        best = cost;
        nearest = each;
    }
    return nearest;
}

std::string didYouMean(std::string_view word, const std::vector<std::string>& known) {
    const std::string nearest = nearestWord(word, known);
    return nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?";
}

std::string listed(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

}  // namespace quorvel::console
