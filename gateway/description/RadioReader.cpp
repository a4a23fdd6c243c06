#include "gateway/description/Readers.h"

#include <algorithm>
#include <set>

#include "common/RadioChannels.h"

namespace quorvel::description {
namespace {

// The BSSs that a description leaves out exist all the same, switched off, with addresses beside the first one's.
void fillBss(Radio& radio) {
    MacAddress base{{0x02, 0x10, 0x18, 0x00, static_cast<std::uint8_t>(radio.index), 0x00}};
    std::vector<Bss> all(kBssPerRadio);
    if (!radio.bss.empty()) {
        base = radio.bss.front().bssid;
        base.bytes[5] = static_cast<std::uint8_t>(base.bytes[5] - radio.bss.front().index);
    }
    for (unsigned i = 0; i < kBssPerRadio; ++i) {
        all[i].index = i;
        all[i].bssid = base;
        all[i].bssid.bytes[5] = static_cast<std::uint8_t>(base.bytes[5] + i);
        all[i].ssid = "Quorvel-" + std::to_string(radio.index * kBssPerRadio + i + 1);
    }
    for (Bss& bss : radio.bss)
        all[bss.index] = bss;
    radio.bss = std::move(all);
}

}  // namespace

Radio readRadio(const JsonCursor& cursor) {
    cursor.allow({"index", "band", "enabled", "autoChannel", "channel", "bandwidth", "chains", "noise",
                  "possibleChannels", "country", "bss"});
    Radio radio;
    radio.index = cursor.at("index").count(0, kMaxRadios - 1);
    radio.band = cursor.at("band").oneOf({"2.4GHz", "5GHz"}) == "5GHz" ? Band::k5GHz : Band::k2_4GHz;
    if (cursor.has("enabled")) radio.enabled = cursor.at("enabled").boolean();
    if (cursor.has("autoChannel")) radio.autoChannel = cursor.at("autoChannel").boolean();
    if (cursor.has("possibleChannels")) {
        cursor.at("possibleChannels")
            .each(
                [&](const JsonCursor& entry) {
                    const unsigned channel = entry.count(1, 177);
                    if (!common::isBandChannel(radio.band, channel)) entry.fail("a channel of the radio's band");
                    radio.possibleChannels.push_back(channel);
                },
                64);
    }
    if (radio.possibleChannels.empty()) radio.possibleChannels = common::bandChannels(radio.band);
    radio.channel = cursor.at("channel").count(1, 177);
    if (std::find(radio.possibleChannels.begin(), radio.possibleChannels.end(), radio.channel) ==
        radio.possibleChannels.end()) {
        cursor.at("channel").fail("one of the radio's possible channels");
    }
    if (cursor.has("bandwidth"))
        radio.bandwidth = cursor.at("bandwidth").count(20, 160);
    else
        radio.bandwidth = radio.band == Band::k5GHz ? 80 : 20;
    if (!common::isBandwidth(radio.band, radio.bandwidth)) {
        cursor.at("bandwidth").fail(radio.band == Band::k5GHz ? "20, 40, 80 or 160" : "20 or 40");
    }
    if (cursor.has("chains")) radio.chains = cursor.at("chains").count(1, 8);
    if (cursor.has("noise")) radio.noise = cursor.at("noise").integer(-110, -40);
    if (cursor.has("country")) {
        radio.country = cursor.at("country").boundedText(2);
        if (radio.country.size() != 2) cursor.at("country").fail("a country code of two letters");
    }
    std::set<unsigned> seen;
    if (cursor.has("bss")) {
        cursor.at("bss").each(
            [&](const JsonCursor& entry) {
                radio.bss.push_back(readBss(entry));
                if (!seen.insert(radio.bss.back().index).second)
                    entry.at("index").fail("an index that is not taken yet");
            },
            kBssPerRadio);
    }
    fillBss(radio);
    return radio;
}

}  // namespace quorvel::description
