#include <string>
#include <string_view>
#include <vector>

#include "fuzz/PluginModel.h"
#include "fuzz/ScriptedRun.h"
#include "gateway/hostd/PathWalk.h"
#include "gateway/hostd/Suggestion.h"

// Paths as a person types them, on the plug-in's own table.

using quorvel::fuzz::pluginModel;
using quorvel::fuzz::require;
using namespace quorvel::hostd;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    (void)pluginModel();
    quorvel::fuzz::ScriptedRun run;
    for (const char* name : {"radio_number", "ssid_number", "bssid_number", "sta_number", "numStations"}) {
        run.platform.setVariableEverywhere(name, "2");
    }
    const std::string path(reinterpret_cast<const char*>(data), size);
    ResolvedPath resolved;
    if (pluginModel().resolve(path, resolved)) {
        require(resolved.parameter != nullptr, "a resolved path has a parameter");
        // Leading zeros of an instance are accepted and not kept.
        ResolvedPath again;
        require(pluginModel().resolve(pluginModel().concrete(*resolved.parameter, resolved.instances), again) &&
                    again.parameter == resolved.parameter && again.instances == resolved.instances,
                "a resolved path's plain form is the same path");
    }
    PathWalk walk(pluginModel());
    std::vector<Match> matches;
    const Fault fault = walk.parameters(path, matches);
    require(fault.code == FaultCode::kNone || !fault.reason.empty(), "a fault has a reason");
    require(fault.code == FaultCode::kNone || matches.empty(), "a faulty path matches nothing");
    std::vector<ObjectMatch> objects;
    const Fault objectFault = walk.objects(path, objects);
    require(objectFault.code == FaultCode::kNone || !objectFault.reason.empty(), "a fault has a reason");
    (void)PathWalk::isSearch(path);
    (void)suggestPath(pluginModel(), path);
    return 0;
}
