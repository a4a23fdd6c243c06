// Channels: which may be used, switching, measuring.
#include <algorithm>
#include <cstring>

#include "common/InterfaceName.h"
#include "common/RadioChannels.h"
#include "gateway/manager/Model.h"
#include "gateway/manager/Numbers.h"
#include "gateway/manager/VariableTable.h"

namespace quorvel::manager {
namespace {

constexpr unsigned kMostBusy = 95;

bool listNames(const std::string& list, unsigned channel) {
    unsigned number = 0;
    bool digits = false;
    for (std::size_t i = 0; i <= list.size(); ++i) {
        const char c = i < list.size() ? list[i] : ',';
        if (c >= '0' && c <= '9' && number < 1000) {
            number = number * 10 + static_cast<unsigned>(c - '0');
            digits = true;
            continue;
        }
        if (digits && number == channel) return true;
        number = 0;
        digits = false;
    }
    return false;
}

// Percent of air time that a neighbour takes where it is heard.
unsigned activity(const description::Neighbour& neighbour) {
    const unsigned share = neighbour.qbss >= 0 ? static_cast<unsigned>(neighbour.qbss) * 100 / 255 : 8;
    const auto strength = static_cast<unsigned>(std::clamp(neighbour.rssi + 95, 0, 40));
    return share * strength / 40;
}

}  // namespace

bool Model::isUsable(unsigned radio, unsigned channel) const {
    const Radio& state = radios_[radio];
    const auto& possible = state.factory.possibleChannels;
    if (std::find(possible.begin(), possible.end(), channel) == possible.end()) return false;
    return state.factory.band == common::Band::k2_4GHz || !common::isRadarChannel(channel) ||
           state.values.at("WlRegMode") == "1";
}

unsigned Model::bandwidth(unsigned radio) const {
    const unsigned code = leadingNumber(radios_[radio].values.at("wlNBw"));
    return std::max(20U, bandwidthOfCode(code));
}

void Model::useChannel(unsigned radio, unsigned channel, const char* why) {
    Radio& state = radios_[radio];
    if (state.currentChannel == channel) return;
    log("channel", common::interfaceName(radio, 0) + " " + std::to_string(state.currentChannel) + " to " +
                       std::to_string(channel) + " (" + why + ")");
    state.currentChannel = channel;
}

// Automatic selection: the preferred channels first, without the excluded ones, the quietest of them.
void Model::chooseChannel(unsigned radio) {
    Radio& state = radios_[radio];
    unsigned best = 0;
    unsigned bestScore = 0;
    for (const unsigned channel : state.factory.possibleChannels) {
        if (!isUsable(radio, channel) || listNames(state.values.at("wlAcsExclChannels"), channel)) continue;
        const std::string& preferred = state.values.at("wlAcsPrefChannels");
        unsigned score = listNames(preferred, channel) || preferred.empty() ? 0 : 1000;
        for (const description::Neighbour& neighbour : neighbours_) {
            const common::ChannelText theirs{neighbour.primaryChannel, neighbour.width};
            if (common::channelsOverlap({channel, bandwidth(radio)}, theirs)) score += activity(neighbour) + 1;
        }
        if (channel == state.currentChannel && score > 0) --score;  // no change without a gain
        if (best != 0 && score >= bestScore) continue;
        best = channel;
        bestScore = score;
    }
    if (best != 0) useChannel(radio, best, "automatic");
    const Milliseconds seconds = leadingNumber(state.values.at("autoChannelRefreshPeriod"));
    state.nextAutoChannel = seconds == 0 ? 0 : now_ + seconds * 1000;
}

bool Model::switchChannel(unsigned radio, std::string_view text) {
    if (radio >= radios_.size() || !isUp(radio)) return false;
    Radio& state = radios_[radio];
    const auto wanted = common::parseChannelText(text);
    if (!wanted || !isUsable(radio, wanted->primary) || !common::isBandwidth(state.factory.band, wanted->width))
        return false;
    state.values["AutoChannelEnable"] = "0";
    state.values["wlChannel"] = std::to_string(wanted->primary);
    const bool widthGiven = text.find_first_not_of("0123456789") != std::string_view::npos;
    if (widthGiven) {
        state.values["wlNBw"] = std::to_string(bandwidthCode(wanted->width));
        state.values["wlNBwCap"] = wanted->width == 20   ? "0"
                                   : wanted->width == 40 ? "1"
                                   : wanted->width == 80 ? "2"
                                                         : "3";
    }
    useChannel(radio, wanted->primary, "switch announcement");
    return true;
}

unsigned Model::utilization(unsigned radio, unsigned channel) const {
    const Radio& state = radios_[radio];
    unsigned busy =
        common::channelsOverlap({channel, 20}, {state.currentChannel, bandwidth(radio)}) ? state.selfBusy : 0;
    for (const description::Neighbour& neighbour : neighbours_) {
        if (common::channelsOverlap({channel, 20}, {neighbour.primaryChannel, neighbour.width}))
            busy += activity(neighbour);
    }
    return std::min(busy, kMostBusy);
}

bool Model::startMeasurement(unsigned radio, unsigned channel, unsigned dwell) {
    if (radio >= radios_.size() || !isUp(radio)) return false;
    Radio& state = radios_[radio];
    const unsigned measured = channel == 0 ? state.currentChannel : channel;
    const auto& possible = state.factory.possibleChannels;
    if (std::find(possible.begin(), possible.end(), measured) == possible.end()) return false;
    state.measuredChannel = measured;
    state.measuredDwell = std::clamp(dwell, 1U, 1000U);
    log("measure", common::interfaceName(radio, 0) + " channel " + std::to_string(measured) + " for " +
                       std::to_string(state.measuredDwell) + " ms");
    return true;
}

std::optional<ChannelMetricsRecord> Model::channelMetrics(unsigned radio) const {
    if (radio >= radios_.size() || radios_[radio].measuredDwell == 0) return std::nullopt;
    const Radio& state = radios_[radio];
    ChannelMetricsRecord result = {};
    result.channel = state.measuredChannel;
    result.request = 1;
    result.noise = state.noise;
    result.utilization = static_cast<std::int32_t>(utilization(radio, state.measuredChannel));
    const std::string& percent = state.values.at("wlTxPwrPcnt");
    const int highest = state.factory.band == common::Band::k5GHz ? 23 : 20;
    result.txPower = highest - (percent == "75" ? 1 : percent == "50" ? 3 : percent == "25" ? 6 : 0);
    for (const description::Neighbour& neighbour : neighbours_) {
        if (neighbour.primaryChannel != state.measuredChannel || result.count == QUORVEL_MAX_CHANNEL_NEIGHBOURS)
            continue;
        ChannelNeighbour& entry = result.neighbours[result.count++];
        std::memcpy(entry.bssid, neighbour.bssid.bytes, sizeof entry.bssid);
        entry.width = neighbour.width;
        entry.rssi = neighbour.rssi;
    }
    return result;
}

std::optional<ChannelStatsRecord> Model::channelStats(unsigned radio) const {
    if (radio >= radios_.size() || radios_[radio].measuredDwell == 0) return std::nullopt;
    const Radio& state = radios_[radio];
    const bool own = common::channelsOverlap({state.measuredChannel, 20}, {state.currentChannel, bandwidth(radio)});
    const unsigned busy = utilization(radio, state.measuredChannel);
    const unsigned self = own ? std::min(state.selfBusy, busy) : 0;
    ChannelStatsRecord result = {};
    result.channel = state.measuredChannel;
    result.request = 1;
    result.noise = state.noise;
    result.utilization = static_cast<std::int32_t>(busy);
    result.total = std::uint64_t{state.measuredDwell} * 1000;
    const auto part = [&](unsigned percent) { return result.total * percent / 100; };
    result.busy = part(busy);
    result.busySelf = part(self);
    result.busyTx = result.busySelf * 3 / 4;
    result.busyRx = result.busy - result.busyTx;
    result.busyExt = result.busy - result.busySelf;
    return result;
}

std::optional<ChannelStats2Record> Model::channelStats2(unsigned radio) const {
    if (radio >= radios_.size() || !isUp(radio)) return std::nullopt;
    const Radio& state = radios_[radio];
    ChannelStats2Record result = {};
    const unsigned busy = utilization(radio, state.currentChannel);
    result.frequency = common::channelFrequency(state.currentChannel);
    result.noiseFloor = state.noise;
    result.non80211Noise = state.noise - 3;
    result.max80211Rssi = state.noise;
    for (const description::Neighbour& neighbour : neighbours_) {
        const bool heard =
            common::channelsOverlap({state.currentChannel, 20}, {neighbour.primaryChannel, neighbour.width});
        if (heard) result.max80211Rssi = std::max(result.max80211Rssi, neighbour.rssi);
    }
    result.selfBssUtil = std::min(state.selfBusy, busy);
    result.obssUtil = busy - result.selfBssUtil;
    return result;
}

}  // namespace quorvel::manager
