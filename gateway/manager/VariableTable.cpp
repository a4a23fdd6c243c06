#include "gateway/manager/VariableTable.h"

#include <array>
#include <unordered_map>

#include "common/InterfaceName.h"

namespace quorvel::manager {
namespace {

constexpr std::array kVariables = {
#define VARIABLE(name, scope, kind, factory) Variable{name, Scope::k##scope, Kind::k##kind, factory},
#include "gateway/manager/Variables.def"
};

Values factoryOf(Scope scope) {
    Values values;
    for (const Variable& variable : kVariables) {
        if (variable.scope != scope || variable.kind == Kind::kComputed || variable.kind == Kind::kAction) continue;
        values.emplace(variable.name, variable.factory);
    }
    return values;
}

std::string joined(const std::vector<unsigned>& numbers) {
    std::string text;
    for (const unsigned number : numbers)
        text += (text.empty() ? "" : ",") + std::to_string(number);
    return text;
}

}  // namespace

const Variable* findVariable(std::string_view name) {
    static const auto* const index = [] {
        auto* result = new std::unordered_map<std::string_view, const Variable*>;
        for (const Variable& variable : kVariables)
            result->emplace(variable.name, &variable);
        return result;
    }();
    const auto found = index->find(name);
    return found == index->end() ? nullptr : found->second;
}

unsigned bandwidthCode(unsigned megahertz) {
    switch (megahertz) {
        case 20:
            return 1;
        case 40:
            return 3;
        case 80:
            return 7;
        case 160:
            return 15;
        default:
            return 0;
    }
}

unsigned bandwidthOfCode(unsigned code) {
    for (const unsigned megahertz : {20U, 40U, 80U, 160U}) {
        if (bandwidthCode(megahertz) == code) return megahertz;
    }
    return 0;
}

std::string_view authModeOf(std::string_view security) {
    constexpr std::array<std::array<std::string_view, 2>, 6> kModes = {{{"WPA-Personal", "psk"},
                                                                        {"WPA2-Personal", "psk2"},
                                                                        {"WPA-WPA2-Personal", "psk psk2"},
                                                                        {"WPA-Enterprise", "wpa"},
                                                                        {"WPA2-Enterprise", "wpa2"},
                                                                        {"WPA-WPA2-Enterprise", "wpa wpa2"}}};
    for (const auto& mode : kModes) {
        if (mode[0] == security) return mode[1];
    }
    return "open";
}

Values factorySystem() {
    return factoryOf(Scope::kSystem);
}

Values factoryRadio(const description::Radio& radio) {
    Values values = factoryOf(Scope::kRadio);
    const bool high = radio.band == common::Band::k5GHz;
    const std::string chainMask = std::to_string((1U << radio.chains) - 1);
    const unsigned code = bandwidthCode(radio.bandwidth);
    const unsigned capability = code == 1 ? 0 : code == 3 ? 1 : code == 7 ? 2 : 3;
    values["wlEnbl"] = radio.enabled ? "1" : "0";
    values["rAlias"] = "cpe-Radio-" + std::to_string(radio.index + 1);
    values["wlFreqBands"] = high ? "5GHz" : "2.4GHz";
    values["wlBand"] = high ? "1" : "2";
    values["supportedStandards"] = values["operatingStandards"] = high ? "a,n,ac" : "b,g,n";
    values["possibleChannels"] = joined(radio.possibleChannels);
    values["wlChannel"] = std::to_string(radio.channel);
    values["AutoChannelEnable"] = radio.autoChannel ? "1" : "0";
    values["wlNBw"] = std::to_string(code);
    values["wlNBwCap"] = std::to_string(capability);
    values["IEEE80211hSupported"] = values["WlRegMode"] = high ? "1" : "0";
    values["wlCountryRev"] = radio.country + "/0";
    values["operationalDataTransmitRates"] = high ? "6b 9 12b 18 24b 36 48 54" : "1b 2b 5.5b 6 9 11b 12 18 24 36 48 54";
    values["wlObssCoex"] = high ? "0" : "1";
    values["wlTxChain"] = values["wlRxChain"] = chainMask;
    values["wlPhyType"] = high ? "v" : "n";
    return values;
}

Values factoryBss(const description::Radio& radio, const description::Bss& bss) {
    Values values = factoryOf(Scope::kBss);
    const std::string number = std::to_string(radio.index * description::kBssPerRadio + bss.index + 1);
    const bool wep = bss.security.starts_with("WEP");
    std::string list;
    for (const common::MacAddress& mac : bss.filterList)
        list += (list.empty() ? "" : ",") + common::formatMac(mac);
    values["name"] = common::interfaceName(radio.index, bss.index);
    values["wlEnblSsid"] = bss.enabled ? "1" : "0";
    values["sAlias"] = "cpe-SSID-" + number;
    values["apAlias"] = "cpe-AccessPoint-" + number;
    values["wlBssid"] = common::formatMac(bss.bssid);
    values["wlSsid"] = bss.ssid;
    values["SSIDReference"] = "Device.WiFi.SSID." + number + ".";
    values["wlHide"] = bss.hidden ? "1" : "0";
    values["wlMaxAssoc"] = std::to_string(bss.maxStations);
    values["wlAPIsolation"] = bss.isolated ? "1" : "0";
    values["wlFltMacMode"] = bss.filter;
    values["wlFltMacList"] = list;
    values["wlAuthMode"] = authModeOf(bss.security);
    values["wlWep"] = wep ? "enabled" : "disabled";
    values["wlKey1"] = bss.wepKey;
    values["wlWpaPsk"] = bss.passphrase;
    values["wlWpa"] = bss.encryption;
    values["wlWscMode"] = bss.wps ? "enabled" : "disabled";
    return values;
}

Values factoryNvram(const description::Board& board) {
    Values values;
    bool anyWps = false;
    for (const description::Radio& radio : board.radios) {
        const std::string prefix = common::interfaceName(radio.index, 0);
        values[prefix + "_bsd_steering_policy"] =
            radio.band == common::Band::k5GHz ? "80 5 3 -75 0 0x40" : "0 5 3 -82 0 0x50";
        values[prefix + "_auto_cha"] = radio.autoChannel ? "1" : "0";
        for (const description::Bss& bss : radio.bss)
            anyWps = anyWps || bss.wps;
    }
    // The contention parameters are numbered by access point, not by radio.
    for (std::size_t ap = 0; ap < board.radios.size() * description::kBssPerRadio; ++ap) {
        const std::string prefix = common::interfaceName(static_cast<unsigned>(ap), 0) + "_wme_";
        values[prefix + "ap_be"] = "15 63 3 0 0 off off";
        values[prefix + "ap_bk"] = "15 1023 7 0 0 off off";
        values[prefix + "ap_vi"] = "7 15 1 6016 3008 off off";
        values[prefix + "ap_vo"] = "3 7 1 3264 1504 off off";
        values[prefix + "sta_be"] = "15 1023 3 0 0 off off";
        values[prefix + "sta_bk"] = "15 1023 7 0 0 off off";
        values[prefix + "sta_vi"] = "7 15 2 6016 3008 off off";
        values[prefix + "sta_vo"] = "3 7 2 3264 1504 off off";
    }
    values["wps_mode"] = anyWps ? "enabled" : "disabled";
    values["wps_proc_status"] = "0";
    values["bsd_role"] = "0";
    return values;
}

}  // namespace quorvel::manager
