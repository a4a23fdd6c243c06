// Recordings made by hand, record by record.
#pragma once

#include <cstring>
#include <string>

#include "recorder/format/Format.h"

namespace quorvel::recorder_test {

class RecordBuilder {
  public:
    explicit RecordBuilder(recorder::RecordKind kind, uint16_t function = 0, uint32_t thread = 1) {
        head_.kind = kind;
        head_.function = function;
        head_.thread = thread;
    }
    RecordBuilder& at(uint32_t seconds, uint32_t nanoseconds = 0) {
        head_.seconds = seconds;
        head_.nanoseconds = nanoseconds;
        return *this;
    }
    RecordBuilder& value(recorder::ValueRole role, recorder::ValueType type, const void* bytes, size_t size) {
        const uint32_t word = recorder::valueHead(role, type, static_cast<uint32_t>(size));
        append(&word, sizeof word);
        append(bytes, size);
        values_.resize((values_.size() + 3) / 4 * 4);
        ++head_.values;
        return *this;
    }
    RecordBuilder& number(uint32_t number, recorder::ValueRole role = recorder::ValueRole::kArgument) {
        return value(role, recorder::ValueType::kNumber, &number, sizeof number);
    }
    RecordBuilder& wide(uint64_t number) {
        return value(recorder::ValueRole::kArgument, recorder::ValueType::kNumber64, &number, sizeof number);
    }
    RecordBuilder& text(const std::string& text, recorder::ValueRole role = recorder::ValueRole::kArgument) {
        return value(role, recorder::ValueType::kText, text.data(), text.size());
    }
    RecordBuilder& bytes(const std::string& bytes, recorder::ValueRole role) {
        return value(role, recorder::ValueType::kBytes, bytes.data(), bytes.size());
    }
    RecordBuilder& name(uint32_t number) {
        return value(recorder::ValueRole::kArgument, recorder::ValueType::kName, &number, sizeof number);
    }
    [[nodiscard]] std::string str() const {
        std::string values = values_;
        values.resize((values.size() + 7) / 8 * 8);
        recorder::RecordHead head = head_;
        head.length = static_cast<uint32_t>(sizeof head + values.size());
        return std::string(reinterpret_cast<const char*>(&head), sizeof head) + values;
    }

  private:
    void append(const void* bytes, size_t size) {
        values_.append(static_cast<const char*>(bytes), size);
    }

    recorder::RecordHead head_{};
    std::string values_;
};

inline std::string magic() {
    return std::string(recorder::kMagic, sizeof recorder::kMagic);
}

inline std::string startRecord(uint32_t flags = recorder::kReplayable) {
    return RecordBuilder(recorder::RecordKind::kStart)
        .number(recorder::kFormatVersion)
        .number(4)
        .number(flags)
        .wide(1'700'000'000)
        .text("libquorvel_wifi.so")
        .str();
}

inline std::string nameRecord(uint32_t number, const std::string& text) {
    return RecordBuilder(recorder::RecordKind::kName).number(number).text(text).str();
}

}  // namespace quorvel::recorder_test
