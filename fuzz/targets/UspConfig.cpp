#include <string>

#include "agent/config/ConfigFile.h"
#include "fuzz/Input.h"

// The agent's configuration: it is refused with a reason, or reads back the same from what is written of it. The text
// is taken for a URL, too.

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvel::agent;
    using quorvel::fuzz::require;
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const Url url = parseUrl(text);
        require(textOf(parseUrl(textOf(url))) == textOf(url), "a URL reads back");
    } catch (const ConfigError& error) {
        require(*error.what() != '\0', "a URL is refused with a reason");
    }
    try {
        const std::string written = formatConfig(parseConfig(text, "input", "/nonexistent"));
        require(formatConfig(parseConfig(written, "written", "/nonexistent")) == written, "a configuration reads back");
    } catch (const ConfigError& error) {
        require(*error.what() != '\0', "a configuration is refused with a reason");
    }
    return 0;
}
