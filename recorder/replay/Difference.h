// Where a library did something else than the recording says.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvel::recorder {

struct Difference {
    uint64_t position = 0;  ///< of the record, in bytes from the recording's start
    uint32_t thread = 0;
    std::string call;  ///< the host's call in which it happened, e.g. "call 12, WiFiRadioChannelGet"
    std::string text;  ///< a sentence: expected and seen
};

/// Returns the differences by their position, the earliest first.
[[nodiscard]] std::vector<Difference> inOrder(std::vector<Difference> differences);

}  // namespace quorvel::recorder
