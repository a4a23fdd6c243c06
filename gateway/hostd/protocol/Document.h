#pragma once

#include <string>

namespace quorvel::hostd::protocol {

/// Returns docs/protocol.md without its introduction: every request, the parts of answers and their records, as the
/// headers state them.
[[nodiscard]] std::string describeProtocol();

}  // namespace quorvel::hostd::protocol
