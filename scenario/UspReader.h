#pragma once

#include "common/JsonCursor.h"
#include "scenario/Scenario.h"

namespace quorvel::scenario {

/// Checks the members of a step "usp.broker". Throws SchemaError.
void checkUspBroker(const common::JsonCursor& step);

/// Checks the members of a step "usp.request". Throws SchemaError.
void checkUspRequest(const common::JsonCursor& step);

/// Tells whether an expectation is about what the controller gets.
[[nodiscard]] bool isUspExpectation(const common::JsonCursor& member);

/// Reads such an expectation without its times and counts. Throws SchemaError.
void readUspExpectation(const common::JsonCursor& member, const std::vector<Step>& timeline, Expectation& expectation);

}  // namespace quorvel::scenario
