#pragma once

#include <string>

// A platform without locks of its own but the library's: whatever orders the library's threads is the library's doing.
namespace quorvel::threads {

// The listener's connections lead to this path instead of the fixed one.
void connectTo(const std::string& path);

}  // namespace quorvel::threads
