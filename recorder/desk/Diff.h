// Two recordings held against each other.
#pragma once

#include <iosfwd>

#include "recorder/desk/Recording.h"

namespace quorvel::recorder {

/// Prints the calls that only one of the recordings has ("-" the first, "+" the second) and, of calls that both have,
/// what the library did and returned differently. Returns how many calls differ.
size_t showDifferences(std::ostream& out, const Recording& first, const Recording& second);

}  // namespace quorvel::recorder
