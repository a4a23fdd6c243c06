#include "console/terminal/Style.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace quorvel::console {
namespace {

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

const char* sequenceOf(Colour colour) {
    switch (colour) {
        case Colour::kPlain:
            return "";
        case Colour::kName:
            return "\033[36m";
        case Colour::kGood:
            return "\033[32m";
        case Colour::kBad:
            return "\033[31m";
        case Colour::kFaint:
            return "\033[2m";
        case Colour::kHeading:
            return "\033[1m";
    }
    return "";
}

}  // namespace

Style::Style(bool colours, int descriptor)
    : descriptor_(descriptor),
      terminal_(isatty(descriptor) != 0 && environment("TERM") != "dumb"),
      coloured_(terminal_ && colours && environment("NO_COLOR").empty()) {}

std::size_t Style::columns() const {
    winsize size{};
    return terminal_ && ioctl(descriptor_, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

std::string Style::dress(std::string_view text, Colour colour) const {
    if (!coloured_ || colour == Colour::kPlain) return std::string(text);
    return sequenceOf(colour) + std::string(text) + "\033[0m";
}

bool showsUtf8() {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const std::string_view value = environment(name);
        if (value.empty()) continue;
        return value.find("UTF-8") != std::string_view::npos || value.find("utf8") != std::string_view::npos;
    }
    return false;
}

std::string bar(double share, unsigned width) {
    const bool utf8 = showsUtf8();
    const auto full = static_cast<unsigned>(std::lround(std::clamp(share, 0.0, 1.0) * width));
    std::string text;
    for (unsigned i = 0; i < width; ++i)
        text += i < full ? (utf8 ? "█" : "#") : (utf8 ? "░" : ".");
    return text;
}

std::string signalBar(int dbm) {
    return bar((dbm + 95) / 60.0, 10);
}

std::size_t displayWidth(std::string_view text) {
    // Continuation bytes take no cell of their own.
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

std::string cutTo(std::string_view text, std::size_t cells) {
    std::size_t end = 0;
    for (std::size_t seen = 0; end < text.size(); ++end) {
        const bool begins = (static_cast<unsigned char>(text[end]) & 0xc0U) != 0x80;
        if (begins && seen++ == cells) break;
    }
    return std::string(text.substr(0, end));
}

std::string duration(std::uint64_t seconds) {
    const auto two = [](std::uint64_t a, const char* unitA, std::uint64_t b, const char* unitB) {
        return std::to_string(a) + " " + unitA + " " + std::to_string(b) + " " + unitB;
    };
    if (seconds >= 86400) return two(seconds / 86400, "d", seconds % 86400 / 3600, "h");
    if (seconds >= 3600) return two(seconds / 3600, "h", seconds % 3600 / 60, "min");
    if (seconds >= 60) return two(seconds / 60, "min", seconds % 60, "s");
    return std::to_string(seconds) + " s";
}

std::string clockText(std::uint64_t seconds) {
    if (seconds >= 86400) return duration(seconds);
    std::array<char, 16> text{};
    const auto hours = static_cast<unsigned>(seconds / 3600);
    const auto minutes = static_cast<unsigned>(seconds % 3600 / 60);
    const auto rest = static_cast<unsigned>(seconds % 60);
    if (hours > 0) {
        (void)std::snprintf(text.data(), text.size(), "%u:%02u:%02u", hours, minutes, rest);
    } else {
        (void)std::snprintf(text.data(), text.size(), "%u:%02u", minutes, rest);
    }
    return text.data();
}

}  // namespace quorvel::console
