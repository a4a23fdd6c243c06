#include "scenario/picture/Lanes.h"

#include <algorithm>
#include <map>
#include <optional>

#include "common/Markup.h"

namespace quorvel::scenario {
namespace {

constexpr int kPlotHeight = 56;
constexpr int kRowHeight = 26;
// Room above and below a line, in the box of a plot that is 100 high.
constexpr double kTop = 10;
constexpr double kBottom = 90;

std::string lane(const std::string& kind, const std::string& label, const std::string& note, int height,
                 const std::string& plot) {
    return "<div class=\"lane " + kind + "\"><div class=\"label\"><span>" + common::escapedMarkup(label) + "</span>" +
           (note.empty() ? "" : "<small>" + common::escapedMarkup(note) + "</small>") +
           "</div><svg class=\"plot\" height=\"" + std::to_string(height) + "\" role=\"img\" aria-label=\"" +
           common::escapedMarkup(label + (note.empty() ? "" : ": " + note)) + "\">" + plot + "</svg></div>\n";
}

std::string title(const std::string& text) {
    return "<title>" + common::escapedMarkup(text) + "</title>";
}

std::string bar(const TimeAxis& axis, Time from, Time to, int y, int height, const std::string& kind,
                const std::string& hover) {
    return "<rect class=\"" + kind + "\" x=\"" + axis.at(from) + "\" width=\"" + axis.width(from, to) + "\" y=\"" +
           std::to_string(y) + "\" height=\"" + std::to_string(height) + "\">" + title(hover) + "</rect>";
}

std::string dot(const TimeAxis& axis, Time time, int y, const std::string& kind, const std::string& hover) {
    return "<circle class=\"" + kind + "\" cx=\"" + axis.at(time) + "\" cy=\"" + std::to_string(y) + "\" r=\"5\">" +
           title(hover) + "</circle>";
}

std::string words(const TimeAxis& axis, Time time, int y, const std::string& kind, const std::string& text) {
    return "<text class=\"" + kind + "\" x=\"" + axis.at(time) + "\" y=\"" + std::to_string(y) + "\" dx=\"4\">" +
           common::escapedMarkup(text) + "</text>";
}

std::string when(Time time) {
    return seconds(time) + " s: ";
}

/// Places numbers on the height of a plot.
struct Height {
    double low = 0;
    double high = 0;

    void include(double value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    [[nodiscard]] double at(double value) const {
        if (high <= low) return (kTop + kBottom) / 2;
        return kBottom - (value - low) / (high - low) * (kBottom - kTop);
    }
};

// A line through points, in pieces where there is none; a value holds until the next one is seen.
class Line {
  public:
    Line(const TimeAxis& axis, const Height& height) : axis_(axis), height_(height) {}

    void to(Time time, std::optional<double> value) {
        const std::string x = svgNumber(axis_.inThousand(time));
        if (last_) path_ += "H" + x;
        if (value) path_ += (last_ ? "V" : "M" + x + " ") + svgNumber(height_.at(*value));
        last_ = value;
    }

    [[nodiscard]] std::string text(const std::string& kind) const {
        return "<svg viewBox=\"0 0 1000 100\" preserveAspectRatio=\"none\" width=\"100%\" height=\"100%\"><path "
               "class=\"" +
               kind + "\" d=\"" + path_ + "\"/></svg>";
    }

