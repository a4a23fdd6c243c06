#include "gateway/hostd/Accessors.h"

#include <charconv>
#include <cstring>
#include <limits>

#include <quorvel.h>

#include "gateway/hostd/PluginCalls.h"

namespace quorvel::hostd {
namespace {

// Every getter's minimum is at most the first; the rest is room for a terminator that a getter did not write.
constexpr std::uint32_t kTextLength = 2048;
constexpr std::size_t kTextBuffer = 4096;

template <typename Function>
Function* function(Word word) {
    return reinterpret_cast<Function*>(word);
}

[[gnu::always_inline]] inline std::uint32_t callGetter(const Parameter& parameter, const Instances& at, void* out) {
    switch (parameter.depth) {
        case 0:
            return function<std::uint32_t(void*)>(parameter.getter)(out);
        case 1:
            return function<std::uint32_t(std::uint32_t, void*)>(parameter.getter)(at[0], out);
        default:
            return function<std::uint32_t(std::uint32_t, std::uint32_t, void*)>(parameter.getter)(at[0], at[1], out);
    }
}

[[gnu::noinline]] std::uint32_t callGetterCounted(const Parameter& parameter, const Instances& at, void* out) {
    return counted(PluginCall::kGet, [&] { return callGetter(parameter, at, out); });
}

std::uint32_t readInto(const Parameter& parameter, const Instances& at, void* out) {
    // The way to a value is counted in instructions: nothing else is on it.
    if (callsAreCounted.load(std::memory_order_relaxed)) [[unlikely]]
        return callGetterCounted(parameter, at, out);
    return callGetter(parameter, at, out);
}

std::uint32_t readText(const Parameter& parameter, const Instances& at, char* buffer, std::uint32_t length) {
    switch (parameter.depth) {
        case 0:
            return function<std::uint32_t(char*, std::uint32_t)>(parameter.getter)(buffer, length);
        case 1:
            return function<std::uint32_t(std::uint32_t, char*, std::uint32_t)>(parameter.getter)(at[0], buffer,
                                                                                                  length);
        default:
            return function<std::uint32_t(std::uint32_t, std::uint32_t, char*, std::uint32_t)>(parameter.getter)(
                at[0], at[1], buffer, length);
    }
}

std::uint32_t callSetter(const Parameter& parameter, void* context, const Instances& at, const Value& value) {
    if (parameter.type == Type::kText) {
        const char* const text = value.text.c_str();
        const auto length = static_cast<std::uint32_t>(value.text.size());
        switch (parameter.depth) {
            case 0:
                return function<std::uint32_t(void*, const char*, std::uint32_t)>(parameter.setter)(context, text,
                                                                                                    length);
            case 1:
                return function<std::uint32_t(void*, std::uint32_t, const char*, std::uint32_t)>(parameter.setter)(
                    context, at[0], text, length);
            default:
                return function<std::uint32_t(void*, std::uint32_t, std::uint32_t, const char*, std::uint32_t)>(
                    parameter.setter)(context, at[0], at[1], text, length);
        }
    }
    switch (parameter.depth) {
        case 0:
            return function<std::uint32_t(void*, std::uint32_t)>(parameter.setter)(context, value.number);
        case 1:
            return function<std::uint32_t(void*, std::uint32_t, std::uint32_t)>(parameter.setter)(context, at[0],
                                                                                                  value.number);
        default:
            return function<std::uint32_t(void*, std::uint32_t, std::uint32_t, std::uint32_t)>(parameter.setter)(
                context, at[0], at[1], value.number);
    }
}

std::uint32_t callInitContext(const Node& node, void* context) {
    if (node.initContext == 0) return Quorvel_ContextInit(context, node.contextSize);
    return function<std::uint32_t(void*)>(node.initContext)(context);
}

std::uint32_t callApplyContext(const Node& node, void* context, const Instances& at) {
    switch (node.depth) {
        case 0:
            return function<std::uint32_t(void*)>(node.applyContext)(context);
        case 1:
            // A third argument of 1 has a radio's statistics start a scan; applies of two arguments ignore it.
            return function<std::uint32_t(void*, std::uint32_t, std::uint32_t)>(node.applyContext)(context, at[0], 1);
        default:
            return function<std::uint32_t(void*, std::uint32_t, std::uint32_t)>(node.applyContext)(context, at[0],
                                                                                                   at[1]);
    }
}

template <typename Number>
FaultCode parseNumber(std::string_view text, std::uint32_t& number) {
    std::int64_t parsed = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed);
    if (end != text.data() + text.size() || text.empty()) return FaultCode::kWrongType;
    if (error == std::errc::invalid_argument) return FaultCode::kWrongType;
    if (error == std::errc::result_out_of_range) return FaultCode::kValueRefused;
    if (std::numeric_limits<Number>::min() == 0 && parsed < 0) return FaultCode::kWrongType;
    if (parsed < std::numeric_limits<Number>::min() || parsed > std::numeric_limits<Number>::max()) {
        return FaultCode::kValueRefused;
    }
    number = static_cast<std::uint32_t>(parsed);
    return FaultCode::kNone;
}

}  // namespace

