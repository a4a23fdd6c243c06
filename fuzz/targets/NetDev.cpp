#include <string>

#include "fuzz/ScriptedRun.h"
#include "wifi/QuorvelWiFiExports.h"

// The kernel's interface counters, as access points' and radios' statistics read them.

namespace {

using quorvel::fuzz::isReadResult;
using quorvel::fuzz::require;

using Counter = std::uint32_t (*)(std::uint32_t instance, std::uint32_t* out);
constexpr Counter kCounters[] = {WiFiSSIDStatsBytesSentGet,          WiFiSSIDStatsBytesReceivedGet,
                                 WiFiSSIDStatsPacketsSentGet,        WiFiSSIDStatsPacketsReceivedGet,
                                 WiFiSSIDStatsErrorsSentGet,         WiFiSSIDStatsErrorsReceivedGet,
                                 WiFiSSIDStatsUnicastPacketsSentGet, WiFiSSIDStatsUnicastPacketsReceivedGet,
                                 WiFiSSIDStatsDiscardPacketsSentGet, WiFiSSIDStatsMulticastPacketsSentGet};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quorvel::fuzz::ScriptedRun run;
    run.platform.setFile("/proc/net/dev", std::string(reinterpret_cast<const char*>(data), size));
    for (const std::uint32_t ssid : {1U, 2U, 24U}) {
        for (const Counter counter : kCounters) {
            std::uint32_t value = 0;
            require(isReadResult(counter(ssid, &value)), "a counter's result is one of a read");
        }
    }
    for (const std::uint32_t radio : {1U, 3U}) {
        std::uint32_t dropped = 0;
        require(WiFiRadioStatsDiscardPacketsSentGet(radio, &dropped) == 0, "a readable file is no failure");
        require(WiFiRadioStatsDiscardPacketsReceivedGet(radio, &dropped) == 0, "a readable file is no failure");
    }
    return 0;
}
