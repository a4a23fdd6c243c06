// The arguments of a format: taken from a variable list, recorded, and passed on unchanged.
#pragma once

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdarg>
#include <cstdint>

#include "recorder/library/QueuedValues.h"

namespace quorvel::recorder {

/// The most words that the arguments of a format of the library take.
inline constexpr uint32_t kMaxFormatWords = 20;

/// The arguments of a format.
struct FormatShape {
    enum Kind : uint32_t { kWord, kWide, kText };
    static constexpr uint32_t kBitsOfKind = 2;

    uint64_t kinds;  ///< of the arguments in their order, the first lowest
    uint32_t count;
    uint32_t plainWords;  ///< count when each argument is one word, else kMixed
    uint32_t texts;       ///< a bit for each argument that is a text, the first lowest

    static constexpr uint32_t kMixed = 1U << 20;  ///< more than any record has room for
    [[nodiscard]] bool isPlain() const {
        return plainWords != kMixed;
    }

    void add(Kind kind) {
        if (kind == kText) texts |= 1U << count;
        kinds |= static_cast<uint64_t>(kind) << kBitsOfKind * count++;
    }
};

/// Calls `visit(kind, word)` for each argument with the number of its (first) word. `aligns`: 64-bit arguments begin
/// where a word's number is even, or odd when `startsOdd`.
template <typename Visit>
void visitArguments(const FormatShape& shape, bool aligns, bool startsOdd, Visit visit) {
    constexpr uint32_t kWideWords = sizeof(uint64_t) / sizeof(Word);
    uint32_t word = 0;
    uint64_t kinds = shape.kinds;
    for (uint32_t i = 0; i < shape.count; ++i, kinds >>= FormatShape::kBitsOfKind) {
        const auto kind = static_cast<FormatShape::Kind>(kinds & 3);
        if (kind == FormatShape::kWide && aligns && ((word & 1) != 0) != startsOdd) ++word;
        visit(kind, word);
        word += kind == FormatShape::kWide ? kWideWords : 1;
    }
}
/// Returns the 64-bit argument whose first word this is.
[[nodiscard]] inline uint64_t wideAt(const Word* word) {
    uint64_t value;
    memcpy(&value, word, sizeof value);
    return value;
}

/// Shapes of formats that were parsed before, by the address of the format. A slot is written once, then only read.
struct ShapeSlot {
    std::atomic<const char*> format;
    std::atomic<bool> taken;
    FormatShape shape;
};
inline constexpr uint32_t kShapeSlots = 512;
[[gnu::visibility("hidden")]] extern ShapeSlot shapeSlots[kShapeSlots];

[[nodiscard]] inline const ShapeSlot& slotOf(const char* format) {
    return shapeSlots[reinterpret_cast<uintptr_t>(format) % kShapeSlots];
}

/// Parses a format, and keeps the answer when there is room for it. Returns `own`, filled, or the kept answer.
[[nodiscard]] const FormatShape& parseShape(const char* format, FormatShape& own);

/// Returns what `format` takes. Formats are constants of the library: the answer for one is kept by its address. `own`
/// is room for an answer that is not.
[[nodiscard]] inline const FormatShape& shapeOf(const char* format, FormatShape& own) {
    const ShapeSlot& slot = slotOf(format);
    if (slot.format.load(std::memory_order_acquire) == format) return slot.shape;
    return parseShape(format, own);
}

/// A call's format, and the words of its arguments as the calling convention has them.
class FormatArguments {
  public:
    /// Room for the words and the format's shape, where they have to be copied.
    struct Room {
        FormatShape shape;
#if defined(__LP64__)
        Word words[kMaxFormatWords];
#endif
    };

    /// Takes the words from the list behind `format`. The list and the room must live as long as this.
#if defined(__LP64__)
    FormatArguments(const char* format, std::va_list list, Room& room)
        : format_(format), shape_(&shapeOf(format, room.shape)), words_(room.words), count_(shape_->count) {
        for (uint32_t i = 0; i < count_; ++i)
            room.words[i] = va_arg(list, Word);
    }
#else
    FormatArguments(const char* format, std::va_list list, Room& room) : FormatArguments(format, wordsOf(list), room) {}
    FormatArguments(const char* format, const Word* words, Room& room)
        : format_(format), shape_(&shapeOf(format, room.shape)), words_(words), count_(shape_->count) {
        if (!shape_->isPlain()) count_ = countMixed(*shape_, words_);
    }
#endif

