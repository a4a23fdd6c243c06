#pragma once

#include "web/server/live/Composer.h"

namespace quorvel::web_test {

/// Returns a look at a small board: two radios, an access point each, two stations, a neighbour.
[[nodiscard]] web::Look lookAt(double time);

}  // namespace quorvel::web_test
