#pragma once

#include <string>

namespace quorvel::selftest {

/// Sees to it that the program says in which call the plug-in crashed, or did not return within `seconds`, and ends
/// with status 1.
void watch(unsigned seconds);

/// Names the call that is made next.
void nowCalling(const std::string& function);

}  // namespace quorvel::selftest
