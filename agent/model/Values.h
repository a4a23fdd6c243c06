#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/Problem.h"
#include "agent/Trace.h"
#include "agent/model/Schema.h"
#include "agent/path/Path.h"

namespace quorvel::agent {

/// The dateTime of an unknown time.
constexpr std::string_view kUnknownTime = "0001-01-01T00:00:00Z";

/// Checks a value for a parameter and brings it into the form that USP writes: "true" for "1", a list without blanks.
/// Returns 7011 for what is not of the type, 7012 for what is out of range.
[[nodiscard]] Problem normalize(const Parameter& parameter, std::string& value);

/// Returns whether a boolean's text is true.
[[nodiscard]] bool isTrue(std::string_view value);

/// Returns the number that a text of digits has, or `fallback`.
[[nodiscard]] std::uint32_t numberOr(std::string_view value, std::uint32_t fallback);

/// Says what is wrong with comparing a parameter of this kind as the condition does; empty: nothing.
[[nodiscard]] std::string checkCondition(const Condition& condition, const Parameter& parameter);

/// Returns whether a value meets a condition that checkCondition() has accepted.
[[nodiscard]] bool meets(const Condition& condition, const Parameter& parameter, std::string_view value);

/// Returns the items of a comma-separated list without the blanks around them and without empty ones; commas inside of
/// brackets do not separate.
[[nodiscard]] std::vector<std::string> listItems(std::string_view list);

/// Writes an instant as "2026-01-31T12:00:00Z".
[[nodiscard]] std::string dateTimeText(BoardInstant instant);

/// Reads a dateTime; nothing for an unknown time, and for what is none.
[[nodiscard]] std::optional<BoardInstant> parseDateTime(std::string_view text);

}  // namespace quorvel::agent
