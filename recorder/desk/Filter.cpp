#include "recorder/desk/Filter.h"

#include <algorithm>
#include <cctype>

namespace quorvel::recorder {

namespace {

bool containsIgnoringCase(const std::string& text, const std::string& part) {
    const auto same = [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

}  // namespace

bool Filter::takes(const Call& call) const {
    if (!parameter.empty() && !containsIgnoringCase(call.begin->function, parameter)) return false;
    if (thread && call.begin->thread != *thread) return false;
    if (from && call.begin->nanoseconds < *from) return false;
    if (until && call.begin->nanoseconds > *until) return false;
    if (!result) return true;
    if (call.end == nullptr) return false;
    const auto results = call.end->valuesOf(ValueRole::kResult);
    return !results.empty() && results.front()->number == *result;
}

}  // namespace quorvel::recorder
