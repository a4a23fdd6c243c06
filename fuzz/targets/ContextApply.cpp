#include <cstring>
#include <string>

#include "fuzz/ScriptedRun.h"
#include "tests/wifi/AllReadsSucceed.h"
#include "tests/wifi/DataModel.h"
#include "wifi/QuorvelWiFiExports.h"

// An object context with arbitrary fields and marks, as a host that filled it by itself might hand it over.

namespace {

using quorvel::datamodel::Object;
using quorvel::fuzz::ExactBuffer;
using quorvel::fuzz::Input;
using quorvel::fuzz::isReadResult;
using quorvel::fuzz::require;

constexpr std::size_t kHeader = QUORVEL_CONTEXT_HEADER_SIZE;
constexpr std::uint32_t kMarkBytes = 9;

std::uint32_t apply(const Object& object, void* context, std::uint32_t i, std::uint32_t j) {
    using Apply0 = std::uint32_t (*)(void*);
    using Apply1 = std::uint32_t (*)(void*, std::uint32_t);
    using Apply2 = std::uint32_t (*)(void*, std::uint32_t, std::uint32_t);
    if (object.prefix == std::string("WiFiRadioStats")) {
        return WiFiRadioStatsApplyContext(context, i, j);
    }
    switch (object.depth) {
        case 0:
            return reinterpret_cast<Apply0>(object.applyContext)(context);
        case 1:
            return reinterpret_cast<Apply1>(object.applyContext)(context, i);
        default:
            return reinterpret_cast<Apply2>(object.applyContext)(context, i, j);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const auto& objects = quorvel::datamodel::objects();
    const Object& object = objects[input.byte() % objects.size()];
    const std::uint32_t i = input.byte() % 27;
    const std::uint32_t j = input.byte() % 3;
    const std::string marks = input.bytes(kMarkBytes);
    const std::string fields = input.rest();
    quorvel::fuzz::ScriptedRun run;
    quorvel::scripted::letAllReadsSucceed(run.platform);
    ExactBuffer context(object.contextSize);
    require(object.initContext(context.get()) == 0, "the context is initialised");
    for (std::uint32_t node = 0; node < 8 * marks.size(); ++node) {
        if ((static_cast<unsigned char>(marks[node / 8]) >> (node % 8) & 1U) != 0) {
            (void)Quorvel_ContextSetMap(context.get(), node);
        }
    }
    // A short input's bytes are repeated, so that far fields are filled as well.
    for (std::size_t at = kHeader; at < object.contextSize && !fields.empty(); at += fields.size()) {
        const std::size_t room = object.contextSize - at;
        std::memcpy(context.get() + at, fields.data(), fields.size() < room ? fields.size() : room);
    }
    const std::uint32_t result = apply(object, context.get(), i, j);
    require(isReadResult(result), "an apply's result is one of an apply");
    if (result == 0 && object.prefix != std::string("WiFiAccessPointAC")) {
        for (std::uint32_t node = 0; node < 8 * kMarkBytes; ++node) {
            require(Quorvel_IsContextSetMap(context.get(), node) == 0, "a successful apply leaves no mark");
        }
    }
    return 0;
}
