#include "scenario/Report.h"

#include "common/Markup.h"

namespace quorvel::scenario {
namespace {

const char* word(Entry::Kind kind) {
    switch (kind) {
        case Entry::Kind::kStep:
            return "step";
        case Entry::Kind::kStepFailed:
            return "step failed";
        case Entry::Kind::kHeld:
            return "held";
        case Entry::Kind::kFailed:
            return "failed";
    }
    return "";
}

}  // namespace

std::string junit(const Scenario& scenario, const Result& result) {
    const std::size_t failures = result.count(Entry::Kind::kFailed) + result.count(Entry::Kind::kStepFailed);
    const std::size_t tests = failures + result.count(Entry::Kind::kHeld);
    const std::string totals = "tests=\"" + std::to_string(tests) + "\" failures=\"" + std::to_string(failures) +
                               "\" errors=\"0\" time=\"" + seconds(result.end) + "\"";
    const std::string name = common::escapedMarkup(scenario.name);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites " + totals + ">\n  <testsuite name=\"" +
                       name + "\" " + totals + ">\n";
    for (const Entry& entry : result.entries) {
        if (entry.kind == Entry::Kind::kStep) continue;
        text += "    <testcase classname=\"" + name + "\" name=\"" + common::escapedMarkup(entry.text) + "\" time=\"" +
                seconds(entry.time) + "\"";
        if (entry.kind == Entry::Kind::kHeld) {
            text += "/>\n";
            continue;
        }
        text += ">\n      <failure message=\"" +
                common::escapedMarkup("at " + seconds(entry.time) + " s: " + entry.seen) + "\"/>\n    </testcase>\n";
    }
    return text + "  </testsuite>\n</testsuites>\n";
}

Json toJson(const Scenario& scenario, const Result& result, std::uint64_t seed) {
    Json entries = Json::array();
    for (const Entry& entry : result.entries) {
        entries.push_back({{"time", static_cast<double>(entry.time) / 1000},
                           {"kind", word(entry.kind)},
                           {"text", entry.text},
                           {"seen", entry.seen}});
    }
    Json log = Json::array();
    for (const LogLine& line : result.log)
        log.push_back({{"time", static_cast<double>(line.time) / 1000}, {"kind", line.kind}, {"text", line.text}});
    return {{"scenario", scenario.name},
            {"file", scenario.file},
            {"seed", seed},
            {"passed", result.passed()},
            {"held", result.count(Entry::Kind::kHeld)},
            {"failed", result.count(Entry::Kind::kFailed)},
            {"failedSteps", result.count(Entry::Kind::kStepFailed)},
            {"time", static_cast<double>(result.end) / 1000},
            {"entries", std::move(entries)},
            {"log", std::move(log)}};
}

std::string eventLog(const Result& result) {
    std::string text;
    for (const LogLine& line : result.log)
        text += seconds(line.time) + " " + line.kind + " " + line.text + "\n";
    return text;
}

}  // namespace quorvel::scenario
