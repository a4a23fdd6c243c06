#include <quorvel.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "fuzz/ScriptedRun.h"
#include "wifi/QuorvelWiFiExports.h"

// The inputs of start-up: the board's identifier, the listing of the PCI bus, and the configured drivers and daemon. A
// newline ends each but the listing.

namespace {

using quorvel::fuzz::Input;
using quorvel::fuzz::require;

std::string line(Input& input) {
    std::string text;
    while (!input.isEmpty()) {
        const auto c = static_cast<char>(input.byte());
        if (c == '\n') {
            break;
        }
        text += c;
    }
    return text;
}

// Discards start-up's progress lines, which would mix with the fuzzer's report on standard error.
std::uint32_t startSilently(std::FILE* nowhere) {
    std::FILE* const kept = stderr;
    stderr = nowhere;
    const std::uint32_t result = WiFiInit();
    stderr = kept;
    return result;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static std::FILE* const nowhere = std::fopen("/dev/null", "w");
    require(nowhere != nullptr, "standard error can be put aside");
    Input input(data, size);
    const std::string identifier = line(input);
    // A host's texts may fill their 64 bytes.
    const std::string driver = line(input).substr(0, 64);
    const std::string program = line(input).substr(0, 63);
    const std::string listing = input.rest();
    quorvel::fuzz::ScriptedRun run;
    run.platform.setFile("/tmp/i2cget", identifier);
    run.platform.setFile("/tmp/lspci", listing);
    run.platform.setConfiguration("Device.WiFi", "WL_Driver", driver);
    run.platform.setConfiguration("Device.WiFi", "WLCSM_Driver", driver);
    SpawnInfo info{};
    std::memcpy(info.program, program.data(), program.size());
    run.platform.setSpawnInfo("Device.WiFi.Daemon", info);
    require(startSilently(nowhere) == 0, "no text keeps the library from starting");
    const std::string count = run.platform.file("/tmp/wl_instances.txt").value_or("none");
    require(count == std::to_string(run.platform.callCount("wlcsm_mngr_set")),
            "each counted chip's radio has its start time");
    require(std::stoul(count) <= listing.size() / 4, "a chip is named by four characters");
    require(WiFiUnInit() == 0, "what was started is ended");
    return 0;
}
