#pragma once

#include <functional>
#include <map>
#include <string>

namespace quorvel::manager {

/// Texts of variables by their names.
using Values = std::map<std::string, std::string, std::less<>>;

}  // namespace quorvel::manager
