#include "wifi/bridge/Conversion.h"

#include "wifi/parsing/DecimalText.h"

namespace quorvel {

using model::Conversion;

bool convertText(Conversion conversion, const char* text, void* out, uint32_t bound) {
    switch (conversion) {
        case Conversion::kUint32:
        case Conversion::kInt32: {
            const auto value = static_cast<uint32_t>(decimalNumber(text));
            memcpy(out, &value, sizeof value);
            return true;
        }
        case Conversion::kBoolean:
            *static_cast<uint8_t*>(out) = static_cast<uint8_t>(decimalNumber(text));
            return true;
        case Conversion::kReversedBoolean:
            *static_cast<uint8_t*>(out) = static_cast<uint8_t>(decimalNumber(text)) == 0 ? 1 : 0;
            return true;
        case Conversion::kText: {
            size_t length = strlen(text);
            // Quirk: a text of exactly `bound` bytes is whole, and its NUL is one byte behind them.
            if (length > bound) length = bound == 0 ? 0 : bound - 1;
            char* to = static_cast<char*>(out);
            memcpy(to, text, length);
            to[length] = '\0';
            return true;
        }
        case Conversion::kUnconverted:
        case Conversion::kUnknown:
        case Conversion::kNone:
            break;
    }
    return false;
}

bool convertField(Conversion conversion, const char* field, size_t size, char* text) {
    switch (conversion) {
        case Conversion::kUint32:
            appendDecimal(text, wordAt(field));
            return true;
        case Conversion::kInt32:
            appendDecimal(text, static_cast<int32_t>(wordAt(field)));
            return true;
        case Conversion::kBoolean:
            appendDecimal(text, uint32_t{static_cast<uint8_t>(*field)});
            return true;
        case Conversion::kReversedBoolean:
            appendDecimal(text, uint32_t{*field == 0});
            return true;
        case Conversion::kText:
            memcpy(text, field, strnlen(field, size));
            return true;
        case Conversion::kUnconverted:
        case Conversion::kUnknown:
        case Conversion::kNone:
            break;
    }
    return false;
}

}  // namespace quorvel
