#include "common/RadioChannels.h"

#include <algorithm>

namespace quorvel::common {
namespace {

constexpr unsigned kFirst5GHzChannel = 36;

struct Span {
    unsigned low;
    unsigned high;
};

// The frequencies that a transmission occupies. Wide 5 GHz channels are aligned blocks; a wide 2.4 GHz one reaches up.
Span occupied(const ChannelText& channel) {
    const unsigned centre = channelFrequency(channel.primary);
    if (channel.primary < kFirst5GHzChannel) return {centre - 10, centre - 10 + channel.width};
    const unsigned base = channel.primary >= 149 ? 149 : channel.primary >= 100 ? 100 : kFirst5GHzChannel;
    const unsigned step = channel.width / 5;
    const unsigned first = base + (channel.primary - base) / step * step;
    return {channelFrequency(first) - 10, channelFrequency(first) - 10 + channel.width};
}

}  // namespace

std::optional<ChannelText> parseChannelText(std::string_view text) {
    ChannelText result;
    std::size_t digits = 0;
    while (digits < text.size() && digits < 3 && text[digits] >= '0' && text[digits] <= '9') {
        result.primary = result.primary * 10 + static_cast<unsigned>(text[digits] - '0');
        ++digits;
    }
    const bool known = isBandChannel(Band::k2_4GHz, result.primary) || isBandChannel(Band::k5GHz, result.primary);
    if (digits == 0 || !known) return std::nullopt;
    const std::string_view suffix = text.substr(digits);
    if (suffix.empty() || suffix == "/20") return result;
    result.width = suffix == "l" || suffix == "u" || suffix == "/40" ? 40
                   : suffix == "/80"                                 ? 80
                   : suffix == "/160"                                ? 160
                                                                     : 0;
    if (result.width == 0) return std::nullopt;
    return result;
}

const std::vector<unsigned>& bandChannels(Band band) {
    static const std::vector<unsigned> low = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13};
    static const std::vector<unsigned> high = {36,  40,  44,  48,  52,  56,  60,  64,  100, 104, 108, 112, 116,
                                               120, 124, 128, 132, 136, 140, 144, 149, 153, 157, 161, 165};
    return band == Band::k5GHz ? high : low;
}

bool isBandChannel(Band band, unsigned channel) {
    const auto& channels = bandChannels(band);
    return std::find(channels.begin(), channels.end(), channel) != channels.end();
}

bool isRadarChannel(unsigned channel) {
    return channel >= 52 && channel <= 144;
}

bool isBandwidth(Band band, unsigned bandwidth) {
    if (bandwidth == 20 || bandwidth == 40) return true;
    return band == Band::k5GHz && (bandwidth == 80 || bandwidth == 160);
}

unsigned channelFrequency(unsigned channel) {
    if (channel >= kFirst5GHzChannel) return 5000 + 5 * channel;
    return channel == 14 ? 2484 : 2407 + 5 * channel;
}

bool channelsOverlap(const ChannelText& a, const ChannelText& b) {
    const Span first = occupied(a);
    const Span second = occupied(b);
    return first.low < second.high && second.low < first.high;
}

}  // namespace quorvel::common
