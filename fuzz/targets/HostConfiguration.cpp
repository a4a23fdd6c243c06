#include <algorithm>
#include <string_view>

#include "fuzz/Input.h"
#include "gateway/framework/Ini.h"

// The host's configuration file.

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using quorvel::fuzz::require;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    quorvel::framework::IniError error;
    const auto ini = quorvel::framework::Ini::parse(text, error);
    if (!ini) {
        const auto lines = static_cast<unsigned>(std::count(text.begin(), text.end(), '\n') + 1);
        require(error.line >= 1 && error.line <= lines, "a mistake is in a line of the text");
        require(!error.message.empty(), "a mistake is told");
        return 0;
    }
    for (const char* section : {"Device.WiFi", "Device.WiFi.Daemon", ""}) {
        for (const char* key : {"WL_Driver", "WLCSM_Driver", "program", "arguments", ""}) {
            const std::string* value = ini->find(section, key);
            require(value == nullptr || value->find('\n') == std::string::npos, "a value is within its line");
        }
    }
    return 0;
}
