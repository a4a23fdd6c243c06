#include "recorder/replay/Invoke.h"

#include <map>
#include <tuple>

#include "recorder/library/RealLibrary.h"

namespace quorvel::recorder {

namespace {

template <typename Function>
struct Invocation;

template <typename Result, typename... Arguments>
struct Invocation<Result (*)(Arguments...)> {
    static constexpr bool kReplayable = (!std::is_same_v<Arguments, const void*> && ... && true);

    template <uint16_t function>
    static uint32_t invoke(CallMemory& memory) {
        memory.setCallback(reinterpret_cast<void (*)()>(&replayedCallback));
        // The braces fix the order in which the arguments are read.
        const std::tuple<Arguments...> arguments{memory.next<Arguments>()...};
        const auto call = reinterpret_cast<Result (*)(Arguments...)>(realFunctions[function]);
        return static_cast<uint32_t>(std::apply(call, arguments));
    }
    template <uint16_t function>
    static constexpr Invoker invoker() {
        if constexpr (kReplayable) {
            return {function, true, &invoke<function>};
        } else {
            return {function, false, nullptr};
        }
    }
};

constexpr Invoker kInvokers[] = {
#define FUNCTION(result, name, parameters, arguments) Invocation<decltype(&::name)>::invoker<kCall_##name>(),
#include "wifi/model/ExportedFunctions.def"
};

}  // namespace

const Invoker* findInvoker(const std::string& function) {
    static const std::map<std::string, const Invoker*> kByName = [] {
        std::map<std::string, const Invoker*> found;
        for (const Invoker& invoker : kInvokers)
            found[kFunctionNames[invoker.function]] = &invoker;
        return found;
    }();
    const auto found = kByName.find(function);
    return found == kByName.end() ? nullptr : found->second;
}

}  // namespace quorvel::recorder
