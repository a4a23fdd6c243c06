// The file of a recording: written whole record by whole record, rotated at its limit.
#pragma once

#include <cstdint>

#include "recorder/format/Format.h"

namespace quorvel::recorder {

class RecordingFile {
  public:
    /// Creates `path` (mode 0600) and never follows a link to it; a file that is there becomes `path`.1. Returns null,
    /// or a sentence that says why it failed. `limit`: bytes after which isFull() holds, 0 for none.
    [[nodiscard]] const char* open(const char* path, uint64_t limit);

    /// Adds a record. False when the disk took none of what was buffered: everything buffered is lost then, and the
    /// file ends with a whole record.
    [[nodiscard]] bool add(const void* record, uint32_t length);
    /// Stores what is buffered; as add.
    [[nodiscard]] bool flush();
    /// How many records the last failed add or flush lost.
    [[nodiscard]] uint32_t lostRecords() const {
        return lost_;
    }

    /// Tells whether the limit is reached.
    [[nodiscard]] bool isFull() const {
        return limit_ != 0 && stored_ + used_ >= limit_;
    }
    void close();

  private:
    static constexpr uint32_t kBufferSize = 1U << 15;

    bool writeAll(const void* bytes, uint32_t length);

    int descriptor_ = -1;
    uint64_t limit_ = 0;
    uint64_t stored_ = 0;    // bytes of whole records in the file
    uint32_t used_ = 0;      // of the buffer
    uint32_t buffered_ = 0;  // records in the buffer
    uint32_t lost_ = 0;
    uint8_t buffer_[kBufferSize];
};

}  // namespace quorvel::recorder
