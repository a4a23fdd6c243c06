#include "console/terminal/Occupancy.h"

#include <algorithm>
#include <string>

#include "common/RadioChannels.h"

namespace quorvel::console {
namespace {

constexpr unsigned kChartWidth = 40;
constexpr unsigned kWidestNetwork = 2;  // cells

std::string repeated(const char* cell, unsigned count) {
    std::string text;
    for (unsigned i = 0; i < count; ++i)
        text += cell;
    return text;
}

}  // namespace

std::vector<Occupancy> occupancyOf(const std::vector<OnAir>& networks, std::vector<unsigned> channels) {
    for (const OnAir& network : networks)
        channels.push_back(network.channel);
    std::sort(channels.begin(), channels.end());
    channels.erase(std::unique(channels.begin(), channels.end()), channels.end());
    std::vector<Occupancy> found;
    for (const unsigned channel : channels) {
        Occupancy counted{channel, 0, 0};
        for (const OnAir& network : networks) {
            if (network.channel == channel) {
                ++counted.networks;
            } else if (common::channelsOverlap({network.channel, network.width}, {channel, 20})) {
                ++counted.overlapping;
            }
        }
        found.push_back(counted);
    }
    return found;
}

void printOccupancy(std::ostream& out, const Style& style, const std::vector<Occupancy>& channels, unsigned own) {
    unsigned most = 1;
    for (const Occupancy& each : channels)
        most = std::max(most, each.networks + each.overlapping);
    const auto cells = [most](unsigned count) {
        const unsigned scaled = count * kChartWidth / std::max(most, kChartWidth / kWidestNetwork);
        return count == 0 ? 0 : std::max(scaled, 1U);
    };
    const bool utf8 = showsUtf8();
    out << "  " << style.dress("Channel  Networks", Colour::kHeading) << " (" << (utf8 ? "█" : "#") << " on it, "
        << (utf8 ? "▒" : "=") << " reaching into it)\n";
    for (const Occupancy& each : channels) {
        const std::string label = std::to_string(each.channel);
        out << "  " << std::string(label.size() < 7 ? 7 - label.size() : 0, ' ') << label << "  ";
        const std::string bar =
            repeated(utf8 ? "█" : "#", cells(each.networks)) + repeated(utf8 ? "▒" : "=", cells(each.overlapping));
        out << bar << (bar.empty() ? "" : " ") << each.networks;
        if (each.overlapping > 0) out << " + " << each.overlapping;
        out << (each.channel == own ? "  <- this radio" : "") << '\n';
    }
}

}  // namespace quorvel::console
