#pragma once

#include <ostream>
#include <vector>

#include "console/terminal/Style.h"

namespace quorvel::console {

/// A network on the air.
struct OnAir {
    unsigned channel = 0;  ///< its primary channel
    unsigned width = 20;   ///< MHz
};

/// How many networks there are on a channel.
struct Occupancy {
    unsigned channel = 0;
    unsigned networks = 0;     ///< whose primary channel it is
    unsigned overlapping = 0;  ///< others whose width reaches it
};

/// Counts for each of `channels`, and for every other channel that a network is on, in the order of their numbers.
[[nodiscard]] std::vector<Occupancy> occupancyOf(const std::vector<OnAir>& networks, std::vector<unsigned> channels);

/// Draws a line for each channel and marks the radio's own.
void printOccupancy(std::ostream& out, const Style& style, const std::vector<Occupancy>& channels, unsigned own);

}  // namespace quorvel::console
