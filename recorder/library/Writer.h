// The recorder's own thread: takes records from the queue, replaces secrets, and stores them.
#pragma once

#include "recorder/library/Settings.h"

namespace quorvel::recorder {

/// Opens the recording and starts the writer. Returns null, or a sentence that says why it failed.
[[nodiscard]] const char* beginWriting(const Settings& settings);

/// Stores what is queued, with an end record behind it, and waits for that, two seconds at most. More may be recorded
/// afterwards. Does nothing when there is no writer.
void storeEverything();

/// Stores what is queued, ends the recording and the writer. Does nothing when there is none.
void endWriting();

}  // namespace quorvel::recorder
