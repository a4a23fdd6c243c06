#pragma once

#include <string>

#include "recorder/desk/Recording.h"

namespace quorvel::console {

/// Reads a recording. Throws std::runtime_error with the place and the reason when the file is none or is damaged.
[[nodiscard]] recorder::Recording readRecordingOrThrow(const std::string& file);

}  // namespace quorvel::console
