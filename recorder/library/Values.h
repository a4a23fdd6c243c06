// The values of records as the recorder writes them into its queue.
#pragma once

#include <cstdint>
#include <cstring>

#include "recorder/format/Format.h"

namespace quorvel::recorder {

struct Number {
    uint32_t value;
    ValueRole role = ValueRole::kArgument;
};
struct Number64 {
    uint64_t value;
    ValueRole role = ValueRole::kArgument;
};
/// An address that identifies something to the platform.
struct Handle {
    const void* address;
    ValueRole role = ValueRole::kArgument;
};
/// A NUL-terminated text, or null.
struct Text {
    const char* text;
    uint32_t length;
    ValueRole role;
    explicit Text(const char* from, ValueRole in = ValueRole::kArgument)
        : text(from), length(from == nullptr ? 0 : static_cast<uint32_t>(strlen(from))), role(in) {}
    /// A text of at most `limit` bytes, of which the NUL may be missing.
    Text(const char* from, size_t limit, ValueRole in)
        : text(from), length(from == nullptr ? 0 : static_cast<uint32_t>(strnlen(from, limit))), role(in) {}
};
/// The library's constants: texts there live as long as the library does.
struct ConstantRange {
    uintptr_t begin;
    uintptr_t size;
    [[nodiscard]] bool holds(const void* address) const {
        return reinterpret_cast<uintptr_t>(address) - begin < size;
    }
};
extern ConstantRange constantRange;

/// A text that lives as long as the library: the writer copies it once.
struct Constant {
    const char* text;
    ValueRole role = ValueRole::kArgument;
};
/// A NUL-terminated text, or null, that may be one of the library's constants.
struct LooseText {
    const char* text;
    uint32_t length;  ///< 0 for a constant
    bool constant;
    explicit LooseText(const char* from)
        : text(from),
          length(from == nullptr || constantRange.holds(from) ? 0 : static_cast<uint32_t>(strlen(from))),
          constant(constantRange.holds(from)) {}
};
struct Bytes {
    const void* bytes;
    uint32_t size;
    ValueRole role = ValueRole::kArgument;
};

constexpr uint32_t sizeInRecord(const Number& /*value*/) {
    return 8;
}
constexpr uint32_t sizeInRecord(const Number64& /*value*/) {
    return 12;
}
constexpr uint32_t sizeInRecord(const Handle& value) {
    return value.address == nullptr ? 4 : 12;
}
constexpr uint32_t sizeInRecord(const Text& value) {
    return 4 + padded(value.length);
}
constexpr uint32_t sizeInRecord(const Constant& value) {
    return value.text == nullptr ? 4 : 12;
}
inline uint32_t sizeInRecord(const LooseText& value) {
    return value.constant ? 12 : 4 + padded(value.length);
}
constexpr uint32_t sizeInRecord(const Bytes& value) {
    return 4 + padded(value.bytes == nullptr ? 0 : value.size);
}

/// Writes values one after the other; `at` is a multiple of 4.
class ValueWriter {
  public:
    explicit ValueWriter(uint8_t* at) : at_(at) {}

    void put(const Number& value) {
        word(valueHead(value.role, ValueType::kNumber, 4));
        word(value.value);
    }
    void put(const Number64& value) {
        word(valueHead(value.role, ValueType::kNumber64, 8));
        wide(value.value);
    }
    void put(const Handle& value) {
        address(value.role, ValueType::kHandle, value.address);
    }
    void put(const Constant& value) {
        address(value.role, ValueType::kConstant, value.text);
    }
    void put(const LooseText& value) {
        if (value.constant) return address(ValueRole::kArgument, ValueType::kConstant, value.text);
        bytes(ValueRole::kArgument, ValueType::kText, value.text, value.length);
    }
    void put(const Text& value) {
        bytes(value.role, ValueType::kText, value.text, value.length);
    }
    void put(const Bytes& value) {
        bytes(value.role, ValueType::kBytes, value.bytes, value.size);
    }
    void name(ValueRole role, uint32_t number) {
        word(valueHead(role, ValueType::kName, 4));
        word(number);
    }
    void raw(ValueRole role, ValueType type, const void* payload, uint32_t size) {
        word(valueHead(role, type, size));
        memcpy(at_, payload, size);
        memset(at_ + size, 0, padded(size) - size);
        at_ += padded(size);
    }

  private:
    void word(uint32_t value) {
        memcpy(at_, &value, sizeof value);
        at_ += sizeof value;
    }
    void wide(uint64_t value) {
        memcpy(at_, &value, sizeof value);
        at_ += sizeof value;
    }
    void address(ValueRole role, ValueType type, const void* value) {
        if (value == nullptr) return word(valueHead(role, ValueType::kNull, 0));
        word(valueHead(role, type, 8));
        wide(reinterpret_cast<uintptr_t>(value));
    }
    void bytes(ValueRole role, ValueType type, const void* from, uint32_t size) {
        if (from == nullptr) return word(valueHead(role, ValueType::kNull, 0));
        word(valueHead(role, type, size));
        // The padding is part of the file. Its word is cleared first: the bytes may end in it.
        if (size % 4 != 0) memset(at_ + size / 4 * 4, 0, 4);
        memcpy(at_, from, size);
        at_ += padded(size);
    }

    uint8_t* at_;
};

}  // namespace quorvel::recorder
