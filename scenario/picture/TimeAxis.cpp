#include "scenario/picture/TimeAxis.h"

#include <algorithm>
#include <cstdio>

namespace quorvel::scenario {

std::string svgNumber(double value) {
    char text[32];
    (void)std::snprintf(text, sizeof text, "%.2f", value);  // every value of a plot fits
    std::string result = text;
    while (result.ends_with('0'))
        result.pop_back();
    if (result.ends_with('.')) result.pop_back();
    return result == "-0" ? "0" : result;
}

std::string readable(Time time) {
    if (time < 60'000) return svgNumber(static_cast<double>(time) / 1000) + " s";
    const Time whole = time / 1000;
    std::string text;
    const auto part = [&text](Time number, const char* unit) {
        if (number != 0) text += (text.empty() ? "" : " ") + std::to_string(number) + " " + unit;
    };
    part(whole / 3600, "h");
    part(whole / 60 % 60, "min");
    part(whole % 60, "s");
    return text;
}

double TimeAxis::share(Time time) const {
    return static_cast<double>(std::clamp<Time>(time, 0, end_)) / static_cast<double>(end_);
}

std::string TimeAxis::at(Time time) const {
    return svgNumber(100 * share(time)) + "%";
}

std::string TimeAxis::width(Time from, Time to) const {
    return svgNumber(100 * std::max(0.0, share(to) - share(from))) + "%";
}

double TimeAxis::inThousand(Time time) const {
    return 1000 * share(time);
}

std::vector<Time> TimeAxis::marks() const {
    static constexpr Time kSteps[] = {100,     200,     500,       1000,      2000,      5000,
                                      10'000,  15'000,  30'000,    60'000,    120'000,   300'000,
                                      600'000, 900'000, 1'800'000, 3'600'000, 7'200'000, 21'600'000};
    constexpr Time kMost = 10;
    const auto* const fitting =
        std::find_if(std::begin(kSteps), std::end(kSteps), [this](Time step) { return end_ / step <= kMost; });
    const Time step = fitting != std::end(kSteps) ? *fitting : (end_ / kMost / 86'400'000 + 1) * 86'400'000;
    std::vector<Time> marks;
    for (Time at = 0; at <= end_; at += step)
        marks.push_back(at);
    return marks;
}

}  // namespace quorvel::scenario
