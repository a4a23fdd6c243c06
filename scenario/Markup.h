#pragma once

#include <string>
#include <string_view>

namespace quorvel::scenario {

/// Returns text as XML and HTML take it in attributes and contents. Control characters, which XML cannot hold, become
/// question marks.
[[nodiscard]] std::string escaped(std::string_view text);

}  // namespace quorvel::scenario
