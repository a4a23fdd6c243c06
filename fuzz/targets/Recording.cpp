#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string_view>
#include <variant>

#include "fuzz/Input.h"
#include "recorder/desk/Diff.h"
#include "recorder/desk/Show.h"

// Recordings, which come from devices and may be damaged.

using quorvel::fuzz::require;
using namespace quorvel::recorder;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto read = readRecording({reinterpret_cast<const char*>(data), size});
    if (const auto* const error = std::get_if<RecordingError>(&read)) {
        require(error->position <= size, "damage has its place in the file");
        require(!error->reason.empty(), "damage has a reason");
        return 0;
    }
    const auto& recording = std::get<Recording>(read);
    require(recording.unreadBytes < size, "something was read");
    std::ostringstream out;
    showText(out, recording, {});
    showJson(out, recording, {});
    showStatistics(out, recording);
    require(showDifferences(out, recording, recording) == 0, "a recording does not differ from itself");
    return 0;
}
