#include "tests/agent/core/ScriptedGateway.h"

#include <algorithm>

#include "agent/model/Schema.h"

namespace quorvel::agent_test {
namespace {

constexpr const char* kAccessPoint = "Device.WiFi.AccessPoint.";

std::string objectOf(const std::string& path) {
    return path.substr(0, path.rfind('.') + 1);
}

// How many levels of objects a value is below a path; a table's rows are of its level.
unsigned levelsBelow(const std::string& path, const std::string& value) {
    unsigned levels = 1;
    std::string_view rest = std::string_view(value).substr(path.size());
    for (std::size_t dot = rest.find('.'); dot != std::string_view::npos; dot = rest.find('.')) {
        if (!isNumber(rest.substr(0, dot))) ++levels;
        rest.remove_prefix(dot + 1);
    }
    return levels;
}

}  // namespace

std::vector<TableRow> ScriptedGateway::rows() {
    const auto object = [](const char* path, std::vector<std::vector<std::string>> parameters) {
        std::vector<TableRow> found;
        for (const auto& each : parameters)
            found.push_back({path, each[0], each[1], each[2], each.size() == 3});
        return found;
    };
    std::vector<TableRow> all;
    for (const auto& group : {
             object("Device.WiFi.", {{"RadioNumberOfEntries", "unsignedInt", "readOnly"},
                                     {"SSIDNumberOfEntries", "unsignedInt", "readOnly"},
                                     {"CommitSettings", "boolean", "readWrite"}}),
             object("Device.WiFi.Radio.{i}.", {{"Enable", "boolean", "readWrite"},
                                               {"Status", "string", "readOnly"},
                                               {"Alias", "string", "readWrite"},
                                               {"Name", "string", "readOnly"},
                                               {"Channel", "unsignedInt", "readWrite"},
                                               {"TransmitPower", "int", "readWrite"},
                                               {"UpTime", "unsignedInt", "readOnly"},
                                               {"Restart", "boolean", "readWrite"},
                                               {"pushRadioChannel2", "string", "writeOnly"},
                                               {"DcsChannelMetrics", "string", "readWrite", "binary"}}),
             object("Device.WiFi.Radio.{i}.Stats.",
                    {{"BytesSent", "unsignedInt", "readOnly"}, {"Noise", "int", "readOnly"}}),
             object("Device.WiFi.NeighboringWiFiDiagnostic.Result.{i}.",
                    {{"Radio", "string", "readOnly"}, {"SSID", "string", "readOnly"}, {"BSSID", "string", "readOnly"}}),
             object("Device.WiFi.SSID.{i}.", {{"Enable", "boolean", "readWrite"},
                                              {"Alias", "string", "readWrite"},
                                              {"Name", "string", "readOnly"},
                                              {"BSSID", "string", "readOnly"},
                                              {"SSID", "string", "readWrite"}}),
             object("Device.WiFi.AccessPoint.{i}.", {{"Enable", "boolean", "readWrite"},
                                                     {"Alias", "string", "readWrite"},
                                                     {"SSIDReference", "string", "readWrite"},
                                                     {"AssociatedDeviceNumberOfEntries", "unsignedInt", "readOnly"},
                                                     {"AssociatedDeviceRSSI", "int", "readOnly", "per station"}}),
             object("Device.WiFi.AccessPoint.{i}.Security.", {{"ModeEnabled", "string", "readWrite"},
                                                              {"KeyPassphrase", "string", "readWrite"},
                                                              {"Reset", "boolean", "readWrite"}}),
             object("Device.WiFi.AccessPoint.{i}.WPS.", {{"Enable", "boolean", "readWrite"},
                                                         {"ButtonPush", "boolean", "readWrite"},
                                                         {"Status", "int", "readOnly"}}),
             object("Device.WiFi.AccessPoint.{i}.AssociatedDevice.{i}.",
                    {{"MACAddress", "string", "readOnly"},
                     {"SignalStrength", "int", "readOnly"},
                     {"Retransmissions", "unsignedInt", "readOnly"}}),
             object("Device.WiFi.AccessPoint.{i}.AssociatedDevice.{i}.Stats.",
                    {{"BytesSent", "unsignedInt", "readOnly"}}),
             object("Device.WiFi.AccessPoint.{i}.AC.{i}.", {{"AccessCategory", "unsignedInt", "readOnly"},
                                                            {"Alias", "string", "readWrite"},
                                                            {"AIFSN", "unsignedInt", "readWrite"},
                                                            {"AckPolicy", "boolean", "readWrite"}}),
         })
        all.insert(all.end(), group.begin(), group.end());
    return all;
}

ScriptedGateway::ScriptedGateway() {
    const auto give = [this](const std::string& object, std::vector<std::pair<std::string, std::string>> given) {
        for (const auto& [name, value] : given)
            values[object + name] = value;
    };
    give("Device.WiFi.", {{"RadioNumberOfEntries", "2"}, {"SSIDNumberOfEntries", "2"}, {"CommitSettings", "false"}});
    for (const std::string n : {"1", "2"}) {
        const std::string radio = "Device.WiFi.Radio." + n + ".";
        give(radio, {{"Enable", "true"},
                     {"Status", "Up"},
                     {"Alias", ""},
                     {"Name", "wl" + n},
                     {"Channel", "36"},
                     {"TransmitPower", "100"},
                     {"UpTime", "5"},
                     {"Restart", "false"}});
        give(radio + "Stats.", {{"BytesSent", "7"}, {"Noise", "-90"}});
        give("Device.WiFi.SSID." + n + ".", {{"Enable", n == "1" ? "true" : "false"},
                                             {"Alias", n == "1" ? "home" : ""},
                                             {"Name", "wl" + n},
                                             {"BSSID", "02:00:00:00:00:0" + n},
                                             {"SSID", "net" + n}});
        const std::string point = kAccessPoint + n + ".";
        give(point, {{"Enable", "true"},
                     {"Alias", ""},
                     {"SSIDReference", "Device.WiFi.SSID." + n},
                     {"AssociatedDeviceNumberOfEntries", "0"}});
        give(point + "Security.",
             {{"ModeEnabled", "WPA2-Personal"}, {"KeyPassphrase", "sesame-" + n}, {"Reset", "false"}});
        give(point + "WPS.", {{"Enable", "true"}, {"ButtonPush", "false"}, {"Status", "0"}});
        for (const std::string m : {"1", "2"}) {
            give(point + "AC." + m + ".",
                 {{"AccessCategory", "0"}, {"Alias", ""}, {"AIFSN", "3"}, {"AckPolicy", "false"}});
        }
    }
}

void ScriptedGateway::later(std::function<void()> answer) {
    if (!holding) return answer();
    held_.push_back(std::move(answer));
}

void ScriptedGateway::release() {
    holding = false;
    while (!held_.empty()) {
        const auto answer = std::move(held_.front());
        held_.pop_front();
        answer();
    }
}

void ScriptedGateway::stations(unsigned accessPoint, const std::vector<std::string>& macs) {
    const std::string point = kAccessPoint + std::to_string(accessPoint) + ".";
    const std::string table = point + "AssociatedDevice.";
    std::erase_if(values, [&table](const auto& value) { return value.first.starts_with(table); });
    for (std::size_t i = 0; i < macs.size(); ++i) {
        const std::string row = table + std::to_string(i + 1) + ".";
        values[row + "MACAddress"] = macs[i];
        values[row + "SignalStrength"] = "-5" + std::to_string(macs[i].back() % 10);
        values[row + "Retransmissions"] = "1";
        values[row + "Stats.BytesSent"] = "1" + macs[i].substr(macs[i].size() - 1);
    }
    values[point + "AssociatedDeviceNumberOfEntries"] = std::to_string(macs.size());
}

void ScriptedGateway::change(const std::string& path, const std::string& value) {
    values[path] = value;
    const auto covers = [&path](const std::string& watch) {
        return watch == path || (watch.ends_with('.') && path.starts_with(watch));
    };
    if (listener != nullptr && std::any_of(watched.begin(), watched.end(), covers))
        listener->onChanges({{path, value}});
}

std::size_t ScriptedGateway::count(const std::string& call) const {
    return static_cast<std::size_t>(
        std::count_if(calls.begin(), calls.end(), [&call](const std::string& each) { return each.starts_with(call); }));
}

void ScriptedGateway::table(std::function<void(std::vector<TableRow>)> done) {
    later([done] { done(rows()); });
}

void ScriptedGateway::read(const std::string& path, unsigned levels, GetAnswer& answer) const {
    if (unreadable.contains(path)) {
        answer.faults.push_back({7003, path, "the plug-in could not read it"});
        return;
    }
    bool found = false;
    if (!path.ends_with('.')) {
        const auto value = values.find(path);
        if (value != values.end()) answer.values.push_back({path, value->second});
        found = value != values.end();
    } else {
        for (const auto& [name, value] : values) {
            if (!name.starts_with(path)) continue;
            found = true;
            if (levels != 0 && levelsBelow(path, name) > levels) continue;
            if (unreadable.contains(name)) {
                answer.faults.push_back({7003, name, "the plug-in could not read it"});
            } else {
                answer.values.push_back({name, value});
            }
        }
        // An object's own values come before those of the objects below it.
        std::stable_sort(answer.values.begin(), answer.values.end(),
                         [](const GatewayValue& one, const GatewayValue& other) {
                             return PathLess{}(objectOf(one.path), objectOf(other.path));
                         });
        found = found || !isNumber(path.substr(path.rfind('.', path.size() - 2) + 1,
                                               path.size() - 2 - path.rfind('.', path.size() - 2)));
    }
    if (!found) answer.faults.push_back({7016, path, "there is no such object instance"});
}

void ScriptedGateway::get(std::vector<std::string> paths, unsigned levels, std::function<void(GetAnswer)> done) {
    calls.push_back("get");
    later([this, paths = std::move(paths), levels, done] {
        GetAnswer answer;
        answer.lost = lost;
        if (lost) {
            answer.faults.push_back({7003, "", "the manager is gone"});
        } else {
            for (const std::string& path : paths)
                read(path, levels, answer);
        }
        done(std::move(answer));
    });
}

void ScriptedGateway::instances(std::vector<std::string> tables,
                                std::function<void(std::vector<std::string>, std::vector<GatewayFault>)> done) {
    calls.push_back("instances");
    later([this, tables = std::move(tables), done] {
        std::vector<std::string> found;
        std::vector<GatewayFault> faults;
        for (const std::string& table : tables) {
            const std::string parent(tableOf(table));
            const std::string_view last = std::string_view(parent).substr(0, parent.size() - 1);
            const bool there = !isNumber(last.substr(last.rfind('.') + 1)) ||
                               std::any_of(values.begin(), values.end(),
                                           [&](const auto& each) { return each.first.starts_with(parent); });
            if (!there) faults.push_back({7016, table, "there is no " + parent});
            for (const auto& [path, value] : values) {
                if (!path.starts_with(table)) continue;
                std::string row = path.substr(0, path.find('.', table.size()) + 1);
                if (found.empty() || found.back() != row) found.push_back(std::move(row));
            }
        }
        if (lost) faults.push_back({7003, "", "the manager is gone"});
        done(std::move(found), std::move(faults));
    });
}

SetAnswer ScriptedGateway::staged(const std::vector<Setting>& settings) const {
    SetAnswer answer;
    for (const auto& [path, value] : settings) {
        const std::string object = objectOf(path);
        const bool there =
            std::any_of(values.begin(), values.end(), [&](const auto& each) { return each.first.starts_with(object); });
        const auto refusal = refused.find(path);
        if (!there) {
            answer.faults.push_back({7016, path, "there is no such object instance"});
        } else if (refusal != refused.end()) {
            answer.faults.push_back({7012, path, refusal->second});
        }
    }
    return answer;
}

void ScriptedGateway::check(std::vector<Setting> settings, std::function<void(SetAnswer)> done) {
    calls.push_back("check");
    later([this, settings = std::move(settings), done] { done(staged(settings)); });
}

void ScriptedGateway::set(std::vector<Setting> settings, std::function<void(SetAnswer)> done) {
    std::string call = "set";
    for (const auto& [path, value] : settings)
        call += " " + path.substr(12) + "=" + value;
    calls.push_back(call);
    later([this, settings = std::move(settings), done] {
        SetAnswer answer = staged(settings);
        for (const auto& [path, value] : settings) {
            if (!answer.faults.empty()) break;
            const std::string object = objectOf(path);
            if (std::find(answer.applied.begin(), answer.applied.end(), object) == answer.applied.end()) {
                answer.applied.push_back(object);
            }
            const auto failure = unapplied.find(object);
            if (failure != unapplied.end()) {
                answer.faults.push_back({7020, object, failure->second});
                break;
            }
            values[path] = value;
        }
        done(std::move(answer));
    });
}

void ScriptedGateway::save(std::function<void(SaveAnswer)> done) {
    calls.push_back("save");
    later([this, done] { done({saveFails.empty(), saveFails}); });
}

void ScriptedGateway::scan(std::string radio, std::function<void(std::vector<GatewayFault>)> done) {
    calls.push_back("scan " + radio);
    later([this, radio, done] {
        if (!scanFails.empty()) return done({{7003, radio, scanFails}});
        const std::string row = "Device.WiFi.NeighboringWiFiDiagnostic.Result." + radio.substr(18);
        values[row + "Radio"] = "wl" + radio.substr(18, 1);
        values[row + "SSID"] = "next door";
        values[row + "BSSID"] = "0A:00:00:00:00:0" + radio.substr(18, 1);
        done({});
    });
}

void ScriptedGateway::pushButton(std::string wps, std::function<void(std::vector<GatewayFault>)> done) {
    calls.push_back("push " + wps);
    later([this, wps, done] {
        values[wps + "Status"] = "1";
        done({});
    });
}

void ScriptedGateway::watch(std::vector<std::string> paths) {
    watched = std::move(paths);
}

void ScriptedGateway::powerCycle(bool factory, std::function<void(std::vector<GatewayFault>)> done) {
    calls.push_back(factory ? "power factory" : "power");
    if (!powerFails.empty()) return done({{7003, "", powerFails}});
    done({});
    onPower();
}

}  // namespace quorvel::agent_test
