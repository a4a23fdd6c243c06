#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace quorvel::console {

// The data model's codes and numbers in words for people.

/// Returns the MHz of a bandwidth code (1 is 20 MHz, each step doubles), or "-".
[[nodiscard]] std::string bandwidthText(const nlohmann::ordered_json& code);

/// Returns the name of a radio's band code ("1", "2").
[[nodiscard]] std::string bandText(const std::string& code);

/// Returns kbit/s as Mbit/s, or "-".
[[nodiscard]] std::string megabits(const nlohmann::ordered_json& kilobits);

}  // namespace quorvel::console
