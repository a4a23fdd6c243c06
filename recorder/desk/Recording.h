// A recording as read from its file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "recorder/format/Format.h"

namespace quorvel::recorder {

/// One value of a record.
struct Value {
    ValueRole role = ValueRole::kArgument;
    ValueType type = ValueType::kNull;
    uint64_t number = 0;  ///< of numbers, handles and names
    std::string bytes;    ///< of texts and bytes; of a name the text that it numbers

    friend bool operator==(const Value&, const Value&) = default;
};

struct Record {
    uint64_t position = 0;  ///< bytes from the file's start
    RecordKind kind = RecordKind::kEnd;
    std::string function;  ///< empty where the kind has none
    uint32_t thread = 0;
    uint64_t nanoseconds = 0;  ///< since the recording's first record
    int32_t error = 0;
    std::vector<Value> values;

    /// Returns the values of a role, in their order.
    [[nodiscard]] std::vector<const Value*> valuesOf(ValueRole role) const;
};

/// Why a file is no recording, or where it is damaged.
struct RecordingError {
    uint64_t position = 0;
    std::string reason;
};

struct Recording {
    uint32_t wordSize = 0;  ///< bytes of the device's pointers
    bool replayable = false;
    bool macsKept = false;
    bool ssidsKept = false;
    uint64_t wallSeconds = 0;  ///< since 1970, when the recording began
    std::string library;       ///< file name of the recorded library
    bool ended = false;        ///< the recorder ended it in order
    uint64_t unreadBytes = 0;  ///< of a record that was cut off at the file's end
    std::vector<Record> records;
};

/// Reads a recording from its bytes. A last record that is cut off is left out and counted in `unreadBytes`; anything
/// else that is wrong is an error.
[[nodiscard]] std::variant<Recording, RecordingError> readRecording(std::string_view bytes);

/// Reads a recording from a file. The error names the file.
[[nodiscard]] std::variant<Recording, RecordingError> readRecordingFile(const std::string& path);

}  // namespace quorvel::recorder
