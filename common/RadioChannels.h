#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace quorvel::common {

enum class Band { k2_4GHz, k5GHz };

/// A channel as scan results and channel switches write it.
struct ChannelText {
    unsigned primary = 0;
    unsigned width = 20;  ///< MHz
};

/// Reads "11", "6l", "6u" or "36/80" (width 20, 40, 80 or 160). Returns nothing for anything else.
[[nodiscard]] std::optional<ChannelText> parseChannelText(std::string_view text);

/// Returns the channels of the band in ascending order.
[[nodiscard]] const std::vector<unsigned>& bandChannels(Band band);
/// Tells whether the band has the channel.
[[nodiscard]] bool isBandChannel(Band band, unsigned channel);
/// Tells whether the channel may only be used with radar detection.
[[nodiscard]] bool isRadarChannel(unsigned channel);
/// Tells whether the band has channels of the bandwidth in MHz.
[[nodiscard]] bool isBandwidth(Band band, unsigned bandwidth);
/// Returns the centre frequency of the primary channel in MHz.
[[nodiscard]] unsigned channelFrequency(unsigned channel);
/// Tells whether two transmissions overlap, each given by primary channel and width in MHz.
[[nodiscard]] bool channelsOverlap(const ChannelText& a, const ChannelText& b);

}  // namespace quorvel::common
