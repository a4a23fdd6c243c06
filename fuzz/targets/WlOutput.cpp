#include <string>

#include "fuzz/ScriptedRun.h"
#include "wifi/QuorvelWiFiExports.h"

// The output of the `wl` utility: counters, status and MAC filter mode.

namespace {

using quorvel::fuzz::isReadResult;
using quorvel::fuzz::require;

using Counter = std::uint32_t (*)(std::uint32_t radio, std::uint32_t* out);
constexpr Counter kCounters[] = {WiFiRadioStatsBytesSentGet,       WiFiRadioStatsBytesReceivedGet,
                                 WiFiRadioStatsPacketsSentGet,     WiFiRadioStatsPacketsReceivedGet,
                                 WiFiRadioStatsErrorsSentGet,      WiFiRadioStatsErrorsReceivedGet,
                                 WiFiRadioStatsPLCPErrorCountGet,  WiFiRadioStatsFCSErrorCountGet,
                                 WiFiRadioStatsInvalidMACCountGet, WiFiRadioStatsPacketsOtherReceivedGet};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quorvel::fuzz::ScriptedRun run;
    const std::string text(reinterpret_cast<const char*>(data), size);
    run.platform.setVariableEverywhere("radio_status", "Up");
    run.platform.setVariableEverywhere("status", "Up");
    run.platform.setCommandOutput("wl -i wl0 counters", text);
    run.platform.setCommandOutput("wl -i wl0 status", text);
    run.platform.setCommandOutput("wl -i wl0 macmode", text);
    for (const Counter counter : kCounters) {
        std::uint32_t value = 0;
        require(isReadResult(counter(1, &value)), "a counter's result is one of a read");
    }
    std::int32_t noise = 0;
    require(isReadResult(WiFiRadioStatsNoiseGet(1, &noise)), "the noise's result is one of a read");
    std::uint32_t mode = 0;
    require(WiFiAccessPointMacModeGet(1, &mode) == 0, "any answer is a mode");
    return 0;
}
