// Control requests: JSON in, JSON out.
#include <csignal>
#include <nlohmann/json.hpp>

#include "common/InterfaceName.h"
#include "common/JsonDepth.h"
#include "gateway/description/Reader.h"
#include "gateway/manager/Service.h"

namespace quorvel::manager {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kPage = 1000;
constexpr double kLongestAdvance = 366.0 * 86400;
constexpr double kLongestHang = 60;

// A request that cannot be carried out: what to change.
struct Refusal {
    std::string text;
};

std::string textOf(const Json& request, const char* key) {
    if (!request.contains(key) || !request.at(key).is_string())
        throw Refusal{std::string("\"") + key + "\" must be a text"};
    return request.at(key).get<std::string>();
}

double numberOf(const Json& request, const char* key, double low, double high) {
    const bool number = request.contains(key) && request.at(key).is_number();
    const double value = number ? request.at(key).get<double>() : low - 1;
    if (!(value >= low && value <= high)) {
        throw Refusal{std::string("\"") + key + "\" must be a number from " +
                      std::to_string(static_cast<long long>(low)) + " to " +
                      std::to_string(static_cast<long long>(high))};
    }
    return value;
}

common::MacAddress macOf(const Json& request, const char* key) {
    const auto mac = common::parseMac(textOf(request, key));
    if (!mac) throw Refusal{std::string("\"") + key + "\" must be a MAC address such as \"02:00:00:12:34:56\""};
    return *mac;
}

void check(const std::optional<std::string>& error) {
    if (error) throw Refusal{*error};
}

// Names the key of the request that is at fault.
Refusal refusalOf(const description::Error& error) {
    if (error.pointer.empty()) return {error.text};
    return {"\"" + error.pointer.substr(1) + "\": " + error.text};
}

double seconds(Milliseconds time) {
    return static_cast<double>(time) / 1000;
}

Json stationJson(const Model& model, const Station& station) {
    Json result = {{"mac", common::formatMac(station.setup.mac)},
                   {"accessPoint", station.setup.accessPoint},
                   {"interface", common::interfaceName((station.setup.accessPoint - 1) / description::kBssPerRadio,
                                                       (station.setup.accessPoint - 1) % description::kBssPerRadio)},
                   {"associated", station.associated},
                   {"wanted", station.wanted},
                   {"rssi", station.setup.rssi},
                   {"standard", station.setup.standard},
                   {"bandwidth", station.setup.bandwidth},
                   {"downlinkRate", model.downlinkRate(station)},
                   {"uplinkRate", model.uplinkRate(station)},
                   {"downlinkTraffic", station.setup.downlinkTraffic},
                   {"uplinkTraffic", station.setup.uplinkTraffic},
                   {"txBytes", station.counters.txBytes},
                   {"rxBytes", station.counters.rxBytes},
                   {"retries", station.counters.txRetries},
                   {"associations", station.associations},
                   {"seconds", station.associated ? (model.now() - station.associatedAt) / 1000 : 0}};
    if (!station.associated && station.wanted)
        result["refusal"] = model.refusal(station).value_or("it has not tried yet");
    return result;
}

Json neighbourJson(const description::Neighbour& neighbour) {
    return {{"ssid", neighbour.ssid},         {"bssid", common::formatMac(neighbour.bssid)},
            {"channel", neighbour.channel},   {"width", neighbour.width},
            {"rssi", neighbour.rssi},         {"noise", neighbour.noise},
            {"security", neighbour.security}, {"ht", neighbour.ht},
            {"vht", neighbour.vht},           {"qbss", neighbour.qbss}};
}

Json stateJson(Service& service) {
    const Model& model = service.model();
    Json radios = Json::array();
    for (unsigned r = 0; r < model.radios().size(); ++r) {
        const Radio& radio = model.radios()[r];
        Json bss = Json::array();
        std::size_t stations = 0;
        for (unsigned s = 0; s < description::kBssPerRadio; ++s) {
            const Bss& entry = radio.bss[s];
            stations += entry.stations.size();
            bss.push_back({{"accessPoint", r * description::kBssPerRadio + s + 1},
                           {"interface", common::interfaceName(r, s)},
                           {"ssid", entry.values.at("wlSsid")},
                           {"bssid", common::formatMac(entry.factory.bssid)},
                           {"status", model.isUp(r, s) ? "Up" : "Down"},
                           {"security", entry.values.at("wlAuthMode")},
                           {"stations", entry.stations.size()}});
        }
        radios.push_back({{"radio", r + 1},
                          {"interface", common::interfaceName(r, 0)},
                          {"band", radio.factory.band == common::Band::k5GHz ? "5GHz" : "2.4GHz"},
                          {"status", model.isUp(r) ? "Up" : "Down"},
                          {"channel", radio.currentChannel},
                          {"bandwidth", model.bandwidth(r)},
                          {"autoChannel", radio.values.at("AutoChannelEnable") == "1"},
                          {"upTime", model.isUp(r) ? model.radioUpSeconds(r) : 0},
                          {"noise", radio.noise},
                          {"utilization", model.utilization(r, radio.currentChannel)},
                          {"stations", stations},
                          {"bss", bss}});
    }
    return {{"board",
             {{"name", model.board().name}, {"identifier", model.board().identifier}, {"chips", model.board().chips}}},
            {"time", seconds(model.now())},
            {"virtual", service.clock().isVirtual()},
            {"stations", model.stations().size()},
            {"neighbours", model.neighbours().size()},
            {"listeners", service.listeners()},
            {"radios", radios}};
}

Json timeRequest(Service& service, const Json& request) {
    if (request.contains("seed"))
        service.model().reseed(static_cast<std::uint64_t>(numberOf(request, "seed", 0, 4294967295.0)));
    if (request.contains("virtual")) {
        if (!request.at("virtual").is_boolean() || !request.at("virtual").get<bool>()) {
            throw Refusal{
                "\"virtual\" can only be set to true: a virtual clock has lost the real time and cannot return to it"};
        }
        service.clock().makeVirtual();
    }
    if (request.contains("advance")) {
        service.clock().advance(static_cast<Milliseconds>(numberOf(request, "advance", 0, kLongestAdvance) * 1000));
        service.followClock();
    }
    return {{"time", seconds(service.model().now())}, {"virtual", service.clock().isVirtual()}};
}

Json countsRequest(const Service& service) {
    Json requests = Json::array();
    for (std::uint32_t i = 1; i <= kLastOperation; ++i) {
        const common::Durations& durations = service.durations(static_cast<Operation>(i));
        const common::Durations::Classes classes = durations.classes();
        if (classes == common::Durations::Classes{}) continue;
        requests.push_back({{"name", kOperationNames[i - 1]}, {"seconds", durations.seconds()}, {"classes", classes}});
    }
    return {{"bounds", common::kDurationBounds}, {"requests", requests}};
}

Json eventsRequest(const Model& model, const Json& request) {
    const auto since = request.contains("since") ? static_cast<std::uint64_t>(numberOf(request, "since", 0, 1e15)) : 0;
    const auto count =
        request.contains("count") ? static_cast<std::size_t>(numberOf(request, "count", 1, 100000)) : kPage;
    Json events = Json::array();
    std::uint64_t last = since;
    for (const LogEntry& entry : model.entries()) {
        if (entry.number <= since) continue;
        if (events.size() == count) break;
        last = entry.number;
        events.push_back(
            {{"number", entry.number}, {"time", seconds(entry.at)}, {"kind", entry.kind}, {"text", entry.text}});
    }
    return {{"events", events}, {"last", last}};
}

Json stationRequest(Model& model, const std::string& op, const Json& request) {
    if (op == "station.list") {
        Json stations = Json::array();
        const auto only =
            request.contains("accessPoint")
                ? static_cast<unsigned>(numberOf(request, "accessPoint", 1, description::kMaxAccessPoints))
                : 0U;
        for (const Station& station : model.stations()) {
            if (only == 0 || station.setup.accessPoint == only) stations.push_back(stationJson(model, station));
        }
        return {{"stations", stations}};
    }
    const common::MacAddress mac = macOf(request, "mac");
    if (op == "station.leave") {
        check(model.leaveStation(mac));
    } else if (op == "station.move") {
        check(model.moveStation(mac, static_cast<int>(numberOf(request, "rssi", -120, 0))));
    } else if (op == "station.traffic") {
        check(model.setTraffic(mac, static_cast<unsigned>(numberOf(request, "downlink", 0, 20'000'000)),
                               static_cast<unsigned>(numberOf(request, "uplink", 0, 20'000'000))));
    } else if (op == "station.join") {
        Json setup = request;
        setup.erase("op");
        bool known = false;
        for (const Station& station : model.stations())
            known = known || station.setup.mac == mac;
        if (known) {
            // A station that is there already comes back as it was, perhaps elsewhere.
            if (!setup.contains("bss")) setup["bss"] = 1;
            const bool elsewhere = request.contains("bss");
            const auto parsed = description::parseStation(setup.dump(), "request");
            if (const auto* error = std::get_if<description::Error>(&parsed)) throw refusalOf(*error);
            const auto& station = std::get<description::Station>(parsed);
            if (request.contains("rssi")) check(model.moveStation(mac, station.rssi));
            check(model.rejoinStation(mac, elsewhere ? std::optional(station.accessPoint) : std::nullopt));
        } else {
            if (!setup.contains("bss")) {
                throw Refusal{"the station " + common::formatMac(mac) +
                              " is new: name the access point that it joins (\"bss\")"};
            }
            const auto parsed = description::parseStation(setup.dump(), "request");
            if (const auto* error = std::get_if<description::Error>(&parsed)) throw refusalOf(*error);
            auto station = std::get<description::Station>(parsed);
            // Times in a request count from now.
            for (description::StationStep& step : station.plan)
                step.at += seconds(model.now());
            check(model.joinStation(station));
        }
    } else {
        throw Refusal{"unknown op \"" + op +
                      "\"; known: station.list, station.join, station.leave, station.move, station.traffic"};
    }
    for (const Station& station : model.stations()) {
        if (station.setup.mac == mac) return {{"station", stationJson(model, station)}};
    }
    return Json::object();
}

Json neighbourRequest(Model& model, const std::string& op, const Json& request) {
    if (op == "neighbour.add") {
        Json setup = request;
        setup.erase("op");
        const auto parsed = description::parseNeighbour(setup.dump(), "request");
        if (const auto* error = std::get_if<description::Error>(&parsed)) throw refusalOf(*error);
        check(model.addNeighbour(std::get<description::Neighbour>(parsed)));
        return Json::object();
    }
    if (op == "neighbour.remove") {
        check(model.removeNeighbour(macOf(request, "bssid")));
        return Json::object();
    }
    if (op != "neighbour.list")
        throw Refusal{"unknown op \"" + op + "\"; known: neighbour.list, neighbour.add, neighbour.remove"};
    Json neighbours = Json::array();
    for (const description::Neighbour& neighbour : model.neighbours())
        neighbours.push_back(neighbourJson(neighbour));
    return {{"neighbours", neighbours}};
}

FaultPoint faultPointOf(const std::string& moment) {
    if (moment == "read") return FaultPoint::kRead;
    if (moment == "write") return FaultPoint::kWrite;
    if (moment == "scan") return FaultPoint::kScan;
    if (moment == "save") return FaultPoint::kSave;
    throw Refusal{"\"at\" must be one of read, write, scan, save"};
}

Json faultRequest(Service& service, const Json& request) {
    Faults& faults = service.faults();
    const std::string kind = textOf(request, "fault");
    const auto count = [&] {
        return request.contains("count") ? static_cast<unsigned>(numberOf(request, "count", 0, 1000000)) : 1U;
    };
    if (kind == "hang")
        faults.hangFor = static_cast<Milliseconds>(numberOf(request, "seconds", 0, kLongestHang) * 1000);
    else if (kind == "drop")
        faults.drop = count();
    else if (kind == "truncate")
        faults.truncate = count();
    else if (kind == "oversize")
        faults.oversize = count();
    else if (kind == "save")
        faults.save = request.value("on", true);
    else if (kind == "die" || kind == "stop") {
        faults.point = faultPointOf(textOf(request, "at"));
        faults.signal = kind == "die" ? SIGKILL : SIGSTOP;
    } else if (kind == "wl") {
        const std::string how = textOf(request, "how");
        if (how == "none")
            faults.wl = description::ToolFault::kNone;
        else if (how == "fails")
            faults.wl = description::ToolFault::kFails;
        else if (how == "empty")
            faults.wl = description::ToolFault::kEmpty;
        else if (how == "garbage")
            faults.wl = description::ToolFault::kGarbage;
        else if (how == "hangs")
            faults.wl = description::ToolFault::kHangs;
        else
            throw Refusal{"\"how\" must be one of none, fails, empty, garbage, hangs"};
    } else if (kind == "none") {
        faults = {};
    } else {
        throw Refusal{"\"fault\" must be one of hang, die, stop, drop, truncate, oversize, save, wl, none"};
    }
    service.model().log("fault", kind);
    return Json::object();
}

}  // namespace

