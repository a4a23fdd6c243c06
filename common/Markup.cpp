#include "common/Markup.h"

namespace quorvel::common {

std::string escapedMarkup(std::string_view text) {
    std::string safe;
    for (const char c : text) {
        switch (c) {
            case '&':
                safe += "&amp;";
                break;
            case '<':
                safe += "&lt;";
                break;
            case '>':
                safe += "&gt;";
                break;
            case '"':
                safe += "&quot;";
                break;
            default:
                safe += static_cast<unsigned char>(c) < 0x20 ? '?' : c;
        }
    }
    return safe;
}

}  // namespace quorvel::common
