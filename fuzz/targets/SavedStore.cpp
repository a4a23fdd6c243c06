#include <optional>
#include <string>

#include "fuzz/Input.h"
#include "gateway/manager/Store.h"

// The manager's non-volatile store, as somebody or a power cut may have left it.

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using quorvel::fuzz::require;
    using namespace quorvel::manager;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto saved = decodeSaved(text);
    if (!saved) {
        return 0;
    }
    const std::string written = encodeSaved(*saved);
    require(decodeSaved(written) == saved, "what is saved reads as it was");
    require(encodeSaved(*decodeSaved(written)) == written, "there is one way to write it");
    return 0;
}
