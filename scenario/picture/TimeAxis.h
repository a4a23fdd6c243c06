#pragma once

#include <string>
#include <vector>

#include "scenario/Scenario.h"

namespace quorvel::scenario {

/// Places board time on the width of a plot.
class TimeAxis {
  public:
    /// From 0 to `end`.
    explicit TimeAxis(Time end) : end_(end > 0 ? end : 1) {}

    /// Returns the place of a time as an SVG length: "12.5%". Times beyond the axis are placed at its ends.
    [[nodiscard]] std::string at(Time time) const;
    /// Returns a span's width as an SVG length.
    [[nodiscard]] std::string width(Time from, Time to) const;
    /// Returns the place of a time in a box that is 1000 wide.
    [[nodiscard]] double inThousand(Time time) const;
    /// Returns round times from 0 on, about ten of them.
    [[nodiscard]] std::vector<Time> marks() const;

    [[nodiscard]] Time end() const {
        return end_;
    }

  private:
    [[nodiscard]] double share(Time time) const;

    Time end_;
};

/// Returns a number for SVG: at most two digits behind the point.
[[nodiscard]] std::string svgNumber(double value);

/// Returns a time as people read it: "12.5 s", "3 min 20 s", "1 h".
[[nodiscard]] std::string readable(Time time);

}  // namespace quorvel::scenario
