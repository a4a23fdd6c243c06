#include "gateway/hostd/Service.h"

#include "gateway/hostd/LogTap.h"

namespace quorvel::hostd {

Fault pluginFault(FaultCode code, const std::string& path, const std::string& reason, std::uint32_t result) {
    return {code, path, reason, "", result, LogTap::errors()};
}

Service::Service(const Plugin& plugin, Heartbeat& heartbeat, Surroundings surroundings)
    : plugin_(plugin), heartbeat_(heartbeat), surroundings_(std::move(surroundings)), model_(plugin.table()) {
    LogTap::install();
}

std::string Service::trouble() const {
    return surroundings_.trouble ? surroundings_.trouble() : "";
}

void Service::begin() {
    heartbeat_.beat();
    LogTap::forgetErrors();
    managerLost_ = false;
}

void Service::changed(protocol::ChangeKind kind, std::vector<std::string> paths) {
    recent_.forget();
    if (surroundings_.changed) surroundings_.changed({kind, std::move(paths), "", 0});
}

// Faults objects that a walk could not look at, so that finding nothing is not taken for an answer. Returns whether
// there was anything.
bool Service::faultPassedOver(PathWalk& walk, const std::string& path, const std::function<void(const Fault&)>& fault) {
    if (walk.uncounted().empty() && !walk.metUnreadable()) return false;
    const std::string why = trouble();
    managerLost_ = managerLost_ || !why.empty();
    const std::string because = why.empty() ? "" : "; " + why;
    for (const PathWalk::Uncounted& object : walk.uncounted()) {
        fault(pluginFault(FaultCode::kInternal, object.path, "the plug-in could not count the instances" + because,
                          object.result));
        if (!why.empty()) break;  // it is the same with the others
    }
    const bool counted = walk.uncounted().empty();
    walk.forgetPassedOver();
    // A search skips values that it cannot read; without the manager its result says nothing.
    if (counted && !why.empty()) {
        fault(pluginFault(FaultCode::kInternal, path, "the plug-in could not search" + because, 0));
    }
    return !counted || !why.empty();
}

void Service::answer(const protocol::Ping&, Reply&) {
    begin();
}

}  // namespace quorvel::hostd
