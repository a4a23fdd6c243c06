#include "common/JsonDepth.h"

#include <nlohmann/json.hpp>

namespace quorvel::common {

std::optional<std::size_t> findTooDeep(std::string_view text) {
    std::size_t levels = 0;
    bool quoted = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '"') {
            quoted = !quoted;
        } else if (quoted) {
            if (c == '\\') ++at;
        } else if (c == '[' || c == '{') {
            if (++levels > kMaxJsonLevels) return at;
        } else if ((c == ']' || c == '}') && levels > 0) {
            --levels;
        }
    }
    return std::nullopt;
}

std::string tooDeepText() {
    return "expected at most " + std::to_string(kMaxJsonLevels) + " levels of arrays and objects";
}

nlohmann::ordered_json parseShallow(std::string_view text) {
    if (findTooDeep(text)) return nlohmann::ordered_json::value_t::discarded;
    return nlohmann::ordered_json::parse(text, nullptr, false);
}

}  // namespace quorvel::common
