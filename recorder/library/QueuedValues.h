// The values of records as the host's threads leave them in the queue: raw words. The writer's thread makes of them
// what a recording has, so that a recorded call costs its thread little.
//
// A value is a word in the record's fixed part; a text or memory is copied to the record's tail, behind the fixed part.
#pragma once

#include <cstdint>
#include <cstring>

#include "recorder/format/Format.h"

namespace quorvel::recorder {

using Word = uintptr_t;

enum class QueuedType : uint8_t {
    kNumber,
    kHandle,     ///< an address that identifies something, or null
    kConstant,   ///< address of a text that lives as long as the library, or null
    kText,       ///< length, or kNullLength; the tail has the text
    kLooseText,  ///< address; unless it is null or a constant's, the tail has length and text
    kBytes,      ///< as a text
    kMemory,     ///< as bytes, but null is no value of the recording
    kFormat,     ///< address of a format; the tail has the words of its arguments, then length and text of each text
    kError,      ///< errno; no value of the recording
};

/// The length of a null text or memory.
inline constexpr Word kNullLength = ~Word{0};

/// What a record has: known when it is compiled, so that the record has only its address.
struct Layout {
    static constexpr uint32_t kMaxValues = 10;
    RecordKind kind;
    uint8_t count;
    struct Value {
        QueuedType type;
        ValueRole role;
    } values[kMaxValues];
};

/// The layout of a record of these values. Each source has its own, so that it is near.
template <RecordKind kKind, typename... Values>
static constexpr Layout kLayoutOf{kKind, sizeof...(Values), {Values::kLayout...}};

/// The library's constants: texts there live as long as the library does.
struct ConstantRange {
    uintptr_t begin;
    uintptr_t size;
    [[nodiscard]] bool holds(const void* address) const {
        return reinterpret_cast<uintptr_t>(address) - begin < size;
    }
};
[[gnu::visibility("hidden")]] extern ConstantRange constantRange;

constexpr uint32_t inWords(uint32_t bytes) {
    return (bytes + uint32_t{sizeof(Word)} - 1) / uint32_t{sizeof(Word)};
}

/// A text takes the word of its NUL too, so that its end is found a word at a time.
constexpr uint32_t wordsOfText(uint32_t length) {
    return length / uint32_t{sizeof(Word)} + 1;
}

/// Copies a text to `at`, its length to `length`. Returns the word behind the text, or null when it does not end before
/// `end`.
[[nodiscard]] Word* copyText(Word* at, const Word* end, Word* length, const char* text);
/// The same for a manager's value, whose NUL may be missing.
[[nodiscard]] Word* copyValue(Word* at, const Word* end, Word* length, const char* text);
/// Copies memory in the same way.
[[nodiscard]] inline Word* copyBytes(Word* at, const Word* end, const void* bytes, uint32_t size) {
    const uint32_t words = inWords(size);
    if (words > static_cast<uint32_t>(end - at)) return nullptr;
    memcpy(at, bytes, size);
    return at + words;
}

// Each value has put(word, at, end): it writes its word and, at `at`, its part of the tail. It returns the word behind
// that, or null when the tail has no room before `end`. tailWords() is how many words that takes.

template <ValueRole kRole>
struct NumberIn {
    static constexpr Layout::Value kLayout{QueuedType::kNumber, kRole};
    uint32_t value;

    [[nodiscard]] Word* put(Word& word, Word* at, const Word* /*end*/) const {
        word = value;
        return at;
    }
    [[nodiscard]] uint32_t tailWords() const {
        return 0;
    }
};
using Number = NumberIn<ValueRole::kArgument>;
using ResultNumber = NumberIn<ValueRole::kResult>;
using NumberAfter = NumberIn<ValueRole::kAfter>;

/// The error of a C library's call.
struct Error {
    static constexpr Layout::Value kLayout{QueuedType::kError, ValueRole::kArgument};
    int error;

    [[nodiscard]] Word* put(Word& word, Word* at, const Word* /*end*/) const {
        word = static_cast<uint32_t>(error);
        return at;
    }
    [[nodiscard]] uint32_t tailWords() const {
        return 0;
    }
};

/// An address that identifies something to the platform.
template <ValueRole kRole>
struct HandleIn {
    static constexpr Layout::Value kLayout{QueuedType::kHandle, kRole};
    const void* address;

