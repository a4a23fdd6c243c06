#pragma once

#include <cstddef>

namespace quorvel::fleet {

/// Raises this process's limit of open descriptors, as far as the system lets it, so that `more` fit beside the usual
/// ones. Throws FleetError when it does not.
void allowDescriptors(std::size_t more);

}  // namespace quorvel::fleet
