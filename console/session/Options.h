#pragma once

#include "gateway/launch/Options.h"

namespace quorvel::console {

/// The options that apply to every verb.
struct Options : launch::Options {
    bool json = false;
    bool plain = false;
    bool noColor = false;
    bool reveal = false;
};

enum ExitStatus : int { kDone = 0, kFailed = 1, kWrongUsage = 2, kInterrupted = 130 };

}  // namespace quorvel::console
