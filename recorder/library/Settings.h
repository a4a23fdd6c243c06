// The recorder's settings: environment variables, else a file beside the recorder.
#pragma once

#include <cstdint>

namespace quorvel::recorder {

/// Environment variable, or line "NAME=VALUE" of libquorvel_wifi_recorder.conf beside the recorder.
struct Settings {
    char library[512];  ///< QUORVEL_RECORDER_LIBRARY: the recorded library; required
    char file[512];     ///< QUORVEL_RECORDER_FILE: the recording; /tmp/quorvel_wifi.rec by default
    uint64_t limit;     ///< QUORVEL_RECORDER_LIMIT: bytes after which the file rotates, 0 for none
    uint32_t queue;     ///< QUORVEL_RECORDER_QUEUE: bytes of the queue, a power of two from 131072; 524288 by default
    bool keepMacs;      ///< QUORVEL_RECORDER_KEEP contains "macs"
    bool keepSsids;     ///< ... "ssids"
    char mistake[256];  ///< empty, or a sentence that says which setting is wrong and why
};

/// Reads the settings.
[[nodiscard]] Settings readSettings();

}  // namespace quorvel::recorder
