#pragma once

#include <string>

#include "scenario/Result.h"
#include "scenario/picture/TimeAxis.h"

/// The lanes of the picture. Each returns HTML: a label beside a plot over board time.
namespace quorvel::scenario {

[[nodiscard]] std::string axisLane(const TimeAxis& axis);
[[nodiscard]] std::string stepLane(const TimeAxis& axis, const Result& result);
/// A lane for each expectation. One that was not decided when the play ended early has only its span.
[[nodiscard]] std::string expectationLanes(const TimeAxis& axis, const Scenario& scenario, const Result& result);
/// A lane for each parameter: a line for numbers, named spans for everything else.
[[nodiscard]] std::string parameterLanes(const TimeAxis& axis, const Scenario& scenario, const Result& result);
/// A lane for each station: its associations as bars, its signal as a line.
[[nodiscard]] std::string stationLanes(const TimeAxis& axis, const Result& result);
/// The lane of what a USP controller got, or the empty text when none takes part.
[[nodiscard]] std::string controllerLane(const TimeAxis& axis, const Scenario& scenario, const Result& result);
[[nodiscard]] std::string logLane(const TimeAxis& axis, const Result& result);

}  // namespace quorvel::scenario