  private:
    const TimeAxis& axis_;
    const Height& height_;
    std::string path_;
    std::optional<double> last_;
};

bool isNumeric(const Course& course) {
    return std::all_of(course.samples.begin(), course.samples.end(),
                       [](const Course::Sample& one) { return one.value.is_null() || one.value.is_number(); });
}

std::string numberPlot(const TimeAxis& axis, const Course& course, const std::vector<double>& limits) {
    std::optional<Height> height;
    const auto include = [&height](double value) {
        if (!height) height = Height{value, value};
        height->include(value);
    };
    for (const Course::Sample& one : course.samples) {
        if (one.value.is_number()) include(one.value.get<double>());
    }
    if (!height) return "";
    for (const double limit : limits)
        include(limit);
    Line line(axis, *height);
    for (const Course::Sample& one : course.samples)
        line.to(one.time, one.value.is_number() ? std::optional(one.value.get<double>()) : std::nullopt);
    std::string plot;
    for (const double limit : limits) {
        const std::string y = svgNumber(height->at(limit)) + "%";
        plot += "<line class=\"limit\" x1=\"0\" x2=\"100%\" y1=\"" + y + "\" y2=\"" + y + "\">" +
                title("asked for: " + svgNumber(limit)) + "</line>";
    }
    plot += line.text("line");
    plot += "<text class=\"scale\" x=\"100%\" y=\"10\" dx=\"-3\" text-anchor=\"end\">" + svgNumber(height->high) +
            "</text>";
    if (height->high > height->low) {
        plot += "<text class=\"scale\" x=\"100%\" y=\"" + std::to_string(kPlotHeight - 3) +
                "\" dx=\"-3\" text-anchor=\"end\">" + svgNumber(height->low) + "</text>";
    }
    return plot;
}

// Texts and booleans: a span for as long as a value stays.
std::string textPlot(const TimeAxis& axis, const Course& course) {
    std::string plot;
    std::map<std::string, std::size_t> shades;
    for (std::size_t i = 0; i < course.samples.size();) {
        std::size_t next = i + 1;
        while (next < course.samples.size() && course.samples[next].value == course.samples[i].value)
            ++next;
        const Course::Sample& first = course.samples[i];
        const Time to = next < course.samples.size() ? course.samples[next].time : axis.end();
        if (!first.value.is_null()) {
            const std::string value = textOf(first.value);
            const std::size_t shade = shades.try_emplace(value, shades.size()).first->second % 4;
            plot += bar(axis, first.time, to, 6, kRowHeight - 8, "value shade-" + std::to_string(shade),
                        when(first.time) + value);
            plot += words(axis, first.time, 19, "inside", value);
        }
        i = next;
    }
    return plot;
}

std::vector<double> limitsOf(const Scenario& scenario, const std::string& path) {
    std::vector<double> limits;
    for (const Expectation& one : scenario.expectations) {
        if (one.kind == Expectation::Kind::kParameter && one.subject == path && one.condition.value.is_number())
            limits.push_back(one.condition.value.get<double>());
    }
    return limits;
}

}  // namespace

std::string axisLane(const TimeAxis& axis) {
    std::string plot;
    for (const Time mark : axis.marks()) {
        plot += "<line class=\"mark\" x1=\"" + axis.at(mark) + "\" x2=\"" + axis.at(mark) + "\" y1=\"16\" y2=\"22\"/>" +
                "<text class=\"scale\" x=\"" + axis.at(mark) + "\" y=\"12\"" +
                (mark == 0 ? "" : " text-anchor=\"middle\"") + ">" + readable(mark) + "</text>";
    }
    return lane("axis", "Board time", "", 22, plot);
}

std::string stepLane(const TimeAxis& axis, const Result& result) {
    // Steps at nearly the same place go below each other.
    constexpr double kNear = 14;
    constexpr int kRow = 14;
    std::vector<double> rows;
    std::string plot;
    for (const Entry& entry : result.entries) {
        const bool failed = entry.kind == Entry::Kind::kStepFailed;
        if (entry.kind != Entry::Kind::kStep && !failed) continue;
        const double place = axis.inThousand(entry.time);
        std::size_t row = 0;
        while (row < rows.size() && rows[row] > place)
            ++row;
        if (row == rows.size()) rows.push_back(0);
        rows[row] = place + kNear;
        plot += dot(axis, entry.time, 9 + kRow * static_cast<int>(row), failed ? "step failed" : "step",
                    when(entry.time) + entry.text + (entry.seen.empty() ? "" : " (" + entry.seen + ")"));
    }
    return lane("steps", "Steps", "", 6 + kRow * static_cast<int>(std::max<std::size_t>(rows.size(), 1)), plot);
}

std::string expectationLanes(const TimeAxis& axis, const Scenario& scenario, const Result& result) {
    std::string lanes;
    for (std::size_t i = 0; i < scenario.expectations.size(); ++i) {
        const Expectation& expectation = scenario.expectations[i];
        const auto decided = std::find_if(result.entries.begin(), result.entries.end(),
                                          [i](const Entry& entry) { return entry.expectation == i; });
        std::string plot;
        if (expectation.kind != Expectation::Kind::kFault) {
            plot += bar(axis, expectation.after, expectation.by, 9, 8, "span",
                        "looked for from " + seconds(expectation.after) + " s to " + seconds(expectation.by) + " s");
        }
        std::string note = "not decided";
        std::string kind = "expectation open";
        if (decided != result.entries.end()) {
            const bool held = decided->kind == Entry::Kind::kHeld;
            kind = held ? "expectation held" : "expectation failed";
            note = std::string(held ? "held at " : "failed at ") + seconds(decided->time) + " s" +
                   (decided->seen.empty() ? "" : ": " + decided->seen);
            plot += dot(axis, decided->time, kRowHeight / 2, held ? "held" : "failed", note);
        }
        lanes += lane(kind, describe(expectation), note, kRowHeight, plot);
    }
    return lanes;
}

std::string parameterLanes(const TimeAxis& axis, const Scenario& scenario, const Result& result) {
    std::string lanes;
    for (const Course& course : result.recording.parameters) {
        lanes += isNumeric(course) ? lane("number", course.path, "", kPlotHeight,
                                          numberPlot(axis, course, limitsOf(scenario, course.path)))
                                   : lane("text", course.path, "", kRowHeight, textPlot(axis, course));
    }
    return lanes;
}

std::string stationLanes(const TimeAxis& axis, const Result& result) {
    std::map<std::string, std::vector<StationSample>> stations;
    for (const StationSample& sample : result.recording.stations)
        stations[sample.mac].push_back(sample);
    const Height height{-95, -30};
    std::string lanes;
    for (const auto& [mac, samples] : stations) {
        std::string plot;
        Line line(axis, height);
        for (std::size_t i = 0; i < samples.size();) {
            std::size_t next = i + 1;
            while (next < samples.size() && samples[next].accessPoint == samples[i].accessPoint)
                ++next;
            const Time to = next < samples.size() ? samples[next].time : axis.end();
            if (samples[i].accessPoint != 0) {
                const std::string place = "access point " + std::to_string(samples[i].accessPoint);
                plot += bar(axis, samples[i].time, to, 2, kPlotHeight - 4,
                            "association shade-" + std::to_string(samples[i].accessPoint % 4),
                            when(samples[i].time) + "on " + place);
                plot += words(axis, samples[i].time, 13, "inside", place);
            }
            i = next;
        }
        for (const StationSample& sample : samples)
            line.to(sample.time, sample.accessPoint != 0 ? std::optional<double>(sample.rssi) : std::nullopt);
        const bool ever =
            std::any_of(samples.begin(), samples.end(), [](const auto& one) { return one.accessPoint != 0; });
        lanes += lane("station", mac, ever ? "signal from -95 to -30 dBm" : "never associated", kPlotHeight,
                      plot + line.text("line"));
    }
    return lanes;
}

std::string controllerLane(const TimeAxis& axis, const Scenario& scenario, const Result& result) {
    if (!scenario.usesUsp()) return "";
    std::string plot;
    std::size_t count = 0;
    for (const LogLine& line : result.log) {
        if (line.kind != kControllerLog) continue;
        ++count;
        plot += dot(axis, line.time, kRowHeight / 2, "arrival", when(line.time) + line.text);
    }
    return lane("controller", "USP controller", std::to_string(count) + " from the agent", kRowHeight, plot);
}

std::string logLane(const TimeAxis& axis, const Result& result) {
    std::string plot;
    for (const LogLine& line : result.log) {
        plot += "<line class=\"entry\" x1=\"" + axis.at(line.time) + "\" x2=\"" + axis.at(line.time) +
                "\" y1=\"3\" y2=\"21\">" + title(when(line.time) + line.kind + " " + line.text) + "</line>";
    }
    return lane("log", "Events and log", std::to_string(result.log.size()) + " entries, listed below", 24, plot);
}

}  // namespace quorvel::scenario
