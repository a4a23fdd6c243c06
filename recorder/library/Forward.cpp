// The exported functions: each records its call, passes it on to the recorded library, and records the return.
#include <algorithm>
#include <cstring>
#include <type_traits>

#include "recorder/library/Functions.h"
#include "recorder/library/Imports.h"
#include "recorder/library/Queue.h"
#include "recorder/library/RealLibrary.h"
#include "recorder/library/Session.h"
#include "recorder/library/Writer.h"

namespace quorvel::recorder {

namespace {

// The longest text or record of a caller that is recorded.
constexpr uint32_t kMaxMemory = 4096;

// One argument as a record has it.
struct Piece {
    enum class Kind : uint8_t {
        kNumber,
        kHandle,
        kText,    // NUL-terminated
        kInput,   // bytes that the call reads
        kMemory,  // bytes that the call may write
    };
    Kind kind;
    bool before;  // of memory: what is there before the call matters
    uint32_t size;
    union {
        uint32_t number;
        const void* address;
    };
};

constexpr uint32_t kMaxPieces = 10;

struct Pieces {
    Piece list[kMaxPieces];
    uint32_t count = 0;

    void number(uint32_t value) {
        Piece& piece = list[count++];
        piece.kind = Piece::Kind::kNumber;
        piece.number = value;
    }
    void bytes(Piece::Kind kind, const void* address, uint32_t size, bool before = true) {
        Piece& piece = list[count++];
        piece.kind = address == nullptr ? Piece::Kind::kHandle : kind;
        piece.before = before;
        piece.size = size;
        piece.address = address;
    }
};

// Records of the manager that pass through a function without a length.
constexpr uint32_t recordSizeOf(uint16_t function) {
    if (function == kCall_WiFiAccessPointStatsGet) return 236;
    if (function == kCall_WiFiAccessPointSsidNameStatusGet) return 40;
    return 0;
}

void addContext(Pieces& pieces, const ContextUse& use, const void* context) {
    pieces.bytes(Piece::Kind::kMemory, context, use.size, use.before);
    if (use.fieldSize == 0 || context == nullptr) return;
    pieces.bytes(Piece::Kind::kMemory, static_cast<const uint8_t*>(context) + use.fieldOffset, use.fieldSize);
}

// A length is behind what it bounds, at the end of the parameters.
constexpr uint32_t lastNumber() {
    return 0;
}
template <typename First, typename... Rest>
constexpr uint32_t lastNumber([[maybe_unused]] First first, Rest... rest) {
    if constexpr (sizeof...(Rest) != 0) return lastNumber(rest...);
    if constexpr (std::is_integral_v<First>) return static_cast<uint32_t>(first);
    return 0;
}

void add(Pieces& /*pieces*/, const ContextUse& /*use*/, uint16_t /*function*/) {}

// Adds the arguments from the first on. A length behind a text or record bounds what is recorded of it.
template <typename First, typename... Rest>
void add(Pieces& pieces, const ContextUse& use, uint16_t function, First first, Rest... rest) {
    if constexpr (std::is_integral_v<First>) {
        pieces.number(static_cast<uint32_t>(first));
    } else if constexpr (std::is_same_v<First, char*>) {
        pieces.bytes(Piece::Kind::kMemory, first, std::min(kMaxMemory, lastNumber(rest...)));
    } else if constexpr (std::is_same_v<First, const char*>) {
        if (use.fieldSize == 0) {
            pieces.bytes(Piece::Kind::kText, first, 0);
        } else {
            // A longer text is refused unread.
            pieces.bytes(Piece::Kind::kInput, first, std::min<uint32_t>(use.fieldSize, lastNumber(rest...)));
        }
    } else if constexpr (std::is_same_v<First, void*>) {
        if (use.size != 0) {
            addContext(pieces, use, first);
        } else if (const uint32_t size = recordSizeOf(function); size != 0) {
            pieces.bytes(Piece::Kind::kMemory, first, size);
        } else if (function == kCall_WiFiRadioChannelStatsGet2) {
            pieces.bytes(Piece::Kind::kMemory, first, std::min(kMaxMemory, lastNumber(rest...)));
        } else {
            pieces.bytes(Piece::Kind::kHandle, first, 0);
        }
    } else if constexpr (std::is_same_v<First, const void*> || std::is_function_v<std::remove_pointer_t<First>>) {
        pieces.bytes(Piece::Kind::kHandle, reinterpret_cast<const void*>(first), 0);
    } else {
        static_assert(std::is_arithmetic_v<std::remove_pointer_t<First>>);
        pieces.bytes(Piece::Kind::kMemory, first, sizeof *first);
    }
    add(pieces, use, function, rest...);
}

Text textOf(const Piece& piece) {
    return Text(static_cast<const char*>(piece.address));
}

uint32_t sizeBefore(const Piece& piece) {
    switch (piece.kind) {
        case Piece::Kind::kNumber:
            return sizeInRecord(Number{});
        case Piece::Kind::kHandle:
            return sizeInRecord(Handle{piece.address});
        case Piece::Kind::kText:
            return sizeInRecord(textOf(piece));
        case Piece::Kind::kInput:
        case Piece::Kind::kMemory:
            return 4 + (piece.before ? padded(piece.size) : 0);
    }
    return 0;
}

void putBefore(ValueWriter& writer, const Piece& piece) {
    switch (piece.kind) {
        case Piece::Kind::kNumber:
            return writer.put(Number{piece.number});
        case Piece::Kind::kHandle:
            return writer.put(Handle{piece.address});
        case Piece::Kind::kText:
            return writer.put(textOf(piece));
        case Piece::Kind::kInput:
            return writer.put(Bytes{piece.address, piece.size});
        case Piece::Kind::kMemory:
            return writer.put(Bytes{piece.address, piece.before ? piece.size : 0, ValueRole::kBefore});
    }
}

void recordCall(uint16_t function, const Pieces& pieces) {
    uint32_t size = sizeof(QueuedHead);
    for (uint32_t i = 0; i < pieces.count; ++i)
        size += sizeBefore(pieces.list[i]);
    uint8_t* const record = queue.reserve(size);
    if (record == nullptr) return;
    ValueWriter writer(record + sizeof(QueuedHead));
    for (uint32_t i = 0; i < pieces.count; ++i)
        putBefore(writer, pieces.list[i]);
    queue.finish(record, {size, RecordKind::kCall, static_cast<uint8_t>(pieces.count), function, 0});
}

void recordReturn(uint16_t function, const Pieces& pieces, uint32_t result) {
    uint32_t size = uint32_t{sizeof(QueuedHead)} + sizeInRecord(Number{});
    uint8_t values = 1;
    for (uint32_t i = 0; i < pieces.count; ++i) {
        if (pieces.list[i].kind == Piece::Kind::kMemory) size += 4 + padded(pieces.list[i].size);
    }
    uint8_t* const record = queue.reserve(size);
    if (record == nullptr) return;
    ValueWriter writer(record + sizeof(QueuedHead));
    writer.put(Number{result, ValueRole::kResult});
    for (uint32_t i = 0; i < pieces.count; ++i) {
        const Piece& piece = pieces.list[i];
        if (piece.kind != Piece::Kind::kMemory) continue;
        writer.put(Bytes{piece.address, piece.size, ValueRole::kAfter});
        ++values;
    }
    queue.finish(record, {size, RecordKind::kReturn, values, function, 0});
    queue.close();
}

template <typename Result, typename... Arguments>
[[gnu::noinline]] Result forward(uint16_t function, Result (*)(Arguments...), Arguments... arguments) {
    // Without the library every call fails, as the manager's failures do.
    if (!session.isOpen()) return static_cast<Result>(1);
    Pieces pieces;
    add(pieces, kContextUses[function], function, arguments...);
    recordCall(function, pieces);
    const Result result = reinterpret_cast<Result (*)(Arguments...)>(realFunctions[function])(arguments...);
    recordReturn(function, pieces, static_cast<uint32_t>(result));
    // A host may leave its process right behind this call.
    if (function == kCall_WiFiUnInit) storeEverything();
    return result;
}

// Registration hands the library the recorder's callback; the host's is called from there.
uint32_t forward(uint16_t function, uint32_t (*)(AssociatedDeviceCallback), AssociatedDeviceCallback callback) {
    if (!session.isOpen()) return 1;
    Pieces pieces;
    pieces.bytes(Piece::Kind::kHandle, reinterpret_cast<const void*>(callback), 0);
    recordCall(function, pieces);
    rememberCallback(callback);
    // Unrecorded, the listener is the library's alone and knows no callback of the recorder's.
    const bool records = callback != nullptr && session.isRecording();
    const uint32_t result = reinterpret_cast<decltype(&WiFiNewAPAssociatedDeviceCallbackRegister)>(
        realFunctions[function])(records ? &recordedCallback : callback);
    qvlThreadId = *realThreadId;
    recordReturn(function, pieces, result);
    return result;
}

}  // namespace

}  // namespace quorvel::recorder

#define QUORVEL_ARGUMENTS(...) __VA_OPT__(, ) __VA_ARGS__
#define FUNCTION(result, name, parameters, arguments)                                                          \
    result name parameters {                                                                                   \
        return quorvel::recorder::forward(quorvel::recorder::kCall_##name, &name QUORVEL_ARGUMENTS arguments); \
    }
#include "wifi/model/ExportedFunctions.def"
