// The exported functions: each records its call, passes it on to the recorded library, and records the return.
#include <algorithm>
#include <tuple>
#include <type_traits>

#include "recorder/library/Functions.h"
#include "recorder/library/Imports.h"
#include "recorder/library/Queue.h"
#include "recorder/library/RealLibrary.h"
#include "recorder/library/Session.h"
#include "recorder/library/Writer.h"

namespace quorvel::recorder {

namespace {

// The longest text or record of a caller that is recorded.
constexpr uint32_t kMaxMemory = 4096;

// How a function uses its first argument.
enum class Use : uint8_t {
    kOther,
    kContext,
    kSetter,  // a context's header and one field
};

// Memory that a call may write; `before`: what is there before the call matters.
struct Memory {
    const void* address;
    uint32_t size;
    bool before = true;
};
// A number that a call writes.
template <typename Number>
struct NumberMemory {
    const Number* address;
};
// The field that a setter writes; nowhere without a context.
struct FieldMemory {
    const void* address;
    uint32_t size;
};

// Records of the manager that pass through a function without a length.
constexpr uint32_t recordSizeOf(uint16_t function) {
    if (function == kCall_WiFiAccessPointStatsGet) return 236;
    if (function == kCall_WiFiAccessPointSsidNameStatusGet) return 40;
    return 0;
}

// A length is behind what it bounds, at the end of the parameters.
constexpr uint32_t lastNumber() {
    return 0;
}
template <typename First, typename... Rest>
constexpr uint32_t lastNumber([[maybe_unused]] First first, Rest... rest) {
    if constexpr (sizeof...(Rest) != 0) return lastNumber(rest...);
    if constexpr (std::is_integral_v<First>) return static_cast<uint32_t>(first);
    return 0;
}

// The values of one argument, in a tuple. A length behind a text or record bounds what is recorded of it.
template <Use kUse, typename First, typename... Rest>
auto valuesOfFirst(const ContextUse& use, uint16_t function, First first, Rest... rest) {
    if constexpr (std::is_integral_v<First>) {
        return std::tuple(Number{static_cast<uint32_t>(first)});
    } else if constexpr (std::is_same_v<First, char*>) {
        return std::tuple(Memory{first, std::min(kMaxMemory, lastNumber(rest...))});
    } else if constexpr (std::is_same_v<First, const char*>) {
        // A text that is longer than its field is refused unread.
        if constexpr (kUse == Use::kSetter)
            return std::tuple(Bytes{first, std::min<uint32_t>(use.fieldSize, lastNumber(rest...))});
        else
            return std::tuple(Text{first});
    } else if constexpr (std::is_same_v<First, void*>) {
        const Memory context{first, use.size, use.before};
        if constexpr (kUse == Use::kSetter) {
            const auto* const field = first == nullptr ? nullptr : static_cast<const uint8_t*>(first) + use.fieldOffset;
            return std::tuple(context, FieldMemory{field, use.fieldSize});
        } else if constexpr (kUse == Use::kContext) {
            return std::tuple(context);
        } else {
            const uint32_t bounded =
                function == kCall_WiFiRadioChannelStatsGet2 ? std::min(kMaxMemory, lastNumber(rest...)) : 0;
            const uint32_t size = bounded != 0 ? bounded : recordSizeOf(function);
            return std::tuple(Memory{first, size});
        }
    } else if constexpr (std::is_same_v<First, const void*> || std::is_function_v<std::remove_pointer_t<First>>) {
        return std::tuple(Handle{reinterpret_cast<const void*>(first)});
    } else {
        static_assert(std::is_arithmetic_v<std::remove_pointer_t<First>>);
        return std::tuple(NumberMemory<std::remove_pointer_t<First>>{first});
    }
}

template <Use kUse>
std::tuple<> valuesOf(const ContextUse& /*use*/, uint16_t /*function*/) {
    return {};
}
template <Use kUse, typename First, typename... Rest>
auto valuesOf(const ContextUse& use, uint16_t function, First first, Rest... rest) {
    return std::tuple_cat(valuesOfFirst<kUse>(use, function, first, rest...), valuesOf<kUse>(use, function, rest...));
}

template <typename Value>
const Value& before(const Value& value) {
    return value;
}
BytesBefore before(const Memory& memory) {
    return {memory.address, memory.before ? memory.size : 0};
}
MemoryIn<ValueRole::kBefore> before(const FieldMemory& field) {
    return {field.address, field.size};
}

template <typename Number>
FixedIn<ValueRole::kBefore, sizeof(Number), QueuedType::kBytes> before(const NumberMemory<Number>& memory) {
    return {memory.address};
}

template <typename Value>
std::tuple<> after(const Value& /*value*/) {
    return {};
}
std::tuple<MemoryIn<ValueRole::kAfter>> after(const Memory& memory) {
    return {{memory.address, memory.size}};
}
std::tuple<MemoryIn<ValueRole::kAfter>> after(const FieldMemory& field) {
    return {{field.address, field.size}};
}

template <typename Number>
std::tuple<FixedIn<ValueRole::kAfter, sizeof(Number)>> after(const NumberMemory<Number>& memory) {
    return {{memory.address}};
}

[[gnu::always_inline]] inline void recordReturn(uint16_t function, uint32_t result, auto... memories) {
    queue.appendLast<RecordKind::kReturn>(function, ResultNumber{result}, memories...);
}

template <Use kUse, typename Result, typename... Arguments>
Result record(const ContextUse& use, uint16_t function, Arguments... arguments) {
    const auto values = valuesOf<kUse>(use, function, arguments...);
    std::apply([&](const auto&... value) { queue.appendInNew<RecordKind::kCall>(function, before(value)...); }, values);
    const Result result = reinterpret_cast<Result (*)(Arguments...)>(realFunctions[function])(arguments...);
    std::apply(
        [&](const auto&... value) {
            std::apply([&](const auto&... memory) { recordReturn(function, static_cast<uint32_t>(result), memory...); },
                       std::tuple_cat(after(value)...));
        },
        values);
    return result;
}

template <typename Result, typename... Arguments>
Result recordAs(uint16_t function, Arguments... arguments) {
    const ContextUse& use = kContextUses[function];
    if constexpr ((std::is_same_v<Arguments, void*> || ...)) {
        if (use.fieldSize != 0) return record<Use::kSetter, Result>(use, function, arguments...);
        if (use.size != 0) return record<Use::kContext, Result>(use, function, arguments...);
    }
    return record<Use::kOther, Result>(use, function, arguments...);
}

template <typename Result, typename... Arguments>
[[gnu::noinline]] Result forward(uint16_t function, Result (*)(Arguments...), Arguments... arguments) {
    // Without the library every call fails, as the manager's failures do.
    if (!session.isOpen()) return static_cast<Result>(1);
    const Result result = recordAs<Result>(function, arguments...);
    // A host may leave its process right behind this call.
    if (function == kCall_WiFiUnInit) storeEverything();
    return result;
}

// Registration hands the library the recorder's callback; the host's is called from there.
uint32_t forward(uint16_t function, uint32_t (*)(AssociatedDeviceCallback), AssociatedDeviceCallback callback) {
    if (!session.isOpen()) return 1;
    queue.appendInNew<RecordKind::kCall>(function, Handle{reinterpret_cast<const void*>(callback)});
    rememberCallback(callback);
    // Unrecorded, the listener is the library's alone and knows no callback of the recorder's.
    const bool records = callback != nullptr && session.isRecording();
    const uint32_t result = reinterpret_cast<decltype(&WiFiNewAPAssociatedDeviceCallbackRegister)>(
        realFunctions[function])(records ? &recordedCallback : callback);
    qvlThreadId = *realThreadId;
    recordReturn(function, result);
    return result;
}

}  // namespace

}  // namespace quorvel::recorder

#define QUORVEL_ARGUMENTS(...) __VA_OPT__(, ) __VA_ARGS__
#define FUNCTION(result, name, parameters, arguments)                                                          \
    result name parameters {                                                                                   \
        return quorvel::recorder::forward(quorvel::recorder::kCall_##name, &name QUORVEL_ARGUMENTS arguments); \
    }
#include "wifi/model/ExportedFunctions.def"
