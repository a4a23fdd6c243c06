// Wi-Fi Protected Setup. The non-volatile key "wps_proc_status" tells how the last exchange went: 0 none or cancelled,
// 1 in progress, 2 a station was let in, 3 nobody came within the walk time.
#include "common/InterfaceName.h"
#include "gateway/manager/Model.h"

namespace quorvel::manager {
namespace {

constexpr Milliseconds kWalkTime = 120'000;
// How long an exchange with a waiting station takes.
constexpr Milliseconds kExchange = 2000;

}  // namespace

void Model::wpsCommand(unsigned radio, unsigned sub) {
    Bss& bss = radios_[radio].bss[sub];
    const std::string& command = bss.values.at("wlWscConfig");
    const std::string where = common::interfaceName(radio, sub);
    if (command == "cancel") {
        if (bss.wps.running) log("wps", where + " cancelled");
        bss.wps.running = false;
        nvram_["wps_proc_status"] = "0";
        return;
    }
    if (command != "client-pbc" && command != "client-pin") return;
    if (bss.values.at("wlWscMode") != "enabled" || !isUp(radio, sub)) {
        log("wps", where + " is off: " + command + " ignored");
        return;
    }
    bss.wps = {true, command == "client-pin", now_};
    nvram_["wps_proc_status"] = "1";
    log("wps", where + " started " + command);
}

void Model::runWps(unsigned radio, unsigned sub) {
    Bss& bss = radios_[radio].bss[sub];
    if (!bss.wps.running || now_ - bss.wps.startedAt < kExchange) return;
    const unsigned accessPoint = radio * description::kBssPerRadio + sub + 1;
    for (std::size_t i = 0; i < stations_.size(); ++i) {
        Station& station = stations_[i];
        if (!station.wanted || station.associated || station.setup.accessPoint != accessPoint) continue;
        const bool matches = bss.wps.pin
                                 ? !station.setup.wpsPin.empty() && station.setup.wpsPin == bss.values.at("wlWscStaPin")
                                 : station.setup.wpsPushButton;
        if (!matches) continue;
        // The exchange hands the access point's present security over to the station.
        const std::string& mode = bss.values.at("wlAuthMode");
        const std::string before[] = {station.security, station.passphrase};
        station.security = mode == "psk"        ? "WPA-Personal"
                           : mode == "psk psk2" ? "WPA-WPA2-Personal"
                           : mode == "psk2"     ? "WPA2-Personal"
                                                : "None";
        station.passphrase = station.security == "None" ? "" : bss.values.at("wlWpaPsk");
        if (refusal(station)) {
            station.security = before[0];
            station.passphrase = before[1];
            continue;
        }
        bss.wps.running = false;
        nvram_["wps_proc_status"] = "2";
        log("wps", common::interfaceName(radio, sub) + " let in " + common::formatMac(station.setup.mac));
        associate(i);
        return;
    }
    if (now_ - bss.wps.startedAt < kWalkTime) return;
    bss.wps.running = false;
    nvram_["wps_proc_status"] = "3";
    log("wps", common::interfaceName(radio, sub) + " timed out");
}

}  // namespace quorvel::manager