std::uint32_t read(const Parameter& parameter, const Instances& instances, Value& value) {
    value.type = parameter.type;
    value.number = 0;
    if (parameter.type == Type::kText) {
        char buffer[kTextBuffer] = {};
        const std::uint32_t result =
            counted(PluginCall::kGet, [&] { return readText(parameter, instances, buffer, kTextLength); });
        if (result == 0) value.text.assign(buffer, strnlen(buffer, sizeof buffer));
        return result;
    }
    if (parameter.type == Type::kBoolean) {
        std::uint8_t flag = 0;
        const std::uint32_t result = readInto(parameter, instances, &flag);
        value.number = flag;
        return result;
    }
    return readInto(parameter, instances, &value.number);
}

std::uint32_t readStation(const Parameter& parameter, const Instances& instances, const char* mac, Value& value) {
    value.type = parameter.type;
    value.number = 0;
    using Function = std::uint32_t(std::uint32_t, const char*, std::int32_t*);
    std::int32_t number = 0;
    const std::uint32_t result =
        counted(PluginCall::kGet, [&] { return function<Function>(parameter.getter)(instances[0], mac, &number); });
    value.number = static_cast<std::uint32_t>(number);
    return result;
}

std::uint32_t measure(const Parameter& parameter, const Instances& instances, void* record, std::uint32_t size) {
    return counted(PluginCall::kMeasure,
                   [&] { return readText(parameter, instances, static_cast<char*>(record), size); });
}

FaultCode parse(const Parameter& parameter, std::string_view text, Value& value) {
    value.type = parameter.type;
    switch (parameter.type) {
        case Type::kText:
            value.text = text;
            return FaultCode::kNone;
        case Type::kBoolean:
            if (text != "true" && text != "false" && text != "1" && text != "0") return FaultCode::kWrongType;
            value.number = text == "true" || text == "1" ? 1 : 0;
            return FaultCode::kNone;
        case Type::kUnsignedInt:
            return parseNumber<std::uint32_t>(text, value.number);
        case Type::kInt:
            return parseNumber<std::int32_t>(text, value.number);
    }
    return FaultCode::kWrongType;
}

std::uint32_t stage(const Parameter& parameter, void* context, const Instances& at, const Value& value) {
    return counted(PluginCall::kSet, [&] { return callSetter(parameter, context, at, value); });
}

std::uint32_t initContext(const Node& node, void* context) {
    return counted(PluginCall::kInitContext, [&] { return callInitContext(node, context); });
}

std::uint32_t applyContext(const Node& node, void* context, const Instances& at) {
    return counted(PluginCall::kApplyContext, [&] { return callApplyContext(node, context, at); });
}

}  // namespace quorvel::hostd
