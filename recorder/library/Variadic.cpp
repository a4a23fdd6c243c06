#include "recorder/library/Variadic.h"

namespace quorvel::recorder {

using Kind = FormatShape::Kind;

constinit ShapeSlot shapeSlots[kShapeSlots] = {};

namespace {

// How many slots a format may be in.
constexpr uint32_t kProbes = 4;

FormatShape parse(const char* format) {
    FormatShape found{};
    uint32_t words = 0;
    for (const char* at = format; *at != '\0'; ++at) {
        if (*at != '%' || *++at == '%') continue;
        uint32_t longs = 0;
        // A width or precision may be an argument of its own.
        for (; *at != '\0' && strchr("0123456789.-+ #*lhzjt", *at) != nullptr; ++at) {
            if (*at == 'l') ++longs;
            if (*at != '*' || words >= kMaxFormatWords) continue;
            found.add(FormatShape::kWord);
            ++words;
        }
        if (*at == '\0') break;
        const Kind kind = *at == 's' ? FormatShape::kText : longs >= 2 ? FormatShape::kWide : FormatShape::kWord;
        // A wide one may need a word of padding.
        words += kind == FormatShape::kWide && sizeof(Word) < sizeof(uint64_t) ? 3 : 1;
        if (words > kMaxFormatWords) break;
        found.add(kind);
    }
    found.plainWords = words == found.count ? words : FormatShape::kMixed;
    return found;
}

}  // namespace

const FormatShape& parseShape(const char* format, FormatShape& own) {
    for (uint32_t probe = 0; probe < kProbes; ++probe) {
        ShapeSlot& slot = shapeSlots[(reinterpret_cast<uintptr_t>(format) + probe) % kShapeSlots];
        if (slot.format.load(std::memory_order_acquire) == format) return slot.shape;
        if (slot.taken.exchange(true, std::memory_order_relaxed)) continue;
        slot.shape = parse(format);
        slot.format.store(format, std::memory_order_release);
        return slot.shape;
    }
    own = parse(format);
    return own;
}

uint32_t FormatArguments::countMixed(const FormatShape& shape, const Word* words) {
    uint32_t count = 0;
    forEach(shape, words, [&](Kind kind, const Word* word) {
        count = static_cast<uint32_t>(word - words) +
                (kind == FormatShape::kWide ? uint32_t{sizeof(uint64_t) / sizeof(Word)} : 1);
    });
    return count;
}

uint32_t FormatArguments::tailWords(const FormatShape& shape, const Word* words, uint32_t count) {
    forEach(shape, words, [&](Kind kind, const Word* word) {
        if (kind == FormatShape::kText) count += LooseText{reinterpret_cast<const char*>(*word)}.tailWords();
    });
    return count;
}

Word* FormatArguments::putMixed(const FormatShape& shape, const Word* words, Word* at, const Word* end) {
    Word* tail = at;
    forEach(shape, words, [&](Kind kind, const Word* word) {
        *tail++ = word[0];
        if (kind == FormatShape::kWide && sizeof(Word) < sizeof(uint64_t)) *tail++ = word[1];
    });
    forEach(shape, words, [&](Kind kind, const Word* word) {
        if (kind != FormatShape::kText || tail == nullptr) return;
        tail = LooseText::putText(reinterpret_cast<const char*>(*word), constantRange, tail, end);
    });
    return tail;
}

}  // namespace quorvel::recorder
