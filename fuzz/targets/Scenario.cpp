#include "scenario/Scenario.h"

#include <algorithm>
#include <string>

#include "fuzz/Input.h"
#include "scenario/Reader.h"

// A scenario as a person writes it.

namespace {

using namespace quorvel::scenario;
using quorvel::fuzz::require;

void check(const Scenario& scenario) {
    require(!scenario.expectations.empty(), "a scenario expects something");
    for (const Step& step : scenario.timeline) {
        require(step.at >= 0 && step.at <= scenario.end, "a step is within the scenario");
        require(!describe(step).empty(), "a step has words");
    }
    require(std::is_sorted(scenario.timeline.begin(), scenario.timeline.end(),
                           [](const Step& a, const Step& b) { return a.at < b.at; }),
            "steps stand in their order");
    for (const Expectation& expectation : scenario.expectations) {
        require(!describe(expectation).empty(), "an expectation has words");
        require(expectation.after <= expectation.by && expectation.by <= scenario.end, "an expectation has its time");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        check(parseScenario(text, "fuzz"));
    } catch (const ScenarioError& error) {
        const std::string message = error.what();
        require(message.rfind("fuzz:", 0) == 0, "a mistake names its file");
        require(message.find('\n') == std::string::npos, "a mistake is told in one line");
    }
    return 0;
}
