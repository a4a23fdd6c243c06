#include <cstring>
#include <string>

#include "fuzz/ScriptedRun.h"
#include "wifi/QuorvelWiFiExports.h"

// The manager's station records and their number, in every read that looks at them.

namespace {

using quorvel::fuzz::ExactBuffer;
using quorvel::fuzz::Input;
using quorvel::fuzz::isReadResult;
using quorvel::fuzz::require;

constexpr char kMac[] = "00:11:22:33:44:55";

void readDevice(std::uint32_t device) {
    ExactBuffer mac(17);
    require(isReadResult(WiFiAccessPointAssociatedDeviceMACAddressGet(1, device, mac.get(), 17)), "a read's result");
    ExactBuffer standard(64);
    require(isReadResult(WiFiAccessPointAssociatedDeviceOperStandardGet(1, device, standard.get(), 64)),
            "a read's result");
    std::uint8_t active = 0;
    require(isReadResult(WiFiAccessPointAssociatedDeviceActiveGet(1, device, &active)), "a read's result");
    ExactBuffer context(276);
    require(isReadResult(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 1, device)), "a read's result");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quorvel::fuzz::ScriptedRun run;
    Input input(data, size);
    // The walks ask for one record after the other; a manager that announces billions would keep them busy for long.
    const std::uint32_t count = input.byte() % 5;
    run.platform.setVariableEverywhere("numStations", std::to_string(count));
    run.platform.setVariableEverywhere("wlStaAssocCnt_" + std::string(kMac), input.bytes(12));
    const std::string first = input.bytes(236);
    run.platform.setVariableEverywhere("wlStaInfo_0", first);
    run.platform.setVariableEverywhere("wlStaInfo_1", input.rest().substr(0, 1024));
    run.platform.setRecord("wlcsm_mngr_sta_info", first);
    for (const std::uint32_t length : {1024U, 1500U}) {
        ExactBuffer list(length);
        require(isReadResult(WiFiAccessPointAssociatedDeviceMacListGet(1, list.get(), length)), "a read's result");
        require(std::memchr(list.get(), '\0', length) != nullptr, "the list is terminated");
    }
    for (const auto getter : {WiFiAccessPointAssociatedDeviceRSSIGet, WiFiAccessPointAssociatedDeviceRxRateGet,
                              WiFiAccessPointAssociatedDeviceTxRateGet}) {
        std::int32_t value = 0;
        require(isReadResult(getter(1, kMac, &value)), "a read's result");
        require(isReadResult(getter(1, first.c_str(), &value)), "a read's result");
    }
    ExactBuffer record(1024);
    std::uint64_t associations = 0;
    require(WiFiAccessPointStatsGet(1, kMac, record.get(), &associations) == 0, "any count can be read");
    for (std::uint32_t device = 0; device <= count + 1; ++device) {
        readDevice(device);
    }
    return 0;
}
