#include "common/EditDistance.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace quorvel::common {
namespace {

// Costs in half letters.
constexpr unsigned kLetter = 2;
constexpr unsigned kCase = 1;

unsigned change(char left, char right) {
    if (left == right) return 0;
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    return lower(left) == lower(right) ? kCase : kLetter;
}

}  // namespace

unsigned editDistance(std::string_view left, std::string_view right) {
    std::vector<std::vector<unsigned>> cost(left.size() + 1, std::vector<unsigned>(right.size() + 1));
    for (std::size_t i = 0; i <= left.size(); ++i)
        cost[i][0] = static_cast<unsigned>(i) * kLetter;
    for (std::size_t j = 0; j <= right.size(); ++j)
        cost[0][j] = static_cast<unsigned>(j) * kLetter;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        for (std::size_t j = 1; j <= right.size(); ++j) {
            cost[i][j] = std::min({cost[i - 1][j] + kLetter, cost[i][j - 1] + kLetter,
                                   cost[i - 1][j - 1] + change(left[i - 1], right[j - 1])});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + kLetter);
            }
        }
    }
    return cost[left.size()][right.size()];
}

}  // namespace quorvel::common
