// Stations: admission, dropping, and their events.
#include <algorithm>
#include <cstring>
#include <utility>

#include "gateway/manager/Model.h"
#include "gateway/manager/Numbers.h"
#include "gateway/manager/VariableTable.h"

namespace quorvel::manager {
namespace {

constexpr Milliseconds kRetry = 2000;
constexpr Milliseconds kRejoinDelay = 3000;
constexpr std::size_t kMostStations = 16384;
constexpr std::size_t kMostNeighbours = 20000;
constexpr std::size_t kMostMessages = 4096;

bool listHolds(const std::string& list, const common::MacAddress& mac) {
    constexpr std::size_t kWidth = 17;
    for (std::size_t at = 0; at + kWidth <= list.size();) {
        const auto entry = common::parseMac(list.substr(at, kWidth));
        if (entry == mac) return true;
        at += entry ? kWidth + 1 : 1;
    }
    return false;
}

bool hasWord(std::string_view words, std::string_view word) {
    while (!words.empty()) {
        const std::size_t end = std::min(words.find(' '), words.size());
        if (words.substr(0, end) == word) return true;
        words.remove_prefix(std::min(end + 1, words.size()));
    }
    return false;
}

std::string described(const Station& station) {
    return common::formatMac(station.setup.mac) + " on access point " + std::to_string(station.setup.accessPoint);
}

}  // namespace

Station* Model::find(const common::MacAddress& mac) {
    return const_cast<Station*>(static_cast<const Model*>(this)->find(mac));
}

const Station* Model::find(const common::MacAddress& mac) const {
    const auto found = std::find_if(stations_.begin(), stations_.end(),
                                    [&](const Station& station) { return station.setup.mac == mac; });
    return found == stations_.end() ? nullptr : &*found;
}

Bss* Model::bssOf(const Station& station) {
    return const_cast<Bss*>(static_cast<const Model*>(this)->bssOf(station));
}

const Bss* Model::bssOf(const Station& station) const {
    const unsigned index = station.setup.accessPoint - 1;
    const unsigned radio = index / description::kBssPerRadio;
    return radio < radios_.size() ? &radios_[radio].bss[index % description::kBssPerRadio] : nullptr;
}

std::optional<std::string> Model::securityMismatch(const Station& station, const Bss& bss) const {
    const std::string& mode = bss.values.at("wlAuthMode");
    if (bss.values.at("wlWep") == "enabled") {
        if (!station.security.starts_with("WEP")) return "the access point uses WEP";
        const std::string& index = bss.values.at("wlKeyIndex");
        const bool known = index == "1" || index == "2" || index == "3" || index == "4";
        if (!known || bss.values.at("wlKey" + index) != station.passphrase) return "the WEP key does not match";
        return std::nullopt;
    }
    const std::string_view wanted = authModeOf(station.security);
    const bool open = mode.empty() || mode == "open" || mode == "*DEL*";
    if (open || wanted == "open") {
        if (open && wanted == "open" && !station.security.starts_with("WEP")) return std::nullopt;
        return "the security mode does not match";
    }
    // A station that knows both generations gets along with either.
    const bool either = wanted.find(' ') != std::string_view::npos;
    const std::string_view first = wanted.substr(0, wanted.find(' '));
    const std::string_view second = either ? wanted.substr(wanted.find(' ') + 1) : wanted;
    if (!hasWord(mode, first) && !hasWord(mode, second)) return "the security mode does not match";
    if (station.security.ends_with("Enterprise")) return std::nullopt;
    if (bss.values.at("wlWpaPsk") != station.passphrase) return "the passphrase does not match";
    return std::nullopt;
}

std::optional<std::string> Model::refusal(const Station& station) const {
    const Bss* bss = bssOf(station);
    if (bss == nullptr) return "there is no such access point";
    const unsigned radio = (station.setup.accessPoint - 1) / description::kBssPerRadio;
    if (!isUp(radio)) return "the radio is down";
    if (bss->values.at("wlEnblSsid") != "1") return "the access point is off";
    const std::string& filter = bss->values.at("wlFltMacMode");
    const bool listed = bss->filterListPresent && listHolds(bss->values.at("wlFltMacList"), station.setup.mac);
    if (filter == "deny" && listed) return "the MAC filter denies it";
    if (filter == "allow" && !listed) return "the MAC filter does not allow it";
    if (auto mismatch = securityMismatch(station, *bss)) return mismatch;
    if (station.associated) return std::nullopt;
    const bool secured = station.security != "None" && !station.security.starts_with("WEP");
    if (secured && !securityDaemons_) return "the security services are stopped";
    if (bss->stations.size() >= leadingNumber(bss->values.at("wlMaxAssoc"))) return "the access point is full";
    return std::nullopt;
}

void Model::message(const Station& station, std::uint32_t event) {
    // Nobody may be taking messages: then only the newest are kept.
    if (messages_.size() >= kMostMessages) messages_.erase(messages_.begin());
    StationMessage result;
    const unsigned index = station.setup.accessPoint - 1;
    result.bytes.header.radio = index / description::kBssPerRadio;
    result.bytes.header.bss = index % description::kBssPerRadio;
    result.bytes.header.event = event;
    std::memcpy(result.bytes.header.mac, station.setup.mac.bytes, sizeof result.bytes.header.mac);
    result.size = sizeof(StationEventHeader);
    if (event == QUORVEL_EVENT_ASSOCIATED) {
        result.bytes.station = record(station);
        result.size = sizeof(AssociationMessage);
    }
    messages_.push_back(result);
}

std::vector<StationMessage> Model::takeMessages() {
    return std::exchange(messages_, {});
}

void Model::associate(std::size_t index) {
    Station& station = stations_[index];
    Bss* bss = bssOf(station);
    if (bss == nullptr || station.associated) return;
    station.associated = true;
    station.refusalLogged = false;
    station.associatedAt = now_;
    station.counters = {};
    ++station.associations;
    bss->stations.push_back(index);
    log("join", described(station));
    message(station, QUORVEL_EVENT_ASSOCIATED);
}

void Model::dissociate(std::size_t index, const std::string& why) {
    Station& station = stations_[index];
    if (!station.associated) return;
    station.associated = false;
    if (Bss* bss = bssOf(station)) std::erase(bss->stations, index);
    log("leave", described(station) + ": " + why);
    message(station, QUORVEL_EVENT_AUTHENTICATION);
}

void Model::tryJoin(std::size_t index) {
    Station& station = stations_[index];
    if (!station.wanted || station.associated) return;
    const auto reason = refusal(station);
    if (!reason) {
        associate(index);
        return;
    }
    station.retryAt = now_ + kRetry;
    if (station.refusalLogged) return;
    station.refusalLogged = true;
    log("refused", described(station) + ": " + *reason);
}

void Model::dropRefused() {
    for (std::size_t i = 0; i < stations_.size(); ++i) {
        Station& station = stations_[i];
        station.refusalLogged = station.refusalLogged && station.associated;
        if (!station.associated) continue;
        if (const auto reason = refusal(station)) {
            dissociate(i, *reason);
            station.retryAt = now_ + kRejoinDelay;
        }
    }
}

void Model::dropAll(unsigned radio, const std::string& why) {
    for (std::size_t i = 0; i < stations_.size(); ++i) {
        if ((stations_[i].setup.accessPoint - 1) / description::kBssPerRadio != radio || !stations_[i].associated)
            continue;
        dissociate(i, why);
        stations_[i].retryAt = now_ + kRejoinDelay;
    }
}

std::optional<std::string> Model::joinStation(const description::Station& setup) {
    if (setup.accessPoint > radios_.size() * description::kBssPerRadio) {
        return "access point " + std::to_string(setup.accessPoint) + " is not on this board";
    }
    if (find(setup.mac) != nullptr) return "station " + common::formatMac(setup.mac) + " exists already";
    if (stations_.size() >= kMostStations)
        return "a board carries at most " + std::to_string(kMostStations) + " stations";
    Station station;
    station.setup = setup;
    const Bss* bss = bssOf(station);
    const description::Bss& factory = bss->factory;
    station.security = setup.security.value_or(factory.security);
    const bool wep = station.security.starts_with("WEP");
    const bool wps = setup.wpsPushButton || !setup.wpsPin.empty();
    station.passphrase = setup.passphrase.value_or(wps ? "" : wep ? factory.wepKey : factory.passphrase);
    stations_.push_back(std::move(station));
    followPlan(stations_.size() - 1);
    return std::nullopt;
}

std::optional<std::string> Model::rejoinStation(const common::MacAddress& mac, std::optional<unsigned> accessPoint) {
    Station* station = find(mac);
    if (station == nullptr) return "there is no station " + common::formatMac(mac);
    const auto index = static_cast<std::size_t>(station - stations_.data());
    if (accessPoint && *accessPoint > radios_.size() * description::kBssPerRadio) {
        return "access point " + std::to_string(*accessPoint) + " is not on this board";
    }
    if (accessPoint && *accessPoint != station->setup.accessPoint) {
        dissociate(index, "it moves to access point " + std::to_string(*accessPoint));
        station->setup.accessPoint = *accessPoint;
        // A station that roams on its own is set up for the new network, too.
        const Bss* bss = bssOf(*station);
        if (!station->setup.security) station->security = bss->factory.security;
        if (!station->setup.passphrase) station->passphrase = bss->factory.passphrase;
    }
    station->wanted = true;
    station->refusalLogged = false;
    tryJoin(index);
    return std::nullopt;
}

std::optional<std::string> Model::leaveStation(const common::MacAddress& mac) {
    Station* station = find(mac);
    if (station == nullptr) return "there is no station " + common::formatMac(mac);
    station->wanted = false;
    dissociate(static_cast<std::size_t>(station - stations_.data()), "it left");
    return std::nullopt;
}

std::optional<std::string> Model::moveStation(const common::MacAddress& mac, int rssi) {
    Station* station = find(mac);
    if (station == nullptr) return "there is no station " + common::formatMac(mac);
    station->setup.rssi = rssi;
    log("move", common::formatMac(mac) + " rssi " + std::to_string(rssi));
    return std::nullopt;
}

std::optional<std::string> Model::setTraffic(const common::MacAddress& mac, unsigned downlink, unsigned uplink) {
    Station* station = find(mac);
    if (station == nullptr) return "there is no station " + common::formatMac(mac);
    station->setup.downlinkTraffic = downlink;
    station->setup.uplinkTraffic = uplink;
    log("traffic",
        common::formatMac(mac) + " downlink " + std::to_string(downlink) + " uplink " + std::to_string(uplink));
    return std::nullopt;
}

std::optional<std::string> Model::addNeighbour(const description::Neighbour& neighbour) {
    if (neighbours_.size() >= kMostNeighbours)
        return "a board hears at most " + std::to_string(kMostNeighbours) + " neighbours";
    std::erase_if(neighbours_, [&](const description::Neighbour& other) { return other.bssid == neighbour.bssid; });
    neighbours_.push_back(neighbour);
    log("neighbour", "added " + common::formatMac(neighbour.bssid) + " on channel " + neighbour.channel);
    return std::nullopt;
}

std::optional<std::string> Model::removeNeighbour(const common::MacAddress& bssid) {
    if (std::erase_if(neighbours_, [&](const description::Neighbour& other) { return other.bssid == bssid; }) == 0) {
        return "there is no neighbour " + common::formatMac(bssid);
    }
    log("neighbour", "removed " + common::formatMac(bssid));
    return std::nullopt;
}

void Model::followPlan(std::size_t index) {
    Station& station = stations_[index];
    while (station.planAt < station.setup.plan.size() &&
           station.setup.plan[station.planAt].at * 1000 <= static_cast<double>(now_)) {
        const description::StationStep step = station.setup.plan[station.planAt++];
        if (step.rssi) station.setup.rssi = *step.rssi;
        // Its own plan names access points that the board has not been checked for: such a step is left out.
        if (step.kind == description::StationStep::Kind::kLeave) (void)leaveStation(station.setup.mac);
        if (step.kind == description::StationStep::Kind::kJoin || step.accessPoint)
            (void)rejoinStation(station.setup.mac, step.accessPoint);
    }
}

unsigned Model::downlinkRate(const Station& station) const {
    if (station.setup.downlinkRate != 0) return station.setup.downlinkRate;
    const unsigned radio = (station.setup.accessPoint - 1) / description::kBssPerRadio;
    const unsigned width = std::min(station.setup.bandwidth, radio < radios_.size() ? bandwidth(radio) : 20U);
    // Two streams at best; what remains of it shrinks with the signal.
    const bool fast = station.setup.standard.find("ac") != std::string::npos ||
                      station.setup.standard.find("ax") != std::string::npos;
    unsigned best = width == 160 ? 1733300 : width == 80 ? 866700 : width == 40 ? 400000 : 173300;
    if (!fast) best = width >= 40 ? 300000 : 144400;
    if (station.setup.standard == "g" || station.setup.standard == "a") best = 54000;
    if (station.setup.standard == "b") best = 11000;
    const int quality = std::clamp(station.setup.rssi + 92, 2, 40);
    return std::max(1000U, best / 40 * static_cast<unsigned>(quality));
}

unsigned Model::uplinkRate(const Station& station) const {
    return station.setup.uplinkRate != 0 ? station.setup.uplinkRate : downlinkRate(station) / 10 * 9;
}

ManagerStationRecord Model::record(const Station& station) const {
    ManagerStationRecord result = {};
    const unsigned radio = (station.setup.accessPoint - 1) / description::kBssPerRadio;
    const int floor = radio < radios_.size() ? radios_[radio].noise : -91;
    const std::string mac = common::formatMac(station.setup.mac);
    const auto low = [](std::uint64_t counter) { return static_cast<std::uint32_t>(counter); };
    std::memcpy(result.mac, mac.data(), mac.size());
    result.authenticated = station.associated ? 1 : 0;
    result.active = station.associated ? 1 : 0;
    result.rssi = station.setup.rssi;
    result.downlinkRate = downlinkRate(station);
    result.uplinkRate = uplinkRate(station);
    result.retransmissions = low(station.counters.txRetries);
    result.snr = static_cast<std::uint32_t>(std::max(0, station.setup.rssi - floor));
    std::memcpy(result.standard, station.setup.standard.data(),
                std::min(station.setup.standard.size(), sizeof result.standard));
    result.bandwidth =
        std::min(station.setup.bandwidth, radio < radios_.size() ? bandwidth(radio) : station.setup.bandwidth);
    result.txPackets = low(station.counters.txFrames);
    result.txBytes = low(station.counters.txBytes);
    result.rxPackets = low(station.counters.rxFrames);
    result.txUnicastFailures = low(station.counters.txErrors);
    result.txUnicastRetries = low(station.counters.txRetries);
    result.rxBytes = low(station.counters.rxBytes);
    result.rxRetries = low(station.counters.rxRetries);
    result.associatedSeconds =
        station.associated ? low(static_cast<std::uint64_t>((now_ - station.associatedAt) / 1000)) : 0;
    return result;
}

std::optional<ManagerStationRecord> Model::stationInfo(unsigned radio, unsigned sub, std::string_view mac) const {
    if (radio >= radios_.size() || sub >= description::kBssPerRadio) return std::nullopt;
    const auto address = common::parseMac(std::string(mac));
    if (!address) return std::nullopt;
    for (const std::size_t index : radios_[radio].bss[sub].stations) {
        if (stations_[index].setup.mac == *address) return record(stations_[index]);
    }
    return std::nullopt;
}

std::optional<SsidRecord> Model::ssidInfo(unsigned radio, unsigned sub) const {
    if (radio >= radios_.size() || sub >= description::kBssPerRadio) return std::nullopt;
    SsidRecord result = {};
    const std::string& ssid = radios_[radio].bss[sub].values.at("wlSsid");
    std::memcpy(result.ssid, ssid.data(), std::min(ssid.size(), sizeof result.ssid - 1));
    result.up = isUp(radio, sub) ? 1 : 0;
    return result;
}

}  // namespace quorvel::manager
