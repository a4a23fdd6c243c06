#include "recorder/library/Variadic.h"

#include <atomic>
#include <cstring>

namespace quorvel::recorder {

using Kind = FormatShape::Kind;

namespace {

constexpr bool kWordsAreWide = sizeof(uintptr_t) == 8;
#if defined(__arm__)
// 64-bit arguments begin at even words there.
constexpr bool kWideIsAligned = true;
#else
constexpr bool kWideIsAligned = false;
#endif

FormatShape parse(const char* format) {
    FormatShape found;
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
        words += kind == FormatShape::kWide && !kWordsAreWide ? 3 : 1;
        if (words > kMaxFormatWords) break;
        found.add(kind);
    }
    return found;
}

// Formats that were parsed before, by the address of the format. A slot is written once, then only read.
struct Slot {
    std::atomic<const char*> format{nullptr};
    std::atomic<bool> taken{false};
    FormatShape shape{};
};
constexpr uint32_t kSlots = 512;
constinit Slot slots[kSlots];

// Visits each argument with the number of its word.
template <typename Visit>
inline void visitArguments(FormatShape shape, bool startsOdd, Visit visit) {
    uint32_t word = 0;
    uint64_t kinds = shape.kinds;
    for (uint32_t i = 0; i < shape.count; ++i, kinds >>= FormatShape::kBitsOfKind) {
        const auto kind = static_cast<Kind>(kinds & 3);
        if (kind == FormatShape::kWide && kWideIsAligned && ((word & 1) != 0) != startsOdd) ++word;
        visit(kind, word);
        word += kind == FormatShape::kWide && !kWordsAreWide ? 2 : 1;
    }
}

uint64_t wideAt(const FormatWords& words, uint32_t word) {
    if (kWordsAreWide) return words.words[word];
    return static_cast<uint64_t>(words.words[word]) | static_cast<uint64_t>(words.words[word + 1]) << 32;
}

LooseText textAt(const FormatWords& words, uint32_t word) {
    return LooseText(reinterpret_cast<const char*>(words.words[word]));
}

}  // namespace

FormatShape shapeOf(const char* format) {
    Slot& slot = slots[reinterpret_cast<uintptr_t>(format) % kSlots];
    if (slot.format.load(std::memory_order_acquire) == format) return slot.shape;
    const FormatShape found = parse(format);
    if (!slot.taken.exchange(true, std::memory_order_relaxed)) {
        slot.shape = found;
        slot.format.store(format, std::memory_order_release);
    }
    return found;
}

void takeWords(FormatWords& words, FormatShape shape, std::va_list list) {
#if defined(__LP64__)
    words.startsOdd = false;
    words.count = shape.count;
    for (uint32_t i = 0; i < shape.count; ++i)
        words.words[i] = va_arg(list, uintptr_t);
#else
    // The list is the address of its first word.
    const uintptr_t* at;
    static_assert(sizeof list == sizeof at);
    memcpy(&at, &list, sizeof at);
    words.startsOdd = (reinterpret_cast<uintptr_t>(at) & 4) != 0;
    words.count = 0;
    visitArguments(shape, words.startsOdd,
                   [&](Kind kind, uint32_t word) { words.count = word + (kind == FormatShape::kWide ? 2 : 1); });
    for (uint32_t i = 0; i < words.count; ++i)
        words.words[i] = at[i];
#endif
}

uint32_t sizeInRecord(FormatShape shape, const FormatWords& words) {
    uint32_t size = 0;
    visitArguments(shape, words.startsOdd, [&](Kind kind, uint32_t word) {
        switch (kind) {
            case FormatShape::kWord:
                size += sizeInRecord(Number{});
                break;
            case FormatShape::kWide:
                size += sizeInRecord(Number64{});
                break;
            case FormatShape::kText:
                size += sizeInRecord(textAt(words, word));
                break;
        }
    });
    return size;
}

void put(ValueWriter& writer, FormatShape shape, const FormatWords& words) {
    visitArguments(shape, words.startsOdd, [&](Kind kind, uint32_t word) {
        switch (kind) {
            case FormatShape::kWord:
                writer.put(Number{static_cast<uint32_t>(words.words[word])});
                break;
            case FormatShape::kWide:
                writer.put(Number64{wideAt(words, word)});
                break;
            case FormatShape::kText:
                writer.put(textAt(words, word));
                break;
        }
    });
}

}  // namespace quorvel::recorder
