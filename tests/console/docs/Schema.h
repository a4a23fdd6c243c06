#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace quorvel::console_test {

// Tells what is wrong with `document` by the schema of docs/schemas/NAME.json; empty when nothing is. It knows type,
// enum, required, properties, additionalProperties, items and $ref to another file; anything else in a schema is wrong.
[[nodiscard]] std::vector<std::string> violations(const std::string& name, const nlohmann::json& document);

}  // namespace quorvel::console_test
