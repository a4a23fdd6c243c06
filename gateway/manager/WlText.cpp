#include "gateway/manager/WlText.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "common/InterfaceName.h"
#include "gateway/manager/Random.h"

namespace quorvel::manager {
namespace {

constexpr std::int32_t kWlHangs = 2;  // tells the tool to wait before it fails

struct InterfaceIndex {
    unsigned radio;
    unsigned sub;
};

std::optional<InterfaceIndex> findInterface(const Model& model, std::string_view name) {
    for (unsigned r = 0; r < model.radios().size(); ++r) {
        for (unsigned s = 0; s < description::kBssPerRadio; ++s) {
            if (common::interfaceName(r, s) == name) return InterfaceIndex{r, s};
        }
    }
    return std::nullopt;
}

std::string counter(const char* name, std::uint64_t value) {
    // The hardware's counters have 32 bits and wrap.
    return std::string(name) + " " + std::to_string(static_cast<std::uint32_t>(value));
}

std::string counters(const Radio& radio, const Bss* bss) {
    const Counters& c = bss == nullptr ? radio.counters : bss->counters;
    std::string text = counter("txframe", c.txFrames);
    const auto next = [&](const char* separator, const std::string& entry) { text += separator + entry; };
    next(" ", counter("txbyte", c.txBytes));
    next(" ", counter("txretrans", c.txRetries));
    next(" ", counter("txerror", c.txErrors));
    next("\n", counter("rxframe", c.rxFrames));
    next(" ", counter("rxbyte", c.rxBytes));
    next(" ", counter("rxerror", c.rxErrors));
    next("\n", counter("rxbadplcp", radio.badPlcp));
    next(" ", counter("rxbadfcs", radio.badFcs));
    next(" ", counter("rxbadsrcmac", radio.badSourceMac));
    next("\n", counter("rxmgocast", radio.otherManagement));
    next(" ", counter("rxrtry", c.rxRetries));
    return text + "\n";
}

std::string channelText(const Model& model, unsigned radio) {
    const unsigned width = model.bandwidth(radio);
    std::string channel = std::to_string(model.radios()[radio].currentChannel);
    if (width == 20) return channel;
    if (width == 40) return channel + "l";
    return channel + "/" + std::to_string(width);
}

std::string status(const Model& model, InterfaceIndex where) {
    const Radio& radio = model.radios()[where.radio];
    const Bss& bss = radio.bss[where.sub];
    const bool up = model.isUp(where.radio, where.sub);
    std::string text =
        up ? "SSID: \"" + bss.values.at("wlSsid") + "\"\n" : "Not associated. Last associated with network: \"\"\n";
    if (!model.isUp(where.radio)) return text;
    text += "Mode: Managed RSSI: 0 dBm SNR: 0 dB noise: " + std::to_string(radio.noise) +
            " dBm Channel: " + channelText(model, where.radio) + "\n";
    if (up) text += "BSSID: " + common::formatMac(bss.factory.bssid) + "\n";
    return text;
}

void security(std::string& text, const description::Neighbour& neighbour) {
    const std::string& mode = neighbour.security;
    const bool personal = mode.ends_with("Personal");
    const bool both = mode.starts_with("WPA-WPA2");
    const bool second = both || mode.starts_with("WPA2");
    const bool first = both || (mode.starts_with("WPA-") && !second);
    const std::string ciphers = both    ? "unicast ciphers(2): TKIP AES-CCMP"
                                : first ? "unicast ciphers(1): TKIP"
                                        : "unicast ciphers(1): AES-CCMP";
    const auto block = [&](const char* title, const char* suite) {
        text += std::string(title) + "\n\tmulticast cipher: " + (first ? "TKIP" : "AES-CCMP") + "\n\t" + ciphers +
                "\n\tAKM Suites(1): " + suite + "\n";
    };
    if (second) block("RSN (WPA2):", personal ? "WPA2-PSK" : "WPA2-802.1x");
    if (first) block("WPA:", personal ? "WPA-PSK" : "WPA-802.1x");
}

std::string scanResults(const Model& model, unsigned radio) {
    const bool high = model.radios()[radio].factory.band == common::Band::k5GHz;
    std::string text;
    for (const description::Neighbour& neighbour : model.neighbours()) {
        if ((neighbour.primaryChannel >= 36) != high) continue;
        const int snr = std::max(0, neighbour.rssi - neighbour.noise);
        text += "SSID: \"" + neighbour.ssid + "\"\n";
        text += "Mode: " + neighbour.mode + " RSSI: " + std::to_string(neighbour.rssi) +
                " dBm SNR: " + std::to_string(snr) + " dB noise: " + std::to_string(neighbour.noise) +
                " dBm Flags: RSSI on-channel Channel: " + neighbour.channel + "\n";
        text += "BSSID: " + common::formatMac(neighbour.bssid) + " Capability: ESS" +
                (neighbour.security == "None" ? "" : " WEP") + " ShortSlot\n";
        text += "Supported Rates: [ ";
        for (const std::string& rate : neighbour.rates)
            text += rate + " ";
        text += "]\n";
        security(text, neighbour);
        if (neighbour.ht) text += "HT Capable:\n";
        if (neighbour.vht) text += "VHT Capable:\n";
        if (neighbour.qbss >= 0) {
            char line[64];
            (void)std::snprintf(line, sizeof line, "QBSS Channel Utilization: 0x%x (%d %%)\n",
                                static_cast<unsigned>(neighbour.qbss),
                                neighbour.qbss * 100 / 255);  // always fits
            text += line;
        }
        text += "\n";
    }
    return text;
}

std::string garbage() {
    Random random(7);
    std::string text;
    for (int i = 0; i < 2000; ++i)
        text += static_cast<char>(random.between(1, 255));
    return text;
}

}  // namespace

WlAnswer wlText(Model& model, description::ToolFault fault, std::string_view interface, std::string_view command) {
    switch (fault) {
        case description::ToolFault::kNone:
            break;
        case description::ToolFault::kFails:
            return {1, "wl: the driver does not answer (injected fault)\n"};
        case description::ToolFault::kEmpty:
            return {0, ""};
        case description::ToolFault::kGarbage:
            return {0, garbage()};
        case description::ToolFault::kHangs:
            return {kWlHangs, "wl: the driver does not answer (injected fault)\n"};
    }
    const auto where = findInterface(model, interface);
    if (!where) return {1, "wl: no interface " + std::string(interface) + " on this board; try wl0\n"};
    const Radio& radio = model.radios()[where->radio];
    const Bss& bss = radio.bss[where->sub];
    if (command == "macmode") {
        const std::string& mode = bss.values.at("wlFltMacMode");
        return {0, mode == "deny" ? "1\n" : mode == "allow" ? "2\n" : "0\n"};
    }
    const bool known = command == "counters" || command == "status" || command == "scan" || command == "scanresults";
    if (!known) {
        return {1, "wl: unknown command " + std::string(command) +
                       "; known: counters, status, scan, scanresults, macmode\n"};
    }
    if (command == "counters") return {0, counters(radio, where->sub == 0 ? nullptr : &bss)};
    if (command == "status") return {0, status(model, *where)};
    if (!model.isUp(where->radio)) return {1, "wl: " + std::string(interface) + " is down\n"};
    if (command == "scan") {
        model.log("scan", std::string(interface));
        return {0, ""};
    }
    return {0, scanResults(model, where->radio)};
}

}  // namespace quorvel::manager
