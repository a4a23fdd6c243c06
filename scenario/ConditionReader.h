#pragma once

#include "common/JsonCursor.h"
#include "scenario/Scenario.h"

namespace quorvel::scenario {

/// Reads a regular expression of at most 500 characters. Throws SchemaError.
[[nodiscard]] std::string readExpression(const common::JsonCursor& cursor);

/// Reads the one condition that an object states for a value. Throws SchemaError, also when there is none.
[[nodiscard]] Condition readCondition(const common::JsonCursor& member);

/// Tells whether an object states a condition for a text: equals, differs, oneOf or matches.
[[nodiscard]] bool hasTextCondition(const common::JsonCursor& member);

/// Reads the one condition that an object states for a text. Throws SchemaError.
[[nodiscard]] Condition readTextCondition(const common::JsonCursor& member);

}  // namespace quorvel::scenario
