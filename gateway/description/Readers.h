#pragma once

#include <string>

#include "common/JsonCursor.h"
#include "gateway/description/Description.h"

/// The readers of a description's parts. Each throws common::SchemaError when a value breaks its rule.
namespace quorvel::description {

using common::JsonCursor;

[[nodiscard]] std::string readSecurity(const JsonCursor& cursor);
[[nodiscard]] Bss readBss(const JsonCursor& cursor);
[[nodiscard]] Radio readRadio(const JsonCursor& cursor);
[[nodiscard]] Station readStation(const JsonCursor& cursor);
[[nodiscard]] Neighbour readNeighbour(const JsonCursor& cursor);
[[nodiscard]] Board readBoard(const JsonCursor& cursor);

}  // namespace quorvel::description
