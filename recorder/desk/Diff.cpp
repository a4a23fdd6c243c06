#include "recorder/desk/Diff.h"

#include <algorithm>
#include <ostream>

#include "recorder/desk/CallTree.h"
#include "recorder/desk/Text.h"

namespace quorvel::recorder {

namespace {

// A call as one line, and what happened in it line by line; times, threads and addresses are not compared.
struct Lines {
    std::string call;
    std::vector<std::string> inside;
};

std::string argumentsOf(const Record& record) {
    std::string text = record.function + '(';
    bool first = true;
    for (const Value* const value : record.valuesOf(ValueRole::kArgument)) {
        text += (first ? "" : ", ") + describe(*value);
        first = false;
    }
    return text + ')';
}

Lines linesOf(const Call& call) {
    Lines lines{argumentsOf(*call.begin), {}};
    for (const Record* const event : call.events)
        lines.inside.push_back(event->kind == RecordKind::kLog ? "log " + describeLog(*event)
                                                               : describePlatform(*event));
    if (call.end == nullptr) return lines;
    for (const Value* const result : call.end->valuesOf(ValueRole::kResult))
        lines.inside.push_back("returns " + describe(*result));
    for (const Value* const memory : call.end->valuesOf(ValueRole::kAfter))
        lines.inside.push_back("memory after: " + describe(*memory));
    return lines;
}

std::vector<Lines> linesOf(const Recording& recording) {
    std::vector<Lines> lines;
    const CallTree tree = makeCallTree(recording);
    lines.reserve(tree.calls.size());
    for (const Call& call : tree.calls)
        lines.push_back(linesOf(call));
    return lines;
}

// One step of the way from one sequence to the other.
enum class Step : uint8_t { kBoth, kOnlyFirst, kOnlySecond };

// The shortest way from one sequence to the other, by Myers' algorithm.
template <typename Same>
std::vector<Step> shortestWay(size_t firstSize, size_t secondSize, Same same) {
    const auto n = static_cast<ptrdiff_t>(firstSize);
    const auto m = static_cast<ptrdiff_t>(secondSize);
    const ptrdiff_t most = n + m;
    std::vector<ptrdiff_t> furthest(static_cast<size_t>(2 * most + 2), 0);
    const auto at = [&](ptrdiff_t diagonal) -> ptrdiff_t& { return furthest[static_cast<size_t>(diagonal + most)]; };
    std::vector<std::vector<ptrdiff_t>> history;
    const auto goesDown = [](const auto& reach, ptrdiff_t diagonal, ptrdiff_t edits) {
        return diagonal == -edits || (diagonal != edits && reach(diagonal - 1) < reach(diagonal + 1));
    };
    for (ptrdiff_t edits = 0; edits <= most; ++edits) {
        // This round reads one diagonal beyond its own on each side.
        const auto first = furthest.begin() + std::max<ptrdiff_t>(0, most - edits - 1);
        const auto last = furthest.begin() + std::min<ptrdiff_t>(2 * most + 1, most + edits + 1);
        history.emplace_back(first, last + 1);
        for (ptrdiff_t diagonal = -edits; diagonal <= edits; diagonal += 2) {
            ptrdiff_t x = edits == 0 ? 0 : goesDown(at, diagonal, edits) ? at(diagonal + 1) : at(diagonal - 1) + 1;
            while (x < n && x - diagonal < m && same(static_cast<size_t>(x), static_cast<size_t>(x - diagonal)))
                ++x;
            at(diagonal) = x;
            if (x < n || x - diagonal < m) continue;
            // Back along what was furthest with one edit less each.
            std::vector<Step> steps;
            ptrdiff_t y = m;
            x = n;
            for (ptrdiff_t left = edits; left > 0; --left) {
                const auto& before = history[static_cast<size_t>(left)];
                const ptrdiff_t begin = std::max<ptrdiff_t>(0, most - left - 1);
                const auto reach = [&](ptrdiff_t k) { return before[static_cast<size_t>(k + most - begin)]; };
                const bool down = goesDown(reach, x - y, left);
                const ptrdiff_t from = down ? reach(x - y + 1) : reach(x - y - 1) + 1;
                for (; x > from; --x, --y)
                    steps.push_back(Step::kBoth);
                steps.push_back(down ? Step::kOnlySecond : Step::kOnlyFirst);
                (down ? y : x) -= 1;
            }
            steps.insert(steps.end(), static_cast<size_t>(x), Step::kBoth);
            std::ranges::reverse(steps);
            return steps;
        }
    }
    return {};
}

// Prints the lines that only one of two sequences has.
void showLines(std::ostream& out, const std::vector<std::string>& first, const std::vector<std::string>& second) {
    const auto steps =
        shortestWay(first.size(), second.size(), [&](size_t a, size_t b) { return first[a] == second[b]; });
    size_t a = 0;
    size_t b = 0;
    for (const Step step : steps) {
        switch (step) {
            case Step::kBoth:
                ++a;
                ++b;
                break;
            case Step::kOnlyFirst:
                out << "  -   " << first[a++] << '\n';
                break;
            case Step::kOnlySecond:
                out << "  +   " << second[b++] << '\n';
                break;
        }
    }
}

}  // namespace

size_t showDifferences(std::ostream& out, const Recording& first, const Recording& second) {
    const std::vector<Lines> left = linesOf(first);
    const std::vector<Lines> right = linesOf(second);
    const auto steps =
        shortestWay(left.size(), right.size(), [&](size_t a, size_t b) { return left[a].call == right[b].call; });
    size_t a = 0;
    size_t b = 0;
    size_t differing = 0;
    for (const Step step : steps) {
        switch (step) {
            case Step::kOnlyFirst:
                out << "- call " << a + 1 << ", " << left[a].call << '\n';
                ++a;
                ++differing;
                break;
            case Step::kOnlySecond:
                out << "+ call " << b + 1 << ", " << right[b].call << '\n';
                ++b;
                ++differing;
                break;
            case Step::kBoth:
                if (left[a].inside != right[b].inside) {
                    out << "  call " << a + 1 << " and " << b + 1 << ", " << left[a].call << '\n';
                    showLines(out, left[a].inside, right[b].inside);
                    ++differing;
                }
                ++a;
                ++b;
                break;
        }
    }
    return differing;
}

}  // namespace quorvel::recorder
