// Recordings printed: calls as a tree, and numbers.
#pragma once

#include <iosfwd>

#include "recorder/desk/Filter.h"

namespace quorvel::recorder {

/// Prints the calls that the filter takes, with what the library did in each.
void showText(std::ostream& out, const Recording& recording, const Filter& filter);
/// Prints the same as one JSON document: {"recording": {...}, "calls": [...], "threads": [...], "gaps": [...]}.
void showJson(std::ostream& out, const Recording& recording, const Filter& filter);

/// Prints a line for each call that the filter takes: seconds, thread, function, arguments, result, by tabs.
void showPlain(std::ostream& out, const Recording& recording, const Filter& filter);

/// Prints how often and how long each function was called, and how often the platform.
void showStatistics(std::ostream& out, const Recording& recording);
/// Prints a line for each function: name, calls, calls that did not return 0, nanoseconds, those of the longest; then
/// one for each platform call: name, calls.
void showStatisticsPlain(std::ostream& out, const Recording& recording);
void showStatisticsJson(std::ostream& out, const Recording& recording);

}  // namespace quorvel::recorder
