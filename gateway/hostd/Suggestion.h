#pragma once

#include <string>
#include <string_view>

#include "gateway/hostd/DataModel.h"

namespace quorvel::hostd {

/// Returns the existing path nearest to a path that does not exist, with its instances kept, or the empty text when
/// nothing is near.
[[nodiscard]] std::string suggestPath(const DataModel& model, std::string_view path);

}  // namespace quorvel::hostd
