// The data model as documents: for people and for programs.
#pragma once

#include <string>

namespace quorvel::model {

/// Returns docs/data-model.md: one table per object.
[[nodiscard]] std::string markdown();

/// Returns data-model.json: {"objects": [...], "parameters": [...]}, one line a parameter.
[[nodiscard]] std::string json();

}  // namespace quorvel::model
