#include "scenario/picture/Picture.h"

#include <algorithm>

#include "common/Markup.h"
#include "scenario/picture/Lanes.h"
#include "scenario/picture/Style.h"

namespace quorvel::scenario {
namespace {

double inSeconds(Time time) {
    return static_cast<double>(time) / 1000;
}

// The values that the script shows of the time under the pointer.
Json dataOf(const TimeAxis& axis, const Result& result) {
    Json parameters = Json::object();
    for (const Course& course : result.recording.parameters) {
        Json& values = parameters[course.path] = Json::array();
        for (const Course::Sample& one : course.samples)
            values.push_back({inSeconds(one.time), one.value.is_null() ? Json(nullptr) : Json(textOf(one.value))});
    }
    Json stations = Json::object();
    for (const StationSample& one : result.recording.stations)
        stations[one.mac].push_back({inSeconds(one.time), one.accessPoint, one.rssi});
    Json log = Json::array();
    for (const LogLine& line : result.log)
        log.push_back({inSeconds(line.time), line.kind, line.text});
    return {{"end", inSeconds(axis.end())}, {"parameters", parameters}, {"stations", stations}, {"log", log}};
}

// No text inside can end the element that holds it.
std::string insideScript(const Json& json) {
    std::string text;
    for (const char c : json.dump(-1, ' ', false, Json::error_handler_t::replace))
        text += c == '<' ? std::string("\\u003c") : std::string(1, c);
    return text;
}

std::string row(Time time, const std::string& kind, const std::string& text) {
    return "<tr><td>" + seconds(time) + "</td><td>" + common::escapedMarkup(kind) + "</td><td>" +
           common::escapedMarkup(text) + "</td></tr>\n";
}

// The same for people who do not see the plots.
std::string tableOf(const Result& result) {
    std::string text =
        "<details><summary>Event log</summary><table><thead><tr><th scope=\"col\">Time (s)</th><th "
        "scope=\"col\">Kind</th>"
        "<th scope=\"col\">Text</th></tr></thead><tbody>\n";
    for (const LogLine& line : result.log)
        text += row(line.time, line.kind, line.text);
    return text + "</tbody></table></details>\n";
}

std::string summaryOf(const Result& result, std::uint64_t seed) {
    const std::size_t held = result.count(Entry::Kind::kHeld);
    const std::size_t all = held + result.count(Entry::Kind::kFailed);
    const std::size_t steps = result.count(Entry::Kind::kStepFailed);
    const bool passed = result.passed();
    return "<p class=\"summary\"><span class=\"verdict " + std::string(passed ? "held\">Passed" : "failed\">Failed") +
           "</span> &middot; " + std::to_string(held) + " of " + std::to_string(all) + " expectations held" +
           (steps == 0 ? "" : ", " + std::to_string(steps) + (steps == 1 ? " step failed" : " steps failed")) +
           " &middot; board time " + readable(result.end) + " &middot; seed " + std::to_string(seed) + "</p>\n";
}

std::string section(const std::string& heading, const std::string& lanes) {
    return lanes.empty() ? "" : "<h2>" + heading + "</h2>\n" + lanes;
}

}  // namespace

std::string picture(const Scenario& scenario, const Result& result, std::uint64_t seed) {
    const TimeAxis axis(std::max(result.end, scenario.end));
    return "<!doctype html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
           "script-src 'unsafe-inline'\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           common::escapedMarkup(scenario.name) + "</title>\n<style>" + kStyle +
           "</style>\n</head>\n<body>\n<main>\n<h1>" + common::escapedMarkup(scenario.name) + "</h1>\n" +
           summaryOf(result, seed) + "<div class=\"lanes\">\n" +
           section("Course", axisLane(axis) + stepLane(axis, result) + controllerLane(axis, scenario, result) +
                                 logLane(axis, result)) +
           section("Expectations", expectationLanes(axis, scenario, result)) +
           section("Parameters", parameterLanes(axis, scenario, result)) +
           section("Stations", stationLanes(axis, result)) + "<div id=\"cursor\"></div>\n</div>\n" +
           "<div id=\"at\">Point at a time to see what was seen there.</div>\n" + tableOf(result) +
           "</main>\n<script type=\"application/json\" id=\"data\">" + insideScript(dataOf(axis, result)) +
           "</script>\n<script>" + kScript + "</script>\n</body>\n</html>\n";
}

}  // namespace quorvel::scenario
