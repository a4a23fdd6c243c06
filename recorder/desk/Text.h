// Recorded values as text for people.
#pragma once

#include <span>
#include <string>

#include "recorder/desk/Recording.h"

namespace quorvel::recorder {

/// Returns what the format prints with these arguments. A conversion without an argument is copied as it is written.
[[nodiscard]] std::string formatted(std::string_view format, std::span<const Value> arguments);

/// Returns a value as a person reads it: numbers in decimal, texts in quotes, bytes in hexadecimal, long ones cut.
[[nodiscard]] std::string describe(const Value& value);

/// Returns a log record's line: level, file, function and text. The line number is left out: versions differ in it.
[[nodiscard]] std::string describeLog(const Record& record);

/// Returns a call of the platform with its arguments, result and memory.
[[nodiscard]] std::string describePlatform(const Record& record);

/// The parts of a log record: level, line, file, function, format, then the format's arguments.
inline constexpr size_t kLogLevel = 0;
inline constexpr size_t kLogLine = 1;
inline constexpr size_t kLogFile = 2;
inline constexpr size_t kLogFunction = 3;
inline constexpr size_t kLogFormat = 4;
inline constexpr size_t kLogArguments = 5;

}  // namespace quorvel::recorder
