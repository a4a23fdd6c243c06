#include "recorder/replay/FormatValues.h"

#include "recorder/library/Variadic.h"
#include "recorder/replay/Answer.h"

namespace quorvel::recorder {

Value nameValue(const char* text) {
    return {ValueRole::kArgument, ValueType::kName, 0, text == nullptr ? "" : text};
}

void appendFormatValues(std::vector<Value>& values, const char* format, std::va_list list) {
    FormatArguments::Room room;
    const FormatArguments arguments(format, list, room);
    arguments.forEach([&](FormatShape::Kind kind, const Word* word) {
        Value value{ValueRole::kArgument, ValueType::kNumber, static_cast<uint32_t>(*word), {}};
        const auto* const text = reinterpret_cast<const char*>(*word);
        if (kind == FormatShape::kWide) {
            value.type = ValueType::kNumber64;
            value.number = wideAt(word);
        } else if (kind == FormatShape::kText) {
            value = constantRange.holds(text) ? nameValue(text) : textValue(text);
        }
        values.push_back(std::move(value));
    });
}

}  // namespace quorvel::recorder