    /// Calls `visit(kind, word)` for each argument with the address of its first word.
    template <typename Visit>
    void forEach(Visit visit) const {
        forEach(*shape_, words_, visit);
    }

    // As a value of a queued record.
    static constexpr Layout::Value kLayout{QueuedType::kFormat, ValueRole::kArgument};
    [[nodiscard]] Word* put(Word& word, Word* at, const Word* end) const {
        word = reinterpret_cast<uintptr_t>(format_);
        if (static_cast<uint32_t>(end - at) < count_) return nullptr;
        return shape_->isPlain() ? putWords(*shape_, words_, at, end) : putMixed(*shape_, words_, at, end);
    }
    /// Copies arguments of one word each, for which there is room, then the texts among them. As put otherwise.
    [[nodiscard]] static Word* putWords(const FormatShape& shape, const Word* words, Word* at, const Word* end) {
        const uint32_t count = shape.plainWords;
        uint32_t texts = shape.texts;
        const ConstantRange constants = constantRange;
        for (uint32_t i = 0; i < count; ++i)
            at[i] = words[i];
        Word* tail = at + count;
        for (; texts != 0; texts &= texts - 1) {
            const auto* const text = reinterpret_cast<const char*>(words[std::countr_zero(texts)]);
            tail = LooseText::putText(text, constants, tail, end);
            if (tail == nullptr) return nullptr;
        }
        return tail;
    }
    [[nodiscard]] uint32_t tailWords() const {
        return tailWords(*shape_, words_, count_);
    }

    /// Calls `function` with the words behind its own arguments.
    template <typename Call, typename... Arguments>
    [[gnu::always_inline]] auto call(Call* function, Arguments... arguments) const {
        const Word* const v = words_;
        switch (count_) {
            case 0:
                return function(arguments...);
            case 1:
                return function(arguments..., v[0]);
            case 2:
                return function(arguments..., v[0], v[1]);
            case 3:
                return function(arguments..., v[0], v[1], v[2]);
            case 4:
                return function(arguments..., v[0], v[1], v[2], v[3]);
            case 5:
                return function(arguments..., v[0], v[1], v[2], v[3], v[4]);
            default:
                return callWithMany(function, v, count_, arguments...);
        }
    }

  private:
#if defined(__arm__)
    static constexpr bool kAligns = true;
#else
    static constexpr bool kAligns = false;
#endif
#if !defined(__LP64__)
    // The list is the address of its first word.
    static const Word* wordsOf(const std::va_list& list) {
        const Word* words;
        static_assert(sizeof list == sizeof words);
        memcpy(&words, &list, sizeof words);
        return words;
    }
#endif
    static bool startsOdd(const Word* words) {
        return kAligns && (reinterpret_cast<uintptr_t>(words) & sizeof(Word)) != 0;
    }
    template <typename Visit>
    static void forEach(const FormatShape& shape, const Word* words, Visit visit) {
        visitArguments(shape, kAligns, startsOdd(words),
                       [&](FormatShape::Kind kind, uint32_t word) { visit(kind, words + word); });
    }

    // Without the words between that are there for alignment alone. None of these takes this object's address, which
    // would keep it in memory.
    [[nodiscard]] static Word* putMixed(const FormatShape& shape, const Word* words, Word* at, const Word* end);
    [[nodiscard]] static uint32_t countMixed(const FormatShape& shape, const Word* words);
    [[nodiscard]] static uint32_t tailWords(const FormatShape& shape, const Word* words, uint32_t count);

    template <typename Call, typename... Arguments>
    [[gnu::noinline]] static auto callWithMany(Call* function, const Word* words, uint32_t count,
                                               Arguments... arguments) {
        // Those beyond the format's are not looked at.
        Word v[kMaxFormatWords] = {};
        std::copy_n(words, std::min(count, kMaxFormatWords), v);
        return function(arguments..., v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9], v[10], v[11], v[12],
                        v[13], v[14], v[15], v[16], v[17], v[18], v[19]);
    }

    const char* format_;
    const FormatShape* shape_;
    const Word* words_;
    uint32_t count_;
};

}  // namespace quorvel::recorder
