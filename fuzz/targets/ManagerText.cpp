#include <cstring>
#include <string>

#include "fuzz/ScriptedRun.h"
#include "tests/wifi/DataModel.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/bridge/ManagerText.h"
#include "wifi/model/Mapping.h"

// Any text as the answer to a variable's read: through the generic get with every conversion, through every mapped
// node, and through every getter of the data model.

namespace {

using quorvel::Mapping;
using quorvel::MappingRow;
using quorvel::datamodel::Parameter;
using quorvel::datamodel::Type;
using quorvel::fuzz::ExactBuffer;
using quorvel::fuzz::Input;
using quorvel::fuzz::isReadResult;
using quorvel::fuzz::require;

constexpr MappingRow kConversions[] = {
    {2, 0, "", ""},           {1, 132, "UINT32", "v"},   {2, 136, "INT32", "v"},
    {3, 140, "BOOLEAN", "v"}, {4, 141, "RBOOLEAN", "v"}, {5, 142, "NO_CONVERT", "v"},
    {6, 142, "ODD", "v"},     {7, 142, "CHAR", "v"},
};

constexpr Mapping kMappings[] = {
    {kConversions, std::size(kConversions)},
    quorvel::mappingOf<quorvel::kWiFiObject>(),
    quorvel::mappingOf<quorvel::kWiFiRadioObject>(),
    quorvel::mappingOf<quorvel::kWiFiSSIDObject>(),
    quorvel::mappingOf<quorvel::kWiFiAccessPointObject>(),
    quorvel::mappingOf<quorvel::kWiFiAccessPointAccessPointControlFilterTableObject>(),
    quorvel::mappingOf<quorvel::kWiFiAccessPointSecurityObject>(),
    quorvel::mappingOf<quorvel::kWiFiAccessPointWPSObject>(),
};

void readGeneric(const Mapping& mapping, std::uint32_t length) {
    for (std::uint32_t node = 1; node < mapping.count; ++node) {
        // A bounded text has one byte more than its length; a number has its four. What is not converted is read
        // into the output itself, which has what every buffer of the manager has.
        const bool direct = std::strcmp(mapping.rows[node].conversion, "NO_CONVERT") == 0;
        ExactBuffer out(direct ? quorvel::kValueSize : length < 4 ? 5 : length + 1);
        const std::int32_t result = Quorvel_P_WiFiWlcsmMngrGet(1, 1, node, mapping.rows, out.get(), 2, 0, length);
        require(isReadResult(static_cast<std::uint32_t>(result)), "a read's result is one of a read");
    }
}

void readParameter(const Parameter& parameter) {
    // The manager's text bounds the walk over stations.
    if (parameter.getter == nullptr || parameter.access == quorvel::datamodel::Access::Station ||
        parameter.stem == std::string("WiFiAccessPointAssociatedDeviceMacList")) {
        return;
    }
    // Channel measurements fill a record of their own.
    const std::uint32_t length =
        parameter.type == Type::String && parameter.capacity < 2048 ? parameter.capacity : 2048;
    ExactBuffer out(parameter.type == Type::String ? length + 1 : 4);
    require(isReadResult(parameter.get(1, 1, out.get(), length)), "a read's result is one of a read");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    // A part of all reads at a time: one mapping, and every eighth getter.
    const std::size_t part = input.byte() % std::size(kMappings);
    const std::uint32_t length = input.byte() * 5U;
    const std::string text = input.rest().substr(0, 1024);
    // A manager's text is terminated within its buffer.
    const std::string value = std::string(text.c_str()).substr(0, 1023);
    quorvel::fuzz::ScriptedRun run;
    run.platform.setVariableEverywhere("v", value);
    for (const Mapping& mapping : kMappings) {
        for (std::uint32_t node = 1; node < mapping.count; ++node) {
            run.platform.setVariableEverywhere(mapping.rows[node].variable, value);
        }
    }
    for (const char* name : {"wlCurrentChannel", "wlNBw", "wlBand", "wlgMode", "wlPhyType", "wlNProtection",
                             "wlProtection", "wlNPreambleType", "WlBandUtilization", "wlAcsPrefChannels", "wlWep",
                             "wlAuthMode", "radio_number", "numStations"}) {
        run.platform.setVariableEverywhere(name, value);
    }
    run.platform.setNvram("wps_mode", value);
    run.platform.setNvram("wps_proc_status", value);
    run.platform.setNvram("bsd_role", value);
    readGeneric(kMappings[part], length);
    const auto& parameters = quorvel::datamodel::parameters();
    for (std::size_t n = part; n < parameters.size(); n += std::size(kMappings)) {
        readParameter(parameters[n]);
    }
    return 0;
}
