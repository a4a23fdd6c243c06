// The form of a recording: a magic text, then records. docs/recording.md describes it for other readers.
//
// The records in the recorder's queue have the same form, but for two fields that only the file has right: names (kName
// in the file, kConstant in the queue) and thread numbers. All integers are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvel::recorder {

inline constexpr char kMagic[8] = {'Q', 'V', 'L', 'R', 'E', 'C', '0', '1'};
inline constexpr uint32_t kFormatVersion = 1;

/// No record is longer; a longer one in a file is damage.
inline constexpr uint32_t kMaxRecordSize = 1U << 20;

enum class RecordKind : uint8_t {
    kStart = 1,     ///< version, word size, flags, wall-clock seconds, the library's file name
    kName = 2,      ///< gives a number to a text: functions and constant texts are named once
    kCall = 3,      ///< the host calls the library: arguments, memory before
    kReturn = 4,    ///< the call returns: result, memory after
    kPlatform = 5,  ///< the library called the platform and got its answer: arguments, result, memory after
    kLog = 6,       ///< the library logged a line
    kCallback = 7,  ///< the library calls the host's callback
    kGap = 8,       ///< records are missing here: how many, and why
    kEnd = 9,       ///< the recording ended in order
    kThread = 10,   ///< a thread of the library begins
};

/// Flags of kStart.
enum StartFlag : uint32_t {
    kReplayable = 1,  ///< the library had just been loaded
    kMacsKept = 2,    ///< MAC addresses are the device's own
    kSsidsKept = 4,   ///< SSIDs are the device's own
};

/// Why records are missing.
enum class GapReason : uint32_t { kQueueFull = 1, kDiskFull = 2 };

struct RecordHead {
    uint32_t length;  ///< bytes of the whole record, a multiple of 8
    RecordKind kind;
    uint8_t values;     ///< how many values follow
    uint16_t function;  ///< number of the function's name, where the kind has one
    uint32_t thread;    ///< from 1, in the order in which threads appear
    uint32_t seconds;   ///< since an arbitrary moment, on a clock that only goes forward
    uint32_t nanoseconds;
    int32_t error;  ///< errno after a call of the C library
};
static_assert(sizeof(RecordHead) == 24);

enum class ValueType : uint8_t {
    kNull = 0,      ///< a null pointer; no payload
    kNumber = 1,    ///< 4 bytes
    kNumber64 = 2,  ///< 8 bytes
    kHandle = 3,    ///< 8 bytes: an address that only identifies something
    kText = 4,      ///< a NUL-terminated text, without its NUL
    kBytes = 5,
    kName = 6,      ///< 4 bytes: the number of a named text
    kConstant = 7,  ///< 8 bytes, in the queue only: address of a text that lives as long as the library
};

/// The role of a value in its call.
enum class ValueRole : uint8_t {
    kArgument = 0,
    kBefore = 1,  ///< memory that the call may read or write, before it
    kResult = 2,
    kAfter = 3,  ///< memory after the call
};

/// A value is this word, then its payload, padded to a multiple of 4 bytes.
constexpr uint32_t valueHead(ValueRole role, ValueType type, uint32_t size) {
    return static_cast<uint32_t>(role) << 28 | static_cast<uint32_t>(type) << 24 | size;
}
constexpr ValueRole roleOf(uint32_t head) {
    return static_cast<ValueRole>(head >> 28);
}
constexpr ValueType typeOf(uint32_t head) {
    return static_cast<ValueType>(head >> 24 & 0xF);
}
constexpr uint32_t sizeOf(uint32_t head) {
    return head & 0xFFFFFF;
}
constexpr uint32_t padded(uint32_t size) {
    return (size + 3) & ~3U;
}

}  // namespace quorvel::recorder
