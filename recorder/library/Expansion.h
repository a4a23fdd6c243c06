// Makes of a queued record's words the values of a recording.
#pragma once

#include "recorder/library/Queue.h"
#include "recorder/library/ValueWriter.h"
#include "recorder/library/Variadic.h"

namespace quorvel::recorder {

/// Bytes that the values of a recording take more than the words of the queue, at most.
inline constexpr uint32_t kMostAdded = 512;

/// Writes the values of one record. `numberOf` gives a constant text's number in the recording.
template <typename NumberOf>
class Expansion {
  public:
    Expansion(const QueuedHead& record, ValueWriter& values, NumberOf numberOf)
        : record_(record),
          values_(values),
          numberOf_(numberOf),
          tail_(reinterpret_cast<const Word*>(&record) + kHeadWords + record.layout->count) {}

    /// Writes them. Returns the record's error.
    [[nodiscard]] int32_t run() {
        const auto* const words = reinterpret_cast<const Word*>(&record_) + kHeadWords;
        for (uint32_t i = 0; i < record_.layout->count; ++i)
            write(record_.layout->values[i], words[i]);
        return error_;
    }

  private:
    void write(Layout::Value value, Word word) {
        const auto* const address = reinterpret_cast<const char*>(word);
        switch (value.type) {
            case QueuedType::kNumber:
                return values_.number(static_cast<uint32_t>(word), value.role);
            case QueuedType::kHandle:
                return word == 0 ? values_.null(value.role) : values_.handle(word, value.role);
            case QueuedType::kConstant:
                return writeConstant(address, value.role);
            case QueuedType::kText:
                return writeTail(ValueType::kText, value.role, word);
            case QueuedType::kLooseText:
                return writeLoose(address, value.role);
            case QueuedType::kBytes:
                return writeTail(ValueType::kBytes, value.role, word);
            case QueuedType::kMemory:
                return word == kNullLength ? void() : writeTail(ValueType::kBytes, value.role, word);
            case QueuedType::kFormat:
                return writeFormat(address, value.role);
            case QueuedType::kError:
                error_ = static_cast<int32_t>(word);
                return;
        }
    }
    void writeConstant(const char* text, ValueRole role) {
        text == nullptr ? values_.null(role) : values_.name(numberOf_(text), role);
    }
    void writeLoose(const char* text, ValueRole role) {
        if (!LooseText::isInTail(text)) return writeConstant(text, role);
        const Word length = *tail_++;
        writeTail(ValueType::kText, role, length);
    }
    void writeTail(ValueType type, ValueRole role, Word length) {
        // A call's null is an argument.
        if (length == kNullLength) return values_.null(role == ValueRole::kBefore ? ValueRole::kArgument : role);
        const auto size = static_cast<uint32_t>(length);
        values_.raw(role, type, tail_, size);
        tail_ += type == ValueType::kText ? wordsOfText(size) : inWords(size);
    }
    void writeFormat(const char* format, ValueRole role) {
        writeConstant(format, role);
        FormatShape own;
        const FormatShape& shape = shapeOf(format, own);
        const Word* const words = tail_;
        visitArguments(shape, false, false, [&](FormatShape::Kind kind, uint32_t word) {
            tail_ = words + word + (kind == FormatShape::kWide ? sizeof(uint64_t) / sizeof(Word) : 1);
        });
        visitArguments(shape, false, false, [&](FormatShape::Kind kind, uint32_t word) {
            switch (kind) {
                case FormatShape::kWord:
                    return values_.number(static_cast<uint32_t>(words[word]), role);
                case FormatShape::kWide:
                    return values_.wide(wideAt(words + word), role);
                case FormatShape::kText:
                    return writeLoose(reinterpret_cast<const char*>(words[word]), role);
            }
        });
    }

    const QueuedHead& record_;
    ValueWriter& values_;
    NumberOf numberOf_;
    const Word* tail_;
    int32_t error_ = 0;
};

}  // namespace quorvel::recorder
