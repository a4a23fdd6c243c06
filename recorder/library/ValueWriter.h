// The values of records as a recording has them.
#pragma once

#include <cstdint>
#include <cstring>

#include "recorder/format/Format.h"

namespace quorvel::recorder {

/// Writes values one after the other; `at` is a multiple of 4 and has room for them.
class ValueWriter {
  public:
    explicit ValueWriter(uint8_t* at) : at_(at), begin_(at) {}

    void number(uint32_t value, ValueRole role = ValueRole::kArgument) {
        raw(role, ValueType::kNumber, &value, sizeof value);
    }
    void wide(uint64_t value, ValueRole role = ValueRole::kArgument) {
        raw(role, ValueType::kNumber64, &value, sizeof value);
    }
    void handle(uint64_t address, ValueRole role) {
        raw(role, ValueType::kHandle, &address, sizeof address);
    }
    void text(const char* value, uint32_t length, ValueRole role = ValueRole::kArgument) {
        raw(role, ValueType::kText, value, length);
    }
    void name(uint32_t number, ValueRole role = ValueRole::kArgument) {
        raw(role, ValueType::kName, &number, sizeof number);
    }
    void null(ValueRole role) {
        raw(role, ValueType::kNull, "", 0);
    }
    void raw(ValueRole role, ValueType type, const void* payload, uint32_t size) {
        const uint32_t head = valueHead(role, type, size);
        memcpy(at_, &head, sizeof head);
        at_ += sizeof head;
        memcpy(at_, payload, size);
        memset(at_ + size, 0, padded(size) - size);
        at_ += padded(size);
        ++count_;
    }

    /// How many values were written.
    [[nodiscard]] uint32_t count() const {
        return count_;
    }
    /// Their bytes.
    [[nodiscard]] uint32_t size() const {
        return static_cast<uint32_t>(at_ - begin_);
    }

  private:
    uint8_t* at_;
    uint8_t* begin_;
    uint32_t count_ = 0;
};

}  // namespace quorvel::recorder
