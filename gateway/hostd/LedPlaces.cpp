#include "gateway/hostd/LedPlaces.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace quorvel::hostd {
namespace {

constexpr std::array<std::string_view, 2> kPlaces{"/tmp", "/var"};

// Tells whether `text` goes on as part of a file's name: "/variable" is not below /var.
bool continuesName(std::string_view text) {
    if (text.empty()) return false;
    const char next = text.front();
    return std::isalnum(static_cast<unsigned char>(next)) != 0 || next == '_' || next == '-' || next == '.';
}

bool beginsWithPlace(std::string_view text) {
    return std::ranges::any_of(kPlaces, [text](std::string_view place) {
        return text.starts_with(place) && !continuesName(text.substr(place.size()));
    });
}

// Tells whether a path may begin behind this character of a command.
bool endsWord(char before) {
    constexpr std::string_view kInsidePath = "/_-.~}*?]";
    return std::isalnum(static_cast<unsigned char>(before)) == 0 && kInsidePath.find(before) == std::string_view::npos;
}

// Writes `text` as a shell reads it inside `quote`: '\0' (none), '\'' or '"'.
std::string asQuoted(const std::string& text, char quote) {
    std::string result;
    for (const char each : text) {
        if (each == '\'' && quote != '"') {
            result += quote == '\'' ? "'\\''" : "\\'";
            continue;
        }
        constexpr std::string_view kInDoubleQuotes = "\"\\$`";
        const bool plain = std::isalnum(static_cast<unsigned char>(each)) != 0 ||
                           std::string_view("/_-.").find(each) != std::string_view::npos;
        const bool escaped =
            quote == '"' ? kInDoubleQuotes.find(each) != std::string_view::npos : quote == '\0' && !plain;
        if (escaped) result += '\\';
        result += each;
    }
    return result;
}

}  // namespace

std::string LedPlaces::path(std::string_view path) const {
    return beginsWithPlace(path) ? root_ + std::string(path) : std::string(path);
}

std::string LedPlaces::command(std::string_view command) const {
    std::string led;
    char quote = '\0';
    char before = ' ';
    for (std::size_t at = 0; at < command.size(); ++at) {
        const char each = command[at];
        if (each == '\\' && quote != '\'' && at + 1 < command.size()) {
            led += each;
            led += before = command[++at];
            continue;
        }
        if (each == quote) {
            quote = '\0';
        } else if (quote == '\0' && (each == '\'' || each == '"')) {
            quote = each;
        }
        if (each == '/' && endsWord(before) && beginsWithPlace(command.substr(at))) led += asQuoted(root_, quote);
        led += before = each;
    }
    return led;
}

}  // namespace quorvel::hostd
