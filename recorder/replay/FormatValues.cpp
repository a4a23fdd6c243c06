#include "recorder/replay/FormatValues.h"

#include <cstring>

#include "recorder/library/Variadic.h"

namespace quorvel::recorder {

Value nameValue(const char* text) {
    return {ValueRole::kArgument, ValueType::kName, 0, text == nullptr ? "" : text};
}

void appendFormatValues(std::vector<Value>& values, const char* format, std::va_list list) {
    const FormatShape shape = shapeOf(format);
    FormatWords words;
    takeWords(words, shape, list);
    // As the recorder writes them, so that both are compared in one form.
    std::vector<uint8_t> bytes(sizeInRecord(shape, words));
    ValueWriter writer(bytes.data());
    put(writer, shape, words);
    const uint8_t* at = bytes.data();
    for (uint32_t i = 0; i < shape.count; ++i) {
        uint32_t head;
        std::memcpy(&head, at, sizeof head);
        at += sizeof head;
        Value value{roleOf(head), typeOf(head), 0, {}};
        if (value.type == ValueType::kText) {
            value.bytes.assign(reinterpret_cast<const char*>(at), sizeOf(head));
        } else if (sizeOf(head) <= sizeof value.number) {
            std::memcpy(&value.number, at, sizeOf(head));
        }
        if (value.type == ValueType::kConstant) {
            value = nameValue(reinterpret_cast<const char*>(static_cast<uintptr_t>(value.number)));
        }
        at += padded(sizeOf(head));
        values.push_back(std::move(value));
    }
}

}  // namespace quorvel::recorder
