#include "gateway/hostd/Service.h"

#include <nlohmann/json.hpp>

#include "gateway/hostd/LogTap.h"

namespace quorvel::hostd {

using Json = nlohmann::ordered_json;

Fault pluginFault(FaultCode code, const std::string& path, const std::string& reason, std::uint32_t result) {
    Fault fault;
    fault.code = code;
    fault.path = path;
    fault.reason = reason;
    fault.result = result;
    fault.logLine = LogTap::errors();
    return fault;
}

Service::Service(const Plugin& plugin, Heartbeat& heartbeat, Surroundings surroundings)
    : plugin_(plugin), heartbeat_(heartbeat), surroundings_(std::move(surroundings)), model_(plugin.table()) {
    LogTap::install();
}

std::string Service::trouble() const {
    return surroundings_.trouble ? surroundings_.trouble() : "";
}

// Faults what a walk could not look at, so that finding nothing is not taken for an answer. Returns whether there was
// anything.
bool Service::faultPassedOver(PathWalk& walk, const std::string& path, Reply& reply) {
    if (walk.uncounted().empty() && !walk.metUnreadable()) return false;
    const std::string why = trouble();
    managerLost_ = managerLost_ || !why.empty();
    const std::string because = why.empty() ? "" : "; " + why;
    for (const PathWalk::Uncounted& object : walk.uncounted()) {
        reply.fault(pluginFault(FaultCode::kInternal, object.path,
                                "the plug-in could not count the instances" + because, object.result));
        if (!why.empty()) break;  // it is the same with the others
    }
    const bool counted = walk.uncounted().empty();
    walk.forgetPassedOver();
    // What a search cannot read meets nothing; without the manager that is no answer.
    if (counted && !why.empty()) {
        reply.fault(pluginFault(FaultCode::kInternal, path, "the plug-in could not search" + because, 0));
    }
    return !counted || !why.empty();
}

void Service::handle(const Json& request, Reply& reply) {
    using Verb = void (Service::*)(const Json&, Reply&);
    static constexpr std::pair<const char*, Verb> kVerbs[] = {
        {"get", &Service::get},
        {"set", &Service::set},
        {"instances", &Service::instances},
        {"datamodel", &Service::dataModel},
        {"complete", &Service::complete},
        {"measure", &Service::measureChannel},
        {"snapshot", &Service::snapshot},
        {"operate", &Service::operate},
        {"control", &Service::control},
    };
    const std::string verb = request.value("do", "");
    heartbeat_.beat();
    LogTap::forgetErrors();
    managerLost_ = false;
    for (const auto& [name, function] : kVerbs) {
        if (verb == name) return (this->*function)(request, reply);
    }
    if (verb == "ping") return;
    if (verb == "board") return reply.part({{"board", surroundings_.board()}});
    Fault fault;
    fault.code = FaultCode::kInternal;
    fault.reason = "the host process knows no request \"" + verb + "\"";
    reply.fault(fault);
}

void Service::control(const Json& request, Reply& reply) {
    const std::string answer = surroundings_.control(request.at("command").dump());
    Json parsed = Json::parse(answer, nullptr, false);
    if (!parsed.is_discarded()) return reply.part({{"control", std::move(parsed)}});
    Fault fault;
    fault.code = FaultCode::kInternal;
    fault.reason = answer;
    if (answer.empty()) {
        const std::string why = trouble();
        fault.reason = why.empty() ? "the WLAN manager (wlmngr2) did not answer" : why;
    }
    reply.fault(fault);
}

}  // namespace quorvel::hostd
