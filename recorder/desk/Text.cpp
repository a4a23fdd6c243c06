#include "recorder/desk/Text.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace quorvel::recorder {

namespace {

constexpr size_t kLongestBytes = 32;
constexpr size_t kLongestText = 120;

// The text of one conversion, e.g. "%02X" or "%.*s".
std::string converted(const std::string& conversion, int precision, const Value& value) {
    std::array<char, 512> text{};
    const char kind = conversion.back();
    if (kind == 's') {
        const std::string_view from = value.type == ValueType::kNull ? "(null)" : std::string_view(value.bytes);
        return std::string(precision >= 0 ? from.substr(0, static_cast<size_t>(precision)) : from);
    }
    // The words of the arguments are unsigned; the conversion says how to read them.
    std::string format = conversion.substr(0, conversion.size() - 1);
    std::erase_if(format, [](char c) { return c == 'l' || c == 'h' || c == 'z' || c == 'j' || c == 't'; });
    format += "ll";
    format += kind;
    const bool wide = value.type != ValueType::kNumber;
    const auto narrow = static_cast<int32_t>(static_cast<uint32_t>(value.number));
    const long long number = (kind == 'd' || kind == 'i') && !wide ? narrow : static_cast<long long>(value.number);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    (void)std::snprintf(text.data(), text.size(), format.c_str(), number);
#pragma GCC diagnostic pop
    return text.data();
}

}  // namespace

std::string formatted(std::string_view format, std::span<const Value> arguments) {
    std::string text;
    size_t next = 0;
    for (size_t at = 0; at < format.size(); ++at) {
        if (format[at] != '%') {
            text += format[at];
            continue;
        }
        const size_t begin = at++;
        int precision = -1;
        while (at < format.size() && std::strchr("0123456789.-+ #*lhzjt", format[at]) != nullptr) {
            if (format[at] == '*' && next < arguments.size())
                precision = static_cast<int>(static_cast<uint32_t>(arguments[next++].number));
            ++at;
        }
        if (at >= format.size()) return text.append(format.substr(begin));
        if (format[at] == '%') {
            text += '%';
        } else if (next < arguments.size() && std::strchr("diuxXcps", format[at]) != nullptr) {
            text += converted(std::string(format.substr(begin, at - begin + 1)), precision, arguments[next++]);
        } else {
            text += format.substr(begin, at - begin + 1);
        }
    }
    return text;
}

std::string describe(const Value& value) {
    switch (value.type) {
        case ValueType::kNull:
            return "null";
        case ValueType::kNumber: {
            const auto number = static_cast<int32_t>(static_cast<uint32_t>(value.number));
            return number < 0 ? std::to_string(number) : std::to_string(value.number);
        }
        case ValueType::kNumber64:
            return std::to_string(value.number);
        case ValueType::kHandle:
        case ValueType::kConstant:
            return value.number == 1 ? "stdout" : value.number == 2 ? "stderr" : "handle";
        case ValueType::kText:
        case ValueType::kName: {
            std::string text = "\"";
            for (const char c : value.bytes.substr(0, kLongestText)) {
                if (c == '\n') {
                    text += "\\n";
                } else if (static_cast<unsigned char>(c) < ' ') {
                    text += '?';
                } else {
                    text += c;
                }
            }
            return text + (value.bytes.size() > kLongestText ? "...\"" : "\"");
        }
        case ValueType::kBytes: {
            std::string text = std::to_string(value.bytes.size()) + " bytes";
            // Most of a context is zero.
            const size_t last = value.bytes.find_last_not_of('\0');
            if (last == std::string::npos) return text + (value.bytes.empty() ? "" : ", all zero");
            text += ' ';
            std::array<char, 3> digits{};
            for (size_t i = 0; i <= last && i < kLongestBytes; ++i) {
                (void)std::snprintf(digits.data(), digits.size(), "%02x", static_cast<unsigned char>(value.bytes[i]));
                text += digits.data();
            }
            return text + (last >= kLongestBytes ? "..." : "");
        }
    }
    return {};
}

std::string describeLog(const Record& record) {
    constexpr std::array<const char*, 4> kLevels{"error", "warning", "traffic", "trace"};
    if (record.values.size() < kLogArguments) return "log record without a format";
    const uint64_t level = record.values[kLogLevel].number;
    const std::span<const Value> arguments(record.values.begin() + kLogArguments, record.values.end());
    return std::string(level < kLevels.size() ? kLevels[static_cast<std::size_t>(level)] : "unknown level") + ' ' +
           record.values[kLogFile].bytes + ' ' + record.values[kLogFunction].bytes + ": " +
           formatted(record.values[kLogFormat].bytes, arguments);
}

std::string describePlatform(const Record& record) {
    std::string text = record.function + '(';
    bool first = true;
    for (const Value* const value : record.valuesOf(ValueRole::kArgument)) {
        text += (first ? "" : ", ") + describe(*value);
        first = false;
    }
    text += ')';
    for (const Value* const value : record.valuesOf(ValueRole::kResult))
        text += " = " + describe(*value);
    for (const Value* const value : record.valuesOf(ValueRole::kAfter))
        text += ", filled " + describe(*value);
    return text;
}

}  // namespace quorvel::recorder
