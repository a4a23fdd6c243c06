#include "gateway/manager/Model.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "common/InterfaceName.h"
#include "gateway/manager/Numbers.h"
#include "gateway/manager/VariableTable.h"

namespace quorvel::manager {
namespace {

constexpr Milliseconds kTick = 1000;
constexpr std::size_t kMostEntries = 100'000;
constexpr std::uint32_t kStartServices = 7;
constexpr std::uint32_t kStopServices = 8;
constexpr Milliseconds kRestartTime = 3000;

}  // namespace

Model::Model(description::Board board, const Saved& saved, std::uint64_t seed)
    : board_(std::move(board)),
      neighbours_(board_.neighbours),
      system_(factorySystem()),
      nvram_(factoryNvram(board_)),
      random_(seed) {
    for (const description::Radio& factory : board_.radios) {
        Radio radio;
        radio.factory = factory;
        radio.values = factoryRadio(factory);
        radio.noise = factory.noise;
        for (const description::Bss& factoryBssEntry : factory.bss) {
            Bss bss;
            bss.factory = factoryBssEntry;
            bss.values = factoryBss(factory, factoryBssEntry);
            bss.filterListPresent = !factoryBssEntry.filterList.empty();
            radio.bss.push_back(std::move(bss));
        }
        radios_.push_back(std::move(radio));
    }
    restore(saved);
    log("power", "on, board " + board_.name);
    for (unsigned r = 0; r < radios_.size(); ++r) {
        const std::string& channel = radios_[r].values.at("wlChannel");
        const bool fixed = !channel.empty() && channel != "0";
        radios_[r].currentChannel = fixed ? leadingNumber(channel) : radios_[r].factory.channel;
        if (radios_[r].values.at("AutoChannelEnable") == "1") chooseChannel(r);
    }
    for (const description::Station& station : board_.stations) {
        // A description may name an access point of a radio that the board lacks; such a station is not there.
        if (const auto error = joinStation(station)) log("refused", common::formatMac(station.mac) + ": " + *error);
    }
}

void Model::advanceTo(Milliseconds now) {
    while (now_ / kTick < now / kTick) {
        now_ = (now_ / kTick + 1) * kTick;
        tick();
    }
    now_ = std::max(now_, now);
}

std::optional<Milliseconds> Model::nextChange() const {
    std::optional<Milliseconds> next;
    const auto at = [&](Milliseconds time) {
        // Changes come with ticks; the one of this moment is over.
        const Milliseconds tick = std::max((time + kTick - 1) / kTick, now_ / kTick + 1) * kTick;
        next = std::min(next.value_or(tick), tick);
    };
    for (const Station& station : stations_) {
        const auto& plan = station.setup.plan;
        if (station.planAt < plan.size()) at(static_cast<Milliseconds>(std::ceil(plan[station.planAt].at * 1000)));
        // Another try of a station that is refused changes nothing as long as nothing else does.
        if (station.wanted && !station.associated && !refusal(station)) at(station.retryAt);
        if (station.associated && (station.setup.downlinkTraffic != 0 || station.setup.uplinkTraffic != 0)) at(now_);
    }
    for (const Radio& radio : radios_) {
        if (radio.nextAutoChannel != 0 && radio.values.at("AutoChannelEnable") == "1") at(radio.nextAutoChannel);
        if (std::any_of(radio.bss.begin(), radio.bss.end(), [](const Bss& bss) { return bss.wps.running; })) at(now_);
    }
    return next;
}

void Model::tick() {
    for (std::size_t i = 0; i < stations_.size(); ++i) {
        followPlan(i);
        if (stations_[i].wanted && !stations_[i].associated && stations_[i].retryAt <= now_) tryJoin(i);
    }
    for (unsigned r = 0; r < radios_.size(); ++r) {
        for (unsigned s = 0; s < description::kBssPerRadio; ++s)
            runWps(r, s);
        const bool automatic = radios_[r].values.at("AutoChannelEnable") == "1";
        if (automatic && radios_[r].nextAutoChannel != 0 && radios_[r].nextAutoChannel <= now_) chooseChannel(r);
        if (!automatic) radios_[r].nextAutoChannel = 0;
    }
    runTraffic();
}

bool Model::isUp(unsigned radio) const {
    return radio < radios_.size() && radios_[radio].values.at("wlEnbl") == "1";
}

bool Model::isUp(unsigned radio, unsigned sub) const {
    return isUp(radio) && sub < description::kBssPerRadio && radios_[radio].bss[sub].values.at("wlEnblSsid") == "1";
}

std::uint32_t Model::upSeconds() const {
    return static_cast<std::uint32_t>(now_ / 1000);
}

std::uint32_t Model::radioUpSeconds(unsigned radio) const {
    if (radio >= radios_.size()) return 0;
    const std::string& text = radios_[radio].values.at("wlBootTime");
    const auto start = leadingNumber(text);
    return upSeconds() > start ? upSeconds() - start : 0;
}

void Model::halStarted() {
    log("hal", "started");
}

bool Model::startStopServices(unsigned index, unsigned command) {
    if (command != kStartServices && command != kStopServices) return false;
    securityDaemons_ = command == kStartServices;
    log("services", std::to_string(index) + (securityDaemons_ ? " started" : " stopped"));
    return true;
}

bool Model::restart(unsigned radio) {
    if (radio >= radios_.size()) return false;
    log("restart", common::interfaceName(radio, 0));
    dropAll(radio, "the radio restarts");
    Radio& state = radios_[radio];
    const std::string& channel = state.values.at("wlChannel");
    if (state.values.at("AutoChannelEnable") == "1")
        chooseChannel(radio);
    else if (!channel.empty() && channel != "0")
        useChannel(radio, leadingNumber(channel), "restart");
    for (Station& station : stations_) {
        if ((station.setup.accessPoint - 1) / description::kBssPerRadio == radio) station.retryAt = now_ + kRestartTime;
    }
    state.lastChange = now_;
    return true;
}

void Model::log(const std::string& kind, const std::string& text) {
    if (entries_.size() >= kMostEntries) entries_.pop_front();
    entries_.push_back({++lastEntry_, now_, kind, text});
}

void Model::reseed(std::uint64_t seed) {
    random_ = Random(seed);
    log("seed", std::to_string(seed));
}

}  // namespace quorvel::manager
