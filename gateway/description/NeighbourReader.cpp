#include "gateway/description/Readers.h"

#include <algorithm>
#include <string_view>

#include "common/RadioChannels.h"

namespace quorvel::description {
namespace {

std::string rate(const JsonCursor& cursor) {
    std::string text = cursor.boundedText(12);
    std::string_view digits = text;
    if (digits.ends_with("(b)")) digits.remove_suffix(3);
    const bool good = !digits.empty() && std::all_of(digits.begin(), digits.end(),
                                                     [](char c) { return (c >= '0' && c <= '9') || c == '.'; });
    if (!good) cursor.fail("a rate in Mbit/s such as \"6\" or \"5.5(b)\"");
    return text;
}

}  // namespace

Neighbour readNeighbour(const JsonCursor& cursor) {
    cursor.allow({"ssid", "bssid", "channel", "rssi", "noise", "security", "rates", "ht", "vht", "qbss", "mode"});
    Neighbour neighbour;
    neighbour.ssid = cursor.at("ssid").boundedText(32);
    neighbour.bssid = cursor.at("bssid").mac();
    neighbour.channel = cursor.at("channel").boundedText(16);
    const auto channel = common::parseChannelText(neighbour.channel);
    if (!channel) cursor.at("channel").fail("a channel such as \"11\", \"6l\", \"6u\" or \"36/80\"");
    neighbour.primaryChannel = channel->primary;
    neighbour.width = channel->width;
    if (cursor.has("rssi")) neighbour.rssi = cursor.at("rssi").integer(-120, 0);
    if (cursor.has("noise")) neighbour.noise = cursor.at("noise").integer(-110, -40);
    if (cursor.has("security")) neighbour.security = readSecurity(cursor.at("security"));
    if (cursor.has("rates")) {
        cursor.at("rates").each([&](const JsonCursor& entry) { neighbour.rates.push_back(rate(entry)); }, 16);
        std::size_t length = 0;
        for (const std::string& text : neighbour.rates)
            length += text.size() + 1;
        // Scan results have one line for them, which readers take up to 127 characters of.
        constexpr std::size_t kLongestRates = 100;
        if (length > kLongestRates) cursor.at("rates").fail("rates of at most 100 characters altogether");
    } else if (neighbour.primaryChannel < 36) {
        neighbour.rates = {"1(b)", "2(b)", "5.5(b)", "11(b)", "6", "9", "12", "18", "24", "36", "48", "54"};
    } else {
        neighbour.rates = {"6(b)", "9", "12(b)", "18", "24(b)", "36", "48", "54"};
    }
    if (cursor.has("ht")) neighbour.ht = cursor.at("ht").boolean();
    if (cursor.has("vht")) neighbour.vht = cursor.at("vht").boolean();
    if (cursor.has("qbss")) neighbour.qbss = cursor.at("qbss").integer(-1, 255);
    if (cursor.has("mode")) neighbour.mode = cursor.at("mode").boundedText(16);
    return neighbour;
}

}  // namespace quorvel::description
