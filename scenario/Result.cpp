#include "scenario/Result.h"

#include <algorithm>

namespace quorvel::scenario {

std::size_t Result::count(Entry::Kind kind) const {
    return static_cast<std::size_t>(
        std::count_if(entries.begin(), entries.end(), [kind](const Entry& entry) { return entry.kind == kind; }));
}

bool Result::passed() const {
    return count(Entry::Kind::kFailed) == 0 && count(Entry::Kind::kStepFailed) == 0;
}

}  // namespace quorvel::scenario
