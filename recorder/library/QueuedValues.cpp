#include "recorder/library/QueuedValues.h"

#include <bit>

namespace quorvel::recorder {

namespace {

// Most texts are short: these words of one are copied without the C library, whose two calls cost more.
constexpr uint32_t kShortWords = 4;

template <typename LengthOf>
[[gnu::noinline]] Word* copyLong(Word* at, const Word* end, Word* length, const char* text, LengthOf lengthOf) {
    const uint32_t size = lengthOf(text);
    *length = size;
    const uint32_t words = wordsOfText(size);
    if (words > static_cast<uint32_t>(end - at)) return nullptr;
    memcpy(at, text, size);
    return at + words;
}

// A word is read up to its end, behind the NUL too: it is aligned, so that it is in one page with the NUL.
template <typename LengthOf>
[[gnu::always_inline, gnu::no_sanitize("address", "thread")]] inline Word* copy(Word* at, const Word* end, Word* length,
                                                                                const char* text, LengthOf lengthOf) {
    using TextWord [[gnu::may_alias]] = Word;
    constexpr Word kOnes = ~Word{0} / 0xFF;
    constexpr Word kHighBits = kOnes << 7;
    if (reinterpret_cast<uintptr_t>(text) % sizeof(Word) == 0 && static_cast<uint32_t>(end - at) >= kShortWords) {
        const auto* from = reinterpret_cast<const TextWord*>(text);
#pragma GCC unroll 4
        for (uint32_t i = 0; i < kShortWords; ++i) {
            const Word word = from[i];
            at[i] = word;
            const Word nuls = (word - kOnes) & ~word & kHighBits;
            if (nuls == 0) continue;
            *length = i * sizeof word + static_cast<uint32_t>(std::countr_zero(nuls)) / 8;
            return at + i + 1;
        }
    }
    return copyLong(at, end, length, text, lengthOf);
}

}  // namespace

[[gnu::no_sanitize("address", "thread")]] Word* copyText(Word* at, const Word* end, Word* length, const char* text) {
    return copy(at, end, length, text, [](const char* all) { return static_cast<uint32_t>(strlen(all)); });
}

[[gnu::no_sanitize("address", "thread")]] Word* copyValue(Word* at, const Word* end, Word* length, const char* text) {
    return copy(at, end, length, text,
                [](const char* all) { return static_cast<uint32_t>(strnlen(all, ValueAfter::kLimit)); });
}

}  // namespace quorvel::recorder