    [[nodiscard]] Word* put(Word& word, Word* at, const Word* /*end*/) const {
        word = reinterpret_cast<uintptr_t>(address);
        return at;
    }
    [[nodiscard]] uint32_t tailWords() const {
        return 0;
    }
};
using Handle = HandleIn<ValueRole::kArgument>;
using ResultHandle = HandleIn<ValueRole::kResult>;
using HandleAfter = HandleIn<ValueRole::kAfter>;

/// A text that lives as long as the library, or null: the writer reads it.
struct Constant {
    static constexpr Layout::Value kLayout{QueuedType::kConstant, ValueRole::kArgument};
    const char* text;

    [[nodiscard]] Word* put(Word& word, Word* at, const Word* /*end*/) const {
        word = reinterpret_cast<uintptr_t>(text);
        return at;
    }
    [[nodiscard]] uint32_t tailWords() const {
        return 0;
    }
};

/// A NUL-terminated text, or null.
template <ValueRole kRole>
struct TextIn {
    static constexpr Layout::Value kLayout{QueuedType::kText, kRole};
    const char* text;

    [[nodiscard]] Word* put(Word& word, Word* at, const Word* end) const {
        word = kNullLength;
        return text == nullptr ? at : copyText(at, end, &word, text);
    }
    [[nodiscard]] uint32_t tailWords() const {
        return text == nullptr ? 0 : wordsOfText(static_cast<uint32_t>(strlen(text)));
    }
};
using Text = TextIn<ValueRole::kArgument>;
using ResultText = TextIn<ValueRole::kResult>;

/// The value of a manager's variable, of which the NUL may be missing.
struct ValueAfter {
    static constexpr uint32_t kLimit = 1024;
    static constexpr Layout::Value kLayout{QueuedType::kText, ValueRole::kAfter};
    const char* text;

    [[nodiscard]] Word* put(Word& word, Word* at, const Word* end) const {
        return copyValue(at, end, &word, text);
    }
    [[nodiscard]] uint32_t tailWords() const {
        return wordsOfText(static_cast<uint32_t>(strnlen(text, kLimit)));
    }
};

/// A NUL-terminated text, or null, that may be one of the library's constants.
struct LooseText {
    static constexpr Layout::Value kLayout{QueuedType::kLooseText, ValueRole::kArgument};
    const char* text;

    [[nodiscard]] Word* put(Word& word, Word* at, const Word* end) const {
        word = reinterpret_cast<uintptr_t>(text);
        return putText(text, constantRange, at, end);
    }
    [[nodiscard]] uint32_t tailWords() const {
        return isInTail(text) ? 1 + wordsOfText(static_cast<uint32_t>(strlen(text))) : 0;
    }

    /// Tells whether the text of this address is in the tail.
    [[nodiscard]] static bool isInTail(const char* text) {
        return !constantRange.holds(text) && text != nullptr;
    }
    /// Copies length and text, if they have to be in the tail.
    [[nodiscard]] static Word* putText(const char* text, ConstantRange constants, Word* at, const Word* end) {
        if (constants.holds(text) || text == nullptr) return at;
        return at == end ? nullptr : copyText(at + 1, end, at, text);
    }
};

/// Memory, or null.
template <ValueRole kRole, QueuedType kType = QueuedType::kBytes>
struct BytesIn {
    static constexpr Layout::Value kLayout{kType, kRole};
    const void* bytes;
    uint32_t size;

    [[nodiscard]] Word* put(Word& word, Word* at, const Word* end) const {
        word = kNullLength;
        if (bytes == nullptr) return at;
        word = size;
        return copyBytes(at, end, bytes, size);
    }
    [[nodiscard]] uint32_t tailWords() const {
        return bytes == nullptr ? 0 : inWords(size);
    }
};
using Bytes = BytesIn<ValueRole::kArgument>;
using BytesBefore = BytesIn<ValueRole::kBefore>;
using BytesAfter = BytesIn<ValueRole::kAfter>;
/// Memory that is left out when it is null.
template <ValueRole kRole>
using MemoryIn = BytesIn<kRole, QueuedType::kMemory>;

/// The same of a size that is known.
template <ValueRole kRole, uint32_t kSize, QueuedType kType = QueuedType::kMemory>
struct FixedIn {
    static constexpr Layout::Value kLayout{kType, kRole};
    const void* bytes;

    [[nodiscard]] Word* put(Word& word, Word* at, const Word* end) const {
        word = kNullLength;
        if (bytes == nullptr) return at;
        word = kSize;
        return copyBytes(at, end, bytes, kSize);
    }
    [[nodiscard]] uint32_t tailWords() const {
        return inWords(kSize);
    }
};

}  // namespace quorvel::recorder
