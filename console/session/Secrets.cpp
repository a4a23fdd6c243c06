#include "console/session/Secrets.h"

#include <cctype>
#include <nlohmann/json.hpp>
#include <string>

namespace quorvel::console {

bool isSecret(std::string_view path) {
    std::string name;
    for (const char c : path.substr(path.rfind('.') + 1)) {
        name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    if (name.find("passphrase") != std::string::npos || name.find("password") != std::string::npos) return true;
    return name == "presharedkey" || name.starts_with("wepkey") || name.ends_with("secret") || name.ends_with("pin");
}

nlohmann::ordered_json shownValue(const Options& options, std::string_view path, const nlohmann::ordered_json& value) {
    if (options.reveal || !isSecret(path)) return value;
    if (options.json) return nullptr;
    return value == "" ? value : nlohmann::ordered_json(kMask);
}

}  // namespace quorvel::console
