#include "gateway/hostd/TableEntry.h"

namespace quorvel::hostd {
namespace {

constexpr std::size_t kGetter = 6;
constexpr std::size_t kInit = 36;
constexpr std::size_t kApply = 37;
constexpr std::size_t kSetter = 39;
constexpr std::size_t kDeepApply = 54;
constexpr std::size_t kDeepGetter = 55;
// The setters of depth 2 follow no rule: text shares the getter's word, the others have words of their own.
constexpr std::size_t kDeepTextSetter = 55;
constexpr std::size_t kDeepBooleanSetter = 59;
constexpr std::size_t kDeepNumberSetter = 61;
constexpr std::size_t kDeepDirectSetter = 65;

std::size_t number(Type type) {
    return static_cast<std::size_t>(type);
}

}  // namespace

Word TableEntry::getter(Type type, unsigned depth) const {
    if (depth < 2) return words[kGetter + 2 * number(type) + depth];
    // A writable text of depth 2 has its setter in the getter's word.
    if (type == Type::kText && writable()) return 0;
    return words[kDeepGetter + number(type)];
}

Word TableEntry::setter(Type type, unsigned depth) const {
    if (!writable()) return 0;
    if (depth < 2) return words[kSetter + 2 * number(type) + depth];
    switch (type) {
        case Type::kText:
            return words[kDeepTextSetter];
        case Type::kBoolean:
            return words[kDeepBooleanSetter];
        case Type::kUnsignedInt:
        case Type::kInt:
            return words[kDeepDirectSetter] != 0 ? words[kDeepDirectSetter] : words[kDeepNumberSetter];
    }
    return 0;
}

Word TableEntry::initContext(unsigned depth) const {
    return depth < 2 && writable() ? words[kInit] : 0;
}

Word TableEntry::applyContext(unsigned depth) const {
    if (!writable()) return 0;
    return depth < 2 ? words[kApply + depth] : words[kDeepApply];
}

bool TableEntry::writesAtOnce(Type type, unsigned depth) const {
    return depth == 2 && writable() && (type == Type::kUnsignedInt || type == Type::kInt) &&
           words[kDeepDirectSetter] != 0;
}

}  // namespace quorvel::hostd
