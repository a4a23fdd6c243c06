#pragma once

#include <string>
#include <string_view>

namespace quorvel::common {

/// Returns text as XML and HTML take it in attributes and contents. Control characters, which XML cannot hold, become
/// question marks.
[[nodiscard]] std::string escapedMarkup(std::string_view text);

}  // namespace quorvel::common
