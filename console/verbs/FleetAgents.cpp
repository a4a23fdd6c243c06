// The agents of a fleet's gateways.
#include <iostream>

#include "console/verbs/FleetVerbs.h"

namespace quorvel::console {
namespace {

constexpr const char* kTopic = "/usp/endpoint/{endpoint}";
constexpr const char* kControllerTopic = "/usp/controller/{endpoint}";

void refuseWhatIsOneGateways(const launch::UspOptions& usp) {
    if (!usp.endpoint.empty()) {
        throw CLI::ValidationError("--usp-endpoint " + usp.endpoint +
                                   " is one gateway's Endpoint ID; each gateway of a fleet makes its own from its "
                                   "serial number: leave it out");
    }
    for (const std::string& url : usp.urls) {
        if (!url.starts_with("ws-listen:") && !url.starts_with("wss-listen:")) continue;
        throw CLI::ValidationError("--usp " + url +
                                   " takes a port of this machine, which one gateway has only; let a fleet meet its "
                                   "controller at mqtt: or ws:");
    }
}

}  // namespace

FleetAgents resolveAgents(const Session& session, launch::UspOptions usp) {
    const std::string idle = usp.firstIdle();
    if (!idle.empty()) throw CLI::ValidationError(idle, "needs --usp URL or --usp-config FILE");
    if (!usp.any()) return {};
    refuseWhatIsOneGateways(usp);
    if (usp.topic.empty()) usp.topic = kTopic;
    if (usp.controllerTopic.empty()) usp.controllerTopic = kControllerTopic;
    const std::string warnings = launch::checkUsp(session.options, usp);
    if (!warnings.empty()) std::cerr << warnings << '\n';
    FleetAgents agents;
    agents.settings = {{"urls", usp.urls},
                       {"controller", usp.controller},
                       {"topic", usp.topic},
                       {"controllerTopic", usp.controllerTopic},
                       {"configFile", usp.configFile}};
    agents.start = [usp](const launch::Options& options) { return launch::startUsp(options, usp); };
    return agents;
}

}  // namespace quorvel::console
