// The arguments of a format: taken from a variable list, recorded, and passed on unchanged.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "recorder/library/Queue.h"

namespace quorvel::recorder {

/// The most words that the arguments of a format of the library take.
inline constexpr uint32_t kMaxFormatWords = 20;

/// The arguments of a format.
struct FormatShape {
    enum Kind : uint32_t { kWord, kWide, kText };
    static constexpr uint32_t kBitsOfKind = 2;

    uint64_t kinds = 0;  ///< of the arguments in their order, the first lowest
    uint32_t count = 0;

    void add(Kind kind) {
        kinds |= static_cast<uint64_t>(kind) << kBitsOfKind * count++;
    }
};

/// Returns what `format` takes. Formats are constants of the library: the answer for one is kept by its address.
[[nodiscard]] FormatShape shapeOf(const char* format);

/// The words of a call's variable arguments as the calling convention has them.
struct FormatWords {
    uintptr_t words[kMaxFormatWords];
    uint32_t count;
    bool startsOdd;  ///< the first word is not where a 64-bit argument may begin
};

/// Takes the words that `shape` needs from the list.
void takeWords(FormatWords& words, FormatShape shape, std::va_list list);

/// Bytes of the arguments in a record, and the arguments written there.
[[nodiscard]] uint32_t sizeInRecord(FormatShape shape, const FormatWords& words);
void put(ValueWriter& writer, FormatShape shape, const FormatWords& words);

/// Appends a record of the values given and, behind them, the format's arguments.
template <typename... Values>
void appendFormatted(RecordKind kind, uint16_t function, FormatShape shape, const FormatWords& words,
                     const Values&... values) {
    const uint32_t size = uint32_t{sizeof(QueuedHead)} + (0 + ... + sizeInRecord(values)) + sizeInRecord(shape, words);
    uint8_t* const record = queue.reserve(size);
    if (record == nullptr) return;
    ValueWriter writer(record + sizeof(QueuedHead));
    (writer.put(values), ...);
    put(writer, shape, words);
    queue.finish(record, {size, kind, static_cast<uint8_t>(sizeof...(values) + shape.count), function, 0});
}

/// Calls `call` with the words behind its own arguments; those beyond the format's are not looked at.
template <typename Call, typename... Arguments>
auto callWithWords(Call* call, const FormatWords& w, Arguments... arguments) {
    const uintptr_t* const v = w.words;
    if (w.count <= 2) return call(arguments..., v[0], v[1]);
    if (w.count <= 5) return call(arguments..., v[0], v[1], v[2], v[3], v[4]);
    return call(arguments..., v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9], v[10], v[11], v[12], v[13],
                v[14], v[15], v[16], v[17], v[18], v[19]);
}

}  // namespace quorvel::recorder
