#pragma once

#include <string>
#include <vector>

#include "gateway/hostd/protocol/Records.h"

namespace quorvel::console {

/// Returns a supported data model in the Broadband Forum's DM XML form. A parameter that can only be written is marked
/// hidden, which is the form's word for one that reads as empty.
[[nodiscard]] std::string dataModelXml(const std::vector<hostd::protocol::ParameterDescription>& parameters);

}  // namespace quorvel::console
