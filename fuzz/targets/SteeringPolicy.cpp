#include <string>

#include "fuzz/ScriptedRun.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Contexts.h"

// A radio's band-steering policy, as the non-volatile store holds it: read, and rewritten by an apply.

namespace {

using quorvel::fuzz::ExactBuffer;
using quorvel::fuzz::Input;
using quorvel::fuzz::require;

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    quorvel::fuzz::ScriptedRun run;
    Input input(data, size);
    const auto value = static_cast<std::int32_t>(input.word());
    const std::string text = std::string(input.rest().c_str()).substr(0, 1023);
    run.platform.setNvram("wl0_bsd_steering_policy", text);
    std::int32_t read = 0;
    require(WiFiRadioBandSteeringBandUtilizationThresholdGet(1, &read) == 0, "any policy can be read");
    require(WiFiRadioBandSteeringRSSIThresholdGet(1, &read) == 0, "any policy can be read");
    require(WiFiRadioBandSteeringPhyRateThresholdGet(1, &read) == 0, "any policy can be read");
    ExactBuffer context(sizeof(WiFiRadioContext));
    require(WiFiRadioInitContext(context.get()) == 0, "the context is initialised");
    require(WiFiRadioBandSteeringBandUtilizationThresholdSet(context.get(), 1, value) == 0, "any value is staged");
    require(WiFiRadioBandSteeringRSSIThresholdSet(context.get(), 1, value) == 0, "any value is staged");
    require(WiFiRadioBandSteeringPhyRateThresholdSet(context.get(), 1, value) == 0, "any value is staged");
    require(WiFiRadioApplyContext(context.get(), 1) == 0, "any policy can be applied");
    require(run.platform.nvram("wl0_bsd_steering_policy")->size() < 32, "what is written is bounded");
    return 0;
}
