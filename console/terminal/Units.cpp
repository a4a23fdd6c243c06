#include "console/terminal/Units.h"

namespace quorvel::console {

std::string bandwidthText(const nlohmann::ordered_json& code) {
    const int step = code.is_number_integer() ? code.get<int>() : 0;
    return step >= 1 && step <= 4 ? std::to_string(10 << step) : "-";
}

std::string bandText(const std::string& code) {
    if (code == "1") return "5 GHz";
    if (code == "2") return "2.4 GHz";
    return code;
}

std::string megabits(const nlohmann::ordered_json& kilobits) {
    if (!kilobits.is_number()) return "-";
    const auto tenths = (kilobits.get<std::int64_t>() + 50) / 100;
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

}  // namespace quorvel::console
