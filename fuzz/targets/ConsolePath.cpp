#include <string>
#include <string_view>
#include <vector>

#include "DataModel.h"
#include "PathWalk.h"
#include "QuorvelWiFiTable.h"
#include "ScriptedRun.h"
#include "Suggestion.h"

// Paths as a person types them, on the plug-in's own table.

namespace {

using quorvel::fuzz::require;
using namespace quorvel::host;

const DataModel& model() {
    static const DataModel theModel(
        {reinterpret_cast<const TableEntry*>(&gQuorvelWiFiDataModelTable), quorvel::kParametersInTable});
    return theModel;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    (void)model();
    quorvel::fuzz::ScriptedRun run;
    for (const char* name : {"radio_number", "ssid_number", "bssid_number", "sta_number", "numStations"}) {
        run.platform.setVariableEverywhere(name, "2");
    }
    const std::string path(reinterpret_cast<const char*>(data), size);
    ResolvedPath resolved;
    if (model().resolve(path, resolved)) {
        require(resolved.parameter != nullptr, "a resolved path has a parameter");
        // Leading zeros of an instance are accepted and not kept.
        ResolvedPath again;
        require(model().resolve(model().concrete(*resolved.parameter, resolved.instances), again) &&
                    again.parameter == resolved.parameter && again.instances == resolved.instances,
                "a resolved path's plain form is the same path");
    }
    PathWalk walk(model());
    std::vector<Match> matches;
    const Fault fault = walk.parameters(path, matches);
    require(fault.code == FaultCode::kNone || !fault.reason.empty(), "a fault has a reason");
    require(fault.code == FaultCode::kNone || matches.empty(), "a faulty path matches nothing");
    std::vector<ObjectMatch> objects;
    const Fault objectFault = walk.objects(path, objects);
    require(objectFault.code == FaultCode::kNone || !objectFault.reason.empty(), "a fault has a reason");
    (void)PathWalk::isSearch(path);
    (void)suggestPath(model(), path);
    return 0;
}
