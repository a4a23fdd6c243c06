#include "scenario/Actions.h"

#include <algorithm>
#include <cmath>

#include "gateway/description/Reader.h"

namespace quorvel::scenario {
namespace {

std::string following(const std::string& mac, std::size_t by) {
    return common::formatMac(common::following(common::parseMac(mac).value_or(common::MacAddress{}), by));
}

// A number that only the seed and the position decide.
std::uint64_t mixed(std::uint64_t seed, std::uint64_t position) {
    std::uint64_t value = seed * 0x9e3779b97f4a7c15U + position + 1;
    value = (value ^ (value >> 30U)) * 0xbf58476d1ce4e5b9U;
    value = (value ^ (value >> 27U)) * 0x94d049bb133111ebU;
    return value ^ (value >> 31U);
}

void append(std::vector<Fault>& faults, const std::vector<Fault>& more) {
    faults.insert(faults.end(), more.begin(), more.end());
}

std::vector<Fault> set(const Json& members, Stage& stage) {
    hostd::protocol::Set request;
    for (const auto& item : members.at("values").items())
        request.settings.push_back({item.key(), textOf(item.value())});
    request.save = members.value("save", false);
    return stage.ask(request);
}

std::vector<Fault> scan(const Json& members, Stage& stage) {
    const std::string path = "Device.WiFi.Radio." + members.at("radio").dump() + ".Stats.DiagnosticsState";
    hostd::protocol::Set request;
    request.settings.push_back({path, "2"});
    return stage.ask(request);
}

std::vector<Fault> wps(const std::string& how, const Json& members, Stage& stage) {
    const std::string path = "Device.WiFi.AccessPoint." + members.at("accessPoint").dump() + ".WPS.";
    if (how == "wps.cancel") return stage.ask(hostd::protocol::Operate{path, "Cancel", std::nullopt, {}});
    if (members.contains("pin")) {
        hostd::protocol::Set pin;
        pin.settings.push_back({path + "EnrolleePin", textOf(members.at("pin"))});
        std::vector<Fault> faults = stage.ask(pin);
        if (!faults.empty()) return faults;
    }
    return stage.ask(hostd::protocol::Operate{
        path, "MethodSet", how == "wps.pin" ? "PIN" : "PushButton", {{path + "ButtonPush", "true"}}});
}

std::vector<Fault> joinStations(const Json& members, Stage& stage) {
    Json command = members;
    command.erase("count");
    command["op"] = "station.join";
    std::vector<Fault> faults;
    for (std::size_t i = 0; i < members.value("count", std::size_t{1}); ++i) {
        command["mac"] = following(members.at("mac").get<std::string>(), i);
        append(faults, stage.control(command));
    }
    return faults;
}

std::vector<Fault> addNeighbours(const Json& members, Stage& stage) {
    constexpr std::uint64_t kSpread = 40;  // dB below the strongest
    constexpr int kWeakest = -95;
    const std::size_t count = members.value("count", std::size_t{1});
    Json command = members;
    command.erase("count");
    command.erase("channels");
    command["op"] = "neighbour.add";
    std::vector<Fault> faults;
    for (std::size_t i = 0; i < count; ++i) {
        command["bssid"] = following(members.at("bssid").get<std::string>(), i);
        if (members.contains("channels"))
            command["channel"] = members.at("channels").at(i % members.at("channels").size());
        if (count > 1) {
            command["ssid"] = members.at("ssid").get<std::string>() + "-" + std::to_string(i + 1);
            const int below = static_cast<int>(mixed(stage.seed(), i) % kSpread);
            command["rssi"] = std::max(kWeakest, members.value("rssi", -50) - below);
        }
        append(faults, stage.control(command));
    }
    return faults;
}

std::vector<Fault> injectFault(const Json& members, Stage& stage) {
    if (members.contains("tool"))
        return stage.setToolFault(members.at("tool").get<std::string>(), members.at("how").get<std::string>());
    Json command = members;
    command.erase("manager");
    command["op"] = "fault";
    command["fault"] = members.at("manager");
    return stage.control(command);
}

std::vector<Fault> needsOwnBoard(const std::string& action) {
    return {{hostd::protocol::FaultCode::kInternal, "",
             action + " needs a board of the scenario's own; leave it out for a board that is up", "", 0, ""}};
}

std::vector<Fault> power(const std::string& action, Stage& stage) {
    if (stage.isShared()) return needsOwnBoard(action);
    if (action != "power.on") stage.cutPower();
    if (action != "power.cut" && !stage.isOn()) stage.powerOn();
    return {};
}

}  // namespace

std::vector<Fault> perform(const Step& step, Stage& stage) {
    const Json& members = step.members;
    if (step.action == "set") return set(members, stage);
    if (step.action == "scan") return scan(members, stage);
    if (step.action.starts_with("wps.")) return wps(step.action, members, stage);
    if (step.action == "station.join") return joinStations(members, stage);
    if (step.action == "neighbour.add") return addNeighbours(members, stage);
    if (step.action.starts_with("daemon.")) return stage.steerManager(step.action);
    if (step.action == "fault") return injectFault(members, stage);
    if (step.action.starts_with("power.")) return power(step.action, stage);
    if (step.action.starts_with("usp.")) {
        return stage.isShared() ? needsOwnBoard(step.action) : stage.performUsp(step);
    }
    if (step.action == "time") {
        stage.advanceTo(stage.now() + static_cast<Time>(std::llround(members.at("advance").get<double>() * 1000)));
        return {};
    }
    // The other actions are the simulation's own: station.leave, station.move, station.traffic, neighbour.remove.
    Json command = members;
    command["op"] = step.action;
    return stage.control(command);
}

}  // namespace quorvel::scenario
