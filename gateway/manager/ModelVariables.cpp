// Variables of the manager: reading, setting, and what a set brings about.
#include <algorithm>
#include <array>
#include <charconv>

#include "common/InterfaceName.h"
#include "common/RadioChannels.h"
#include "gateway/manager/Model.h"
#include "gateway/manager/VariableTable.h"

namespace quorvel::manager {
namespace {

constexpr std::size_t kLongestValue = 1023;
constexpr std::size_t kLongestKey = 63;
constexpr std::size_t kMostKeys = 4096;
// The value that removes a list, instead of emptying it.
constexpr std::string_view kDelete = "*DEL*";
constexpr Milliseconds kRejoinDelay = 3000;

bool isFlag(std::string_view value) {
    return value == "0" || value == "1";
}

std::optional<unsigned> decimal(std::string_view text) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

bool isSecurityVariable(std::string_view name) {
    constexpr std::array<std::string_view, 9> kNames = {"wlAuthMode", "wlWep",  "wlWpaPsk",   "wlKey1", "wlKey2",
                                                        "wlKey3",     "wlKey4", "wlKeyIndex", "wlWpa"};
    return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

std::string savedName(const std::string& radio, const std::string& sub, const std::string& name) {
    return radio + "." + sub + "." + name;
}

void collect(Saved& saved, const std::string& radio, const std::string& sub, const Values& values,
             const Values& factory) {
    for (const auto& [name, value] : values) {
        const Variable* variable = findVariable(name);
        if (variable == nullptr || variable->kind != Kind::kStored || factory.at(name) == value) continue;
        saved.variables[savedName(radio, sub, name)] = value;
    }
}

}  // namespace

const Values* Model::valuesOf(unsigned radio, unsigned sub, std::string_view name) const {
    const Variable* variable = findVariable(name);
    if (variable == nullptr) return nullptr;
    if (variable->scope == Scope::kSystem) return &system_;
    if (radio >= radios_.size() || sub >= description::kBssPerRadio) return nullptr;
    return variable->scope == Scope::kRadio ? &radios_[radio].values : &radios_[radio].bss[sub].values;
}

Values* Model::valuesOf(unsigned radio, unsigned sub, std::string_view name) {
    return const_cast<Values*>(static_cast<const Model*>(this)->valuesOf(radio, sub, name));
}

std::optional<std::string> Model::computed(unsigned radio, unsigned sub, std::string_view name) const {
    if (name == "radio_number") return std::to_string(radios_.size());
    if (name == "bssid_number" || name == "ssid_number")
        return std::to_string(radios_.size() * description::kBssPerRadio);
    if (radio >= radios_.size() || sub >= description::kBssPerRadio) return std::nullopt;
    const Radio& state = radios_[radio];
    if (name == "radio_status") return isUp(radio) ? "Up" : "Down";
    if (name == "status") return isUp(radio, sub) ? "Up" : "Down";
    if (name == "lastChange") return std::to_string((now_ - state.lastChange) / 1000);
    if (name == "wlCurrentChannel") return std::to_string(state.currentChannel);
    if (name == "WlBandUtilization") return std::to_string(100 - utilization(radio, state.currentChannel));
    if (name == "numStations") return std::to_string(state.bss[sub].stations.size());
    if (name == "maxBitRate") {
        // Per spatial stream, in Mbit/s, with the short guard interval.
        const unsigned width = bandwidth(radio);
        const unsigned stream = state.factory.band == common::Band::k5GHz ? (width == 160  ? 866
                                                                             : width == 80 ? 433
                                                                             : width == 40 ? 200
                                                                                           : 86)
                                                                          : (width == 40 ? 150 : 72);
        return std::to_string(stream * state.factory.chains);
    }
    return std::nullopt;
}

std::optional<std::string> Model::get(unsigned radio, unsigned sub, std::string_view name) const {
    constexpr std::string_view kStation = "wlStaInfo_";
    constexpr std::string_view kAssociations = "wlStaAssocCnt_";
    if (name.starts_with(kStation)) {
        const auto index = decimal(name.substr(kStation.size()));
        if (radio >= radios_.size() || sub >= description::kBssPerRadio || !index) return std::nullopt;
        const auto& stations = radios_[radio].bss[sub].stations;
        if (*index >= stations.size()) return std::nullopt;
        const ManagerStationRecord bytes = record(stations_[stations[*index]]);
        return std::string(reinterpret_cast<const char*>(&bytes), sizeof bytes);
    }
    if (name.starts_with(kAssociations)) {
        const auto mac = common::parseMac(std::string(name.substr(kAssociations.size())));
        const Station* station = mac ? find(*mac) : nullptr;
        if (radio >= radios_.size() || station == nullptr) return std::nullopt;
        return std::to_string(station->associations);
    }
    const Variable* variable = findVariable(name);
    if (variable == nullptr) return std::nullopt;
    if (variable->kind == Kind::kComputed) return computed(radio, sub, name);
    const Values* values = valuesOf(radio, sub, name);
    if (values == nullptr) return std::nullopt;
    if (variable->kind == Kind::kAction) return "0";
    if (name == "wlFltMacList" && !radios_[radio].bss[sub].filterListPresent) return std::nullopt;
    return values->at(std::string(name));
}

bool Model::accepts(unsigned radio, std::string_view name, std::string_view value) const {
    if (value.size() > kLongestValue) return false;
    if (name == "wlEnbl" || name == "wlEnblSsid" || name == "AutoChannelEnable") return isFlag(value);
    if (name == "wlFltMacMode") return value == "disabled" || value == "allow" || value == "deny";
    if (name == "wlSsid") return value.size() <= 32;
    if (name == "wlMaxAssoc" || name == "wlBootTime") return decimal(value).has_value();
    if (name == "wlBand") return value == radios_[radio].values.at("wlBand");
    if (name == "wlChannel") {
        const auto channel = decimal(value);
        return channel && (*channel == 0 || isUsable(radio, *channel));
    }
    if (name == "wlNBw") {
        const auto code = decimal(value);
        return code && common::isBandwidth(radios_[radio].factory.band, bandwidthOfCode(*code));
    }
    if (name == "wlNBwCap") {
        const auto capability = decimal(value);
        return capability && (*capability == 4 || (*capability < 4 && common::isBandwidth(radios_[radio].factory.band,
                                                                                          20U << *capability)));
    }
    return true;
}

bool Model::set(unsigned radio, unsigned sub, std::string_view name, std::optional<std::string_view> value) {
    const Variable* variable = findVariable(name);
    if (variable == nullptr || variable->kind == Kind::kFixed || variable->kind == Kind::kComputed) return false;
    Values* values = valuesOf(radio, sub, name);
    if (values == nullptr) return false;
    if (variable->kind == Kind::kAction) {
        if (value != "1") return true;
        if (name == "wlResetRadio") resetRadio(radio);
        if (name == "wlResetAP") resetBss(radio, sub);
        return true;
    }
    const std::string key(name);
    const std::string before = values->at(key);
    if (name == "wlFltMacList") {
        const bool present = value && *value != kDelete;
        if (present && value->size() > kLongestValue) return false;
        (*values)[key] = present ? std::string(*value) : std::string();
        radios_[radio].bss[sub].filterListPresent = present;
        react(radio, sub, name, before);
        return true;
    }
    if (value && !accepts(radio, name, *value)) return false;
    if (!value && (name == "wlEnbl" || name == "wlEnblSsid" || name == "wlChannel" || name == "wlNBw" ||
                   name == "wlNBwCap" || name == "wlBand")) {
        return false;  // a radio cannot be without these
    }
    (*values)[key] = value ? std::string(*value) : std::string();
    react(radio, sub, name, before);
    return true;
}

void Model::react(unsigned radio, unsigned sub, std::string_view name, const std::string& before) {
    const Variable* variable = findVariable(name);
    if (variable == nullptr || variable->scope == Scope::kSystem) return;
    Radio& state = radios_[radio];
    Bss& bss = state.bss[sub];
    const std::string where =
        variable->scope == Scope::kRadio ? common::interfaceName(radio, 0) : common::interfaceName(radio, sub);
    const bool secret = name == "wlWpaPsk" || name == "preSharedKey" || name.starts_with("wlKey") ||
                        name == "wlRadiusKey" || name == "secondaryRadiusSecret";
    Values& values = variable->scope == Scope::kRadio ? state.values : bss.values;
    std::string& value = values.at(std::string(name));
    log("set", where + " " + std::string(name) + "=" + (secret ? "***" : value));

    if (name == "wlEnbl" && value != before) {
        state.lastChange = now_;
        log("radio", where + (value == "1" ? " up" : " down"));
    } else if (name == "wlChannel") {
        // The device's manager queues a reconfiguration that makes a new channel effective shortly after the set,
        // without a restart; nobody can look in between, so that it is done here. With automatic selection the text is
        // only kept.
        const unsigned channel = decimal(value).value_or(0);
        if (channel != 0 && state.values.at("AutoChannelEnable") != "1") useChannel(radio, channel, "set");
    } else if (name == "AutoChannelEnable") {
        nvram_[common::interfaceName(radio, 0) + "_auto_cha"] = value;
        if (value == "1")
            chooseChannel(radio);
        else
            state.values["wlChannel"] = std::to_string(state.currentChannel);
    } else if (name == "wlNBw") {
        const unsigned code = decimal(value).value_or(1);
        state.values["wlNBwCap"] = code == 1 ? "0" : code == 3 ? "1" : code == 7 ? "2" : "3";
    } else if (name == "wlNBwCap") {
        const unsigned capability = decimal(value).value_or(0);
        const unsigned widest = state.factory.band == common::Band::k5GHz ? 160 : 40;
        state.values["wlNBw"] = std::to_string(bandwidthCode(capability == 4 ? widest : 20U << capability));
    } else if (name == "wlNPreambleType") {
        // Callers write a word; the store keeps its flag.
        if (value == "gf") value = "1";
    } else if (name == "wlSsid" && value != before) {
        const auto members = bss.stations;
        for (const std::size_t station : members) {
            dissociate(station, "SSID changed");
            stations_[station].retryAt = now_ + kRejoinDelay;
        }
    } else if (name == "wlWscConfig") {
        wpsCommand(radio, sub);
    } else if (name == "wlWscMode" && value == "disabled" && bss.wps.running) {
        bss.wps.running = false;
        nvram_["wps_proc_status"] = "0";
        log("wps", where + " off");
    }
    const bool access =
        name == "wlEnbl" || name == "wlEnblSsid" || name.starts_with("wlFltMac") || isSecurityVariable(name);
    if (access) dropRefused();
}

void Model::resetRadio(unsigned radio) {
    Radio& state = radios_[radio];
    const std::string bootTime = state.values.at("wlBootTime");
    state.values = factoryRadio(state.factory);
    state.values["wlBootTime"] = bootTime;
    const Values factory = factoryNvram(board_);
    for (const char* key : {"_bsd_steering_policy", "_auto_cha"}) {
        const std::string name = common::interfaceName(radio, 0) + key;
        nvram_[name] = factory.at(name);
    }
    state.lastChange = now_;
    log("reset", common::interfaceName(radio, 0));
    useChannel(radio, state.factory.channel, "reset");
    if (state.factory.autoChannel) chooseChannel(radio);
    dropRefused();
}

void Model::resetBss(unsigned radio, unsigned sub) {
    Bss& bss = radios_[radio].bss[sub];
    bss.values = factoryBss(radios_[radio].factory, bss.factory);
    bss.filterListPresent = !bss.factory.filterList.empty();
    bss.wps.running = false;
    log("reset", common::interfaceName(radio, sub));
    dropRefused();
}

std::optional<std::string> Model::nvramGet(std::string_view name) const {
    const auto found = nvram_.find(name);
    if (found == nvram_.end()) return std::nullopt;
    return found->second;
}

bool Model::nvramSet(std::string_view name, std::optional<std::string_view> value) {
    if (name.empty() || name.size() > kLongestKey) return false;
    if (!value) {
        const auto found = nvram_.find(name);
        if (found != nvram_.end()) nvram_.erase(found);
        return true;
    }
    if (value->size() > kLongestValue) return false;
    if (nvram_.size() >= kMostKeys && nvram_.find(name) == nvram_.end()) return false;
    nvram_.insert_or_assign(std::string(name), std::string(*value));
    log("nvram", std::string(name) + "=" + std::string(*value));
    return true;
}

Saved Model::saved() const {
    Saved result;
    collect(result, "-", "-", system_, factorySystem());
    for (unsigned r = 0; r < radios_.size(); ++r) {
        const Radio& radio = radios_[r];
        collect(result, std::to_string(r), "-", radio.values, factoryRadio(radio.factory));
        for (unsigned s = 0; s < description::kBssPerRadio; ++s) {
            const Bss& bss = radio.bss[s];
            collect(result, std::to_string(r), std::to_string(s), bss.values, factoryBss(radio.factory, bss.factory));
            const std::string list = savedName(std::to_string(r), std::to_string(s), "wlFltMacList");
            const bool factoryPresent = !bss.factory.filterList.empty();
            if (!bss.filterListPresent && factoryPresent) result.variables[list] = std::nullopt;
            if (bss.filterListPresent && !factoryPresent) result.variables[list] = bss.values.at("wlFltMacList");
        }
    }
    const Values factory = factoryNvram(board_);
    for (const auto& [name, value] : nvram_) {
        // How the last exchange went is of this power cycle only.
        if (name == "wps_proc_status") continue;
        const auto original = factory.find(name);
        if (original == factory.end() || original->second != value) result.nvram[name] = value;
    }
    for (const auto& [name, value] : factory) {
        if (nvram_.find(name) == nvram_.end()) result.nvram[name] = std::nullopt;
    }
    return result;
}

// Puts saved values in place. What does not fit the board (it was saved on another one) is left out.
void Model::restore(const Saved& saved) {
    for (const auto& [name, value] : saved.variables) {
        const std::size_t first = name.find('.');
        const std::size_t second = first == std::string::npos ? first : name.find('.', first + 1);
        if (second == std::string::npos) continue;
        const std::string variableName = name.substr(second + 1);
        const unsigned radio = decimal(name.substr(0, first)).value_or(0);
        const unsigned sub = decimal(name.substr(first + 1, second - first - 1)).value_or(0);
        const Variable* variable = findVariable(variableName);
        Values* values = valuesOf(radio, sub, variableName);
        if (variable == nullptr || variable->kind != Kind::kStored || values == nullptr) continue;
        if (variableName == "wlFltMacList") {
            radios_[radio].bss[sub].filterListPresent = value.has_value();
        } else if (!value || !accepts(radio, variableName, *value)) {
            continue;
        }
        (*values)[variableName] = value.value_or("");
    }
    for (const auto& [name, value] : saved.nvram) {
        if (value)
            nvram_[name] = *value;
        else
            nvram_.erase(name);
    }
}

}  // namespace quorvel::manager