std::string Service::control(std::string_view json) {
    constexpr auto kReplace = Json::error_handler_t::replace;
    const auto refused = [](const std::string& text) {
        return Json{{"ok", false}, {"error", text}}.dump(-1, ' ', false, kReplace);
    };
    const Json request = common::parseShallow(json);
    if (!request.is_object()) return refused("a control request is a JSON object such as {\"op\":\"state\"}");
    try {
        const std::string op = textOf(request, "op");
        Json answer = {{"ok", true}};
        Json result;
        if (op == "state")
            result = stateJson(*this);
        else if (op == "time")
            result = timeRequest(*this, request);
        else if (op == "events")
            result = eventsRequest(model_, request);
        else if (op == "counts")
            result = countsRequest(*this);
        else if (op == "fault")
            result = faultRequest(*this, request);
        else if (op.starts_with("station."))
            result = stationRequest(model_, op, request);
        else if (op.starts_with("neighbour."))
            result = neighbourRequest(model_, op, request);
        else
            return refused("unknown op \"" + op +
                           "\"; known: state, time, events, counts, fault, station.*, neighbour.*");
        for (auto& item : result.items())
            answer[item.key()] = item.value();
        return answer.dump(-1, ' ', false, kReplace);
    } catch (const Refusal& refusal) {
        return refused(refusal.text);
    } catch (const nlohmann::json::exception& error) {
        return refused(error.what());
    }
}

}  // namespace quorvel::manager
