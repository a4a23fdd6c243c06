#include "gateway/description/Readers.h"

#include <algorithm>

#include "common/RadioChannels.h"

namespace quorvel::description {
namespace {

unsigned accessPoint(const JsonCursor& cursor) {
    const std::string expected = "an access point (1 to 24) or its interface (\"wl0\", \"wl0.1\")";
    if (!cursor.value().is_string()) {
        if (!cursor.value().is_number_integer()) cursor.fail(expected);
        return cursor.count(1, kMaxAccessPoints);
    }
    const auto text = cursor.value().get<std::string>();
    const bool main = text.size() == 3;
    const bool sub = text.size() == 5 && text[3] == '.' && text[4] >= '1' && text[4] <= '7';
    if (!text.starts_with("wl") || !(main || sub) || text[2] < '0' || text[2] > '2') cursor.fail(expected);
    const auto radio = static_cast<unsigned>(text[2] - '0');
    return radio * kBssPerRadio + (sub ? static_cast<unsigned>(text[4] - '0') : 0U) + 1;
}

StationStep readStep(const JsonCursor& cursor) {
    cursor.allow({"at", "do", "rssi", "bss"});
    StationStep step;
    step.at = cursor.at("at").seconds();
    const std::string kind = cursor.at("do").oneOf({"join", "leave", "move"});
    step.kind = kind == "join"    ? StationStep::Kind::kJoin
                : kind == "leave" ? StationStep::Kind::kLeave
                                  : StationStep::Kind::kMove;
    if (cursor.has("rssi")) step.rssi = cursor.at("rssi").integer(-120, 0);
    if (cursor.has("bss")) step.accessPoint = accessPoint(cursor.at("bss"));
    return step;
}

}  // namespace

Station readStation(const JsonCursor& cursor) {
    cursor.allow({"mac", "bss", "rssi", "standard", "bandwidth", "rates", "traffic", "security", "passphrase",
                  "wpsPushButton", "wpsPin", "joinAt", "leaveAt", "plan"});
    Station station;
    station.mac = cursor.at("mac").mac();
    station.accessPoint = accessPoint(cursor.at("bss"));
    if (cursor.has("rssi")) station.rssi = cursor.at("rssi").integer(-120, 0);
    if (cursor.has("standard")) station.standard = cursor.at("standard").boundedText(63);
    if (cursor.has("bandwidth")) {
        station.bandwidth = cursor.at("bandwidth").count(20, 160);
        if (!common::isBandwidth(Band::k5GHz, station.bandwidth)) cursor.at("bandwidth").fail("20, 40, 80 or 160");
    }
    constexpr unsigned kHighestRate = 20'000'000;
    if (cursor.has("rates")) {
        const JsonCursor rates = cursor.at("rates");
        rates.allow({"downlink", "uplink"});
        if (rates.has("downlink")) station.downlinkRate = rates.at("downlink").count(0, kHighestRate);
        if (rates.has("uplink")) station.uplinkRate = rates.at("uplink").count(0, kHighestRate);
    }
    if (cursor.has("traffic")) {
        const JsonCursor traffic = cursor.at("traffic");
        traffic.allow({"downlink", "uplink"});
        if (traffic.has("downlink")) station.downlinkTraffic = traffic.at("downlink").count(0, kHighestRate);
        if (traffic.has("uplink")) station.uplinkTraffic = traffic.at("uplink").count(0, kHighestRate);
    }
    if (cursor.has("security")) station.security = readSecurity(cursor.at("security"));
    if (cursor.has("passphrase")) station.passphrase = cursor.at("passphrase").boundedText(64);
    if (cursor.has("wpsPushButton")) station.wpsPushButton = cursor.at("wpsPushButton").boolean();
    if (cursor.has("wpsPin")) {
        station.wpsPin = cursor.at("wpsPin").boundedText(8);
        if (station.wpsPin.size() != 4 && station.wpsPin.size() != 8)
            cursor.at("wpsPin").fail("a PIN of 4 or 8 digits");
    }
    const bool planned = cursor.has("plan");
    if (cursor.has("joinAt"))
        station.plan.push_back({cursor.at("joinAt").seconds(), StationStep::Kind::kJoin, {}, {}});
    else if (!planned)
        station.plan.push_back({0, StationStep::Kind::kJoin, {}, {}});
    if (cursor.has("leaveAt"))
        station.plan.push_back({cursor.at("leaveAt").seconds(), StationStep::Kind::kLeave, {}, {}});
    if (planned) {
        cursor.at("plan").each([&](const JsonCursor& entry) { station.plan.push_back(readStep(entry)); }, 1000);
    }
    std::stable_sort(station.plan.begin(), station.plan.end(),
                     [](const StationStep& a, const StationStep& b) { return a.at < b.at; });
    return station;
}

}  // namespace quorvel::description
