#include <string>

#include "fuzz/ScriptedRun.h"
#include "wifi/QuorvelWiFiExports.h"

// The text that the `wl` utility's scan leaves behind, and every result read from it.

namespace {

using quorvel::fuzz::ExactBuffer;
using quorvel::fuzz::isReadResult;
using quorvel::fuzz::require;
using quorvel::fuzz::ScriptedRun;

void scan(std::uint32_t radio) {
    ExactBuffer context(192);
    require(WiFiRadioStatsInitContext(context.get()) == 0, "the context is initialised");
    require(WiFiRadioStatsDiagnosticsStateSet(context.get(), radio, 2) == 0, "a scan can be requested");
    require(WiFiRadioStatsApplyContext(context.get(), radio, 0) == 0, "a readable file is no failure");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ScriptedRun run;
    quorvel::fuzz::Input input(data, size);
    const std::uint32_t radio = 1 + input.byte() % 3;
    run.platform.setVariableEverywhere("name", "wl");
    run.platform.setFile("/var/wl" + std::to_string(radio - 1) + "_scanresults", input.rest());
    scan(radio);
    std::uint32_t count = 0;
    require(WiFiRadioStatsNeighboringWiFiDiagnosticResultNumberOfEntriesGet(radio, &count) == 0, "results are counted");
    const std::uint32_t looked = count < 20 ? count : 20;
    for (std::uint32_t result = 1; result <= looked; ++result) {
        ExactBuffer snapshot(1092);
        require(WiFiNeighboringDiagnosticsResultInstanceGet(snapshot.get(), result) == 0,
                "every counted result is there");
    }
    ExactBuffer behind(1092);
    require(WiFiNeighboringDiagnosticsResultInstanceGet(behind.get(), count + 1) != 0, "no result is there uncounted");
    // The next run starts with an empty store.
    run.platform.setFile("/var/wl" + std::to_string(radio - 1) + "_scanresults", "");
    scan(radio);
    return 0;
}
