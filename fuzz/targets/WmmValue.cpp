#include <string>

#include "fuzz/ScriptedRun.h"
#include "wifi/QuorvelWiFiExports.h"

// The contention parameters that the non-volatile store holds as one text: read and rewritten.

namespace {

using quorvel::fuzz::Input;
using quorvel::fuzz::require;

constexpr char kKey[] = "wl0_wme_ap_be";

std::string textOf(Input& input) {
    // A variable's text ends at its NUL.
    return std::string(input.rest().c_str()).substr(0, 1023);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quorvel::fuzz::ScriptedRun run;
    Input input(data, size);
    const std::uint32_t value = input.word();
    const std::string text = textOf(input);
    run.platform.setNvram(kKey, text);
    std::uint32_t read = 0;
    for (const auto getter : {WiFiAccessPointACAIFSNGet, WiFiAccessPointACECWMinGet, WiFiAccessPointACECWMaxGet,
                              WiFiAccessPointACTxOpMaxGet}) {
        require(getter(1, 1, &read) == 0, "any text can be read");
    }
    require(run.platform.nvram(kKey) == text, "reading changes nothing");
    for (const auto setter : {WiFiAccessPointACAIFSNSet, WiFiAccessPointACECWMinSet, WiFiAccessPointACECWMaxSet,
                              WiFiAccessPointACTxOpMaxSet}) {
        const std::uint32_t result = setter(nullptr, 1, 1, value);
        require(result == 0 || result == 8, "a value is taken or refused");
        require(run.platform.nvram(kKey)->size() < 64 || run.platform.nvram(kKey) == text,
                "what is written is bounded");
    }
    return 0;
}
