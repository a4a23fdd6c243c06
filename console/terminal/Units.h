#pragma once

#include <string>

#include "console/session/Session.h"

namespace quorvel::console {

// What the data model's codes and numbers are called by people.

/// Returns the MHz of a bandwidth code (1 is 20 MHz, each step doubles), or "-".
[[nodiscard]] std::string bandwidthText(const Json& code);

/// Returns the name of a radio's band code ("1", "2").
[[nodiscard]] std::string bandText(const std::string& code);

/// Returns kbit/s as Mbit/s, or "-".
[[nodiscard]] std::string megabits(const Json& kilobits);

}  // namespace quorvel::console
