#include "gateway/manager/BoardFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>

#include "common/JsonDepth.h"
#include "common/JsonPosition.h"
#include "gateway/manager/Channels.h"

namespace quorvel::manager {
namespace {

using Json = nlohmann::json;

constexpr std::array kSecurityModes = {"None",           "WEP-64",          "WEP-128",
                                       "WPA-Personal",   "WPA2-Personal",   "WPA-WPA2-Personal",
                                       "WPA-Enterprise", "WPA2-Enterprise", "WPA-WPA2-Enterprise"};
constexpr std::size_t kMaxFileSize = std::size_t{16} * 1024 * 1024;
constexpr std::size_t kMaxStations = 8192;
constexpr std::size_t kMaxNeighbours = 20000;
constexpr double kLatestStep = 1e7;

// Thrown inside this file only, where a value is not what its place allows.
struct Mistake {
    std::string pointer;
    std::string text;
};

std::string shown(const Json& value) {
    std::string text = value.dump(-1, ' ', true, Json::error_handler_t::replace);
    constexpr std::size_t kShown = 60;
    if (text.size() > kShown) text = text.substr(0, kShown) + "...";
    return text;
}

// A value together with its place, so that whatever is wrong can be named.
class Place {
  public:
    Place(const Json& value, std::string pointer) : value_(value), pointer_(std::move(pointer)) {}

    [[noreturn]] void fail(const std::string& expected) const {
        throw Mistake{pointer_, "expected " + expected + ", found " + shown(value_)};
    }

    void allow(std::initializer_list<std::string_view> keys) const {
        if (!value_.is_object()) fail("an object");
        for (const auto& item : value_.items()) {
            if (std::find(keys.begin(), keys.end(), item.key()) != keys.end()) continue;
            std::string known;
            for (std::string_view key : keys)
                known += (known.empty() ? "" : ", ") + std::string(key);
            throw Mistake{pointer_ + "/" + item.key(), "unknown key; expected one of " + known};
        }
    }

    [[nodiscard]] bool has(const char* key) const {
        return value_.contains(key);
    }

    [[nodiscard]] Place at(const char* key) const {
        if (!value_.contains(key)) throw Mistake{pointer_, std::string("expected a key \"") + key + "\", found none"};
        return {value_.at(key), pointer_ + "/" + key};
    }

    void each(const std::function<void(const Place&)>& visit, std::size_t limit) const {
        if (!value_.is_array()) fail("an array");
        if (value_.size() > limit) {
            throw Mistake{pointer_, "expected at most " + std::to_string(limit) + " entries, found " +
                                        std::to_string(value_.size())};
        }
        for (std::size_t i = 0; i < value_.size(); ++i)
            visit({value_[i], pointer_ + "/" + std::to_string(i)});
    }

    [[nodiscard]] std::string text(std::size_t limit) const {
        if (!value_.is_string()) fail("a text");
        auto result = value_.get<std::string>();
        const bool printable =
            std::none_of(result.begin(), result.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
        if (result.size() > limit || !printable) {
            fail("a text of at most " + std::to_string(limit) + " bytes without control characters");
        }
        return result;
    }

    [[nodiscard]] std::string oneOf(std::initializer_list<std::string_view> values) const {
        std::string known;
        for (std::string_view value : values) {
            if (value_.is_string() && value_.get_ref<const std::string&>() == value) return std::string(value);
            known += (known.empty() ? "\"" : ", \"") + std::string(value) + "\"";
        }
        fail("one of " + known);
    }

    [[nodiscard]] bool boolean() const {
        if (!value_.is_boolean()) fail("true or false");
        return value_.get<bool>();
    }

    [[nodiscard]] int number(int low, int high) const {
        const std::string expected = "a whole number from " + std::to_string(low) + " to " + std::to_string(high);
        if (!value_.is_number_integer()) fail(expected);
        if (value_.is_number_unsigned() && value_.get<std::uint64_t>() > std::numeric_limits<std::int32_t>::max()) {
            fail(expected);
        }
        const auto result = value_.get<std::int64_t>();
        if (result < low || result > high) fail(expected);
        return static_cast<int>(result);
    }

    [[nodiscard]] unsigned count(unsigned low, unsigned high) const {
        return static_cast<unsigned>(number(static_cast<int>(low), static_cast<int>(high)));
    }

    [[nodiscard]] double seconds() const {
        const std::string expected = "seconds from 0 to 10000000";
        if (!value_.is_number()) fail(expected);
        const auto result = value_.get<double>();
        if (!(result >= 0 && result <= kLatestStep)) fail(expected);
        return result;
    }

    [[nodiscard]] MacAddress mac() const {
        const std::string expected = "a MAC address such as \"02:00:00:12:34:56\" (not a group address)";
        if (!value_.is_string()) fail(expected);
        const auto result = parseMac(value_.get<std::string>());
        if (!result || (result->bytes[0] & 1U) != 0) fail(expected);
        return *result;
    }

    [[nodiscard]] std::string security() const {
        if (value_.is_string() && isSecurityMode(value_.get<std::string>())) return value_.get<std::string>();
        fail("a security mode such as \"None\", \"WEP-64\", \"WPA2-Personal\" or \"WPA2-Enterprise\"");
    }

    [[nodiscard]] const Json& value() const {
        return value_;
    }

  private:
    const Json& value_;
    std::string pointer_;
};

std::string hexIdentifier(const Place& place, bool prefixed) {
    const std::string expected =
        prefixed ? "a 16-bit identifier such as \"0x0030\"" : "four hexadecimal digits such as \"43c5\"";
    const std::size_t skip = prefixed ? 2 : 0;
    if (!place.value().is_string()) place.fail(expected);
    auto text = place.value().get<std::string>();
    const bool good = text.size() == skip + 4 && (!prefixed || text.starts_with("0x")) &&
                      std::all_of(text.begin() + static_cast<std::ptrdiff_t>(skip), text.end(),
                                  [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
    if (!good) place.fail(expected + " with lower-case digits");
    return text;
}

std::string passphrase(const Place& place) {
    std::string text = place.text(64);
    if (!text.empty() && text.size() < 8) place.fail("a passphrase of 8 to 64 characters");
    return text;
}

BoardBss readBss(const Place& place) {
    place.allow({"index", "ssid", "bssid", "enabled", "hidden", "isolated", "wps", "security", "passphrase", "wepKey",
                 "encryption", "filter", "filterList", "maxStations"});
    BoardBss bss;
    bss.index = place.at("index").count(0, kBssPerRadio - 1);
    bss.ssid = place.at("ssid").text(32);
    bss.bssid = place.at("bssid").mac();
    bss.enabled = !place.has("enabled") || place.at("enabled").boolean();
    if (place.has("hidden")) bss.hidden = place.at("hidden").boolean();
    if (place.has("isolated")) bss.isolated = place.at("isolated").boolean();
    if (place.has("wps")) bss.wps = place.at("wps").boolean();
    if (place.has("security")) bss.security = place.at("security").security();
    if (place.has("passphrase")) bss.passphrase = passphrase(place.at("passphrase"));
    if (place.has("wepKey")) {
        bss.wepKey = place.at("wepKey").text(13);
        if (bss.wepKey.size() != 5 && bss.wepKey.size() != 13) place.at("wepKey").fail("a key of 5 or 13 characters");
    }
    if (place.has("encryption")) bss.encryption = place.at("encryption").oneOf({"tkip", "aes", "tkip+aes"});
    if (place.has("filter")) bss.filter = place.at("filter").oneOf({"disabled", "allow", "deny"});
    if (place.has("filterList")) {
        place.at("filterList").each([&](const Place& entry) { bss.filterList.push_back(entry.mac()); }, 32);
    }
    if (place.has("maxStations")) bss.maxStations = place.at("maxStations").count(0, 1024);
    const bool personal = bss.security.ends_with("Personal");
    if (personal && bss.passphrase.empty())
        place.fail("a key \"passphrase\" beside \"security\": \"" + bss.security + "\"");
    if (bss.security.starts_with("WEP") && bss.wepKey.size() != (bss.security == "WEP-64" ? 5U : 13U)) {
        place.fail("a key \"wepKey\" of 5 (WEP-64) or 13 (WEP-128) characters");
    }
    return bss;
}

// The BSSs that a description leaves out exist all the same, switched off, with addresses beside the first one's.
void fillBss(BoardRadio& radio) {
    MacAddress base{{0x02, 0x10, 0x18, 0x00, static_cast<std::uint8_t>(radio.index), 0x00}};
    std::vector<BoardBss> all(kBssPerRadio);
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
    for (BoardBss& bss : radio.bss)
        all[bss.index] = bss;
    radio.bss = std::move(all);
}

BoardRadio readRadio(const Place& place) {
    place.allow({"index", "band", "enabled", "autoChannel", "channel", "bandwidth", "chains", "noise",
                 "possibleChannels", "country", "bss"});
    BoardRadio radio;
    radio.index = place.at("index").count(0, kMaxRadios - 1);
    radio.band = place.at("band").oneOf({"2.4GHz", "5GHz"}) == "5GHz" ? Band::k5GHz : Band::k2_4GHz;
    if (place.has("enabled")) radio.enabled = place.at("enabled").boolean();
    if (place.has("autoChannel")) radio.autoChannel = place.at("autoChannel").boolean();
    if (place.has("possibleChannels")) {
        place.at("possibleChannels")
            .each(
                [&](const Place& entry) {
                    const unsigned channel = entry.count(1, 177);
                    if (!isBandChannel(radio.band, channel)) entry.fail("a channel of the radio's band");
                    radio.possibleChannels.push_back(channel);
                },
                64);
    }
    if (radio.possibleChannels.empty()) radio.possibleChannels = bandChannels(radio.band);
    radio.channel = place.at("channel").count(1, 177);
    if (std::find(radio.possibleChannels.begin(), radio.possibleChannels.end(), radio.channel) ==
        radio.possibleChannels.end()) {
        place.at("channel").fail("one of the radio's possible channels");
    }
    if (place.has("bandwidth"))
        radio.bandwidth = place.at("bandwidth").count(20, 160);
    else
        radio.bandwidth = radio.band == Band::k5GHz ? 80 : 20;
    if (!isBandwidth(radio.band, radio.bandwidth)) {
        place.at("bandwidth").fail(radio.band == Band::k5GHz ? "20, 40, 80 or 160" : "20 or 40");
    }
    if (place.has("chains")) radio.chains = place.at("chains").count(1, 8);
    if (place.has("noise")) radio.noise = place.at("noise").number(-110, -40);
    if (place.has("country")) {
        radio.country = place.at("country").text(2);
        if (radio.country.size() != 2) place.at("country").fail("a country code of two letters");
    }
    std::set<unsigned> seen;
    if (place.has("bss")) {
        place.at("bss").each(
            [&](const Place& entry) {
                radio.bss.push_back(readBss(entry));
                if (!seen.insert(radio.bss.back().index).second)
                    entry.at("index").fail("an index that is not taken yet");
            },
            kBssPerRadio);
    }
    fillBss(radio);
    return radio;
}

unsigned accessPoint(const Place& place) {
    const std::string expected = "an access point (1 to 24) or its interface (\"wl0\", \"wl0.1\")";
    if (!place.value().is_string()) {
        if (!place.value().is_number_integer()) place.fail(expected);
        return place.count(1, kMaxAccessPoints);
    }
    const auto text = place.value().get<std::string>();
    const bool main = text.size() == 3;
    const bool sub = text.size() == 5 && text[3] == '.' && text[4] >= '1' && text[4] <= '7';
    if (!text.starts_with("wl") || !(main || sub) || text[2] < '0' || text[2] > '2') place.fail(expected);
    const auto radio = static_cast<unsigned>(text[2] - '0');
    return radio * kBssPerRadio + (sub ? static_cast<unsigned>(text[4] - '0') : 0U) + 1;
}

StationStep readStep(const Place& place) {
    place.allow({"at", "do", "rssi", "bss"});
    StationStep step;
    step.at = place.at("at").seconds();
    const std::string kind = place.at("do").oneOf({"join", "leave", "move"});
    step.kind = kind == "join"    ? StationStep::Kind::Join
                : kind == "leave" ? StationStep::Kind::Leave
                                  : StationStep::Kind::Move;
    if (place.has("rssi")) step.rssi = place.at("rssi").number(-120, 0);
    if (place.has("bss")) step.accessPoint = accessPoint(place.at("bss"));
    return step;
}

BoardStation readStation(const Place& place) {
    place.allow({"mac", "bss", "rssi", "standard", "bandwidth", "rates", "traffic", "security", "passphrase",
                 "wpsPushButton", "wpsPin", "joinAt", "leaveAt", "plan"});
    BoardStation station;
    station.mac = place.at("mac").mac();
    station.accessPoint = accessPoint(place.at("bss"));
    if (place.has("rssi")) station.rssi = place.at("rssi").number(-120, 0);
    if (place.has("standard")) station.standard = place.at("standard").text(63);
    if (place.has("bandwidth")) {
        station.bandwidth = place.at("bandwidth").count(20, 160);
        if (!isBandwidth(Band::k5GHz, station.bandwidth)) place.at("bandwidth").fail("20, 40, 80 or 160");
    }
    constexpr unsigned kHighestRate = 20'000'000;
    if (place.has("rates")) {
        const Place rates = place.at("rates");
        rates.allow({"downlink", "uplink"});
        if (rates.has("downlink")) station.downlinkRate = rates.at("downlink").count(0, kHighestRate);
        if (rates.has("uplink")) station.uplinkRate = rates.at("uplink").count(0, kHighestRate);
    }
    if (place.has("traffic")) {
        const Place traffic = place.at("traffic");
        traffic.allow({"downlink", "uplink"});
        if (traffic.has("downlink")) station.downlinkTraffic = traffic.at("downlink").count(0, kHighestRate);
        if (traffic.has("uplink")) station.uplinkTraffic = traffic.at("uplink").count(0, kHighestRate);
    }
    if (place.has("security")) station.security = place.at("security").security();
    if (place.has("passphrase")) station.passphrase = place.at("passphrase").text(64);
    if (place.has("wpsPushButton")) station.wpsPushButton = place.at("wpsPushButton").boolean();
    if (place.has("wpsPin")) {
        station.wpsPin = place.at("wpsPin").text(8);
        if (station.wpsPin.size() != 4 && station.wpsPin.size() != 8) place.at("wpsPin").fail("a PIN of 4 or 8 digits");
    }
    const bool planned = place.has("plan");
    if (place.has("joinAt"))
        station.plan.push_back({place.at("joinAt").seconds(), StationStep::Kind::Join, {}, {}});
    else if (!planned)
        station.plan.push_back({0, StationStep::Kind::Join, {}, {}});
    if (place.has("leaveAt")) station.plan.push_back({place.at("leaveAt").seconds(), StationStep::Kind::Leave, {}, {}});
    if (planned) {
        place.at("plan").each([&](const Place& entry) { station.plan.push_back(readStep(entry)); }, 1000);
    }
    std::stable_sort(station.plan.begin(), station.plan.end(),
                     [](const StationStep& a, const StationStep& b) { return a.at < b.at; });
    return station;
}

std::string rate(const Place& place) {
    std::string text = place.text(12);
    std::string_view digits = text;
    if (digits.ends_with("(b)")) digits.remove_suffix(3);
    const bool good = !digits.empty() && std::all_of(digits.begin(), digits.end(),
                                                     [](char c) { return (c >= '0' && c <= '9') || c == '.'; });
    if (!good) place.fail("a rate in Mbit/s such as \"6\" or \"5.5(b)\"");
    return text;
}

BoardNeighbour readNeighbour(const Place& place) {
    place.allow({"ssid", "bssid", "channel", "rssi", "noise", "security", "rates", "ht", "vht", "qbss", "mode"});
    BoardNeighbour neighbour;
    neighbour.ssid = place.at("ssid").text(32);
    neighbour.bssid = place.at("bssid").mac();
    neighbour.channel = place.at("channel").text(16);
    const auto channel = parseChannelText(neighbour.channel);
    if (!channel) place.at("channel").fail("a channel such as \"11\", \"6l\", \"6u\" or \"36/80\"");
    neighbour.primaryChannel = channel->primary;
    neighbour.width = channel->width;
    if (place.has("rssi")) neighbour.rssi = place.at("rssi").number(-120, 0);
    if (place.has("noise")) neighbour.noise = place.at("noise").number(-110, -40);
    if (place.has("security")) neighbour.security = place.at("security").security();
    if (place.has("rates")) {
        place.at("rates").each([&](const Place& entry) { neighbour.rates.push_back(rate(entry)); }, 16);
        std::size_t length = 0;
        for (const std::string& text : neighbour.rates)
            length += text.size() + 1;
        // Scan results have one line for them, which readers take up to 127 characters of.
        constexpr std::size_t kLongestRates = 100;
        if (length > kLongestRates) place.at("rates").fail("rates of at most 100 characters altogether");
    } else if (neighbour.primaryChannel < 36) {
        neighbour.rates = {"1(b)", "2(b)", "5.5(b)", "11(b)", "6", "9", "12", "18", "24", "36", "48", "54"};
    } else {
        neighbour.rates = {"6(b)", "9", "12(b)", "18", "24(b)", "36", "48", "54"};
    }
    if (place.has("ht")) neighbour.ht = place.at("ht").boolean();
    if (place.has("vht")) neighbour.vht = place.at("vht").boolean();
    if (place.has("qbss")) neighbour.qbss = place.at("qbss").number(-1, 255);
    if (place.has("mode")) neighbour.mode = place.at("mode").text(16);
    return neighbour;
}

ToolFault readFault(const Place& place, const char* tool) {
    if (!place.has(tool)) return ToolFault::None;
    const std::string text = place.at(tool).oneOf({"none", "fails", "empty", "garbage", "hangs"});
    if (text == "fails") return ToolFault::Fails;
    if (text == "empty") return ToolFault::Empty;
    if (text == "garbage") return ToolFault::Garbage;
    if (text == "hangs") return ToolFault::Hangs;
    return ToolFault::None;
}

Board readBoard(const Place& place) {
    place.allow({"name", "identifier", "chips", "radios", "stations", "neighbours", "faults"});
    Board board;
    board.name = place.at("name").text(64);
    board.identifier = hexIdentifier(place.at("identifier"), true);
    place.at("chips").each([&](const Place& chip) { board.chips.push_back(hexIdentifier(chip, false)); }, 8);
    place.at("radios").each(
        [&](const Place& entry) {
            board.radios.push_back(readRadio(entry));
            if (board.radios.back().index + 1 != board.radios.size()) {
                entry.at("index").fail(std::to_string(board.radios.size() - 1) +
                                       " (radios stand in order, without gaps)");
            }
        },
        kMaxRadios);
    std::set<MacAddress> macs;
    if (place.has("stations")) {
        place.at("stations")
            .each(
                [&](const Place& entry) {
                    board.stations.push_back(readStation(entry));
                    if (!macs.insert(board.stations.back().mac).second)
                        entry.at("mac").fail("a MAC address of its own");
                },
                kMaxStations);
    }
    if (place.has("neighbours")) {
        place.at("neighbours")
            .each([&](const Place& entry) { board.neighbours.push_back(readNeighbour(entry)); }, kMaxNeighbours);
    }
    if (place.has("faults")) {
        const Place faults = place.at("faults");
        faults.allow({"lspci", "i2cget", "insmod", "wl"});
        board.faults.lspci = readFault(faults, "lspci");
        board.faults.i2cget = readFault(faults, "i2cget");
        board.faults.insmod = readFault(faults, "insmod");
        board.faults.wl = readFault(faults, "wl");
    }
    return board;
}

template <typename Result, typename Reader>
std::variant<Result, BoardError> parseWith(const std::string& text, const std::string& name, Reader reader) {
    if (text.size() > kMaxFileSize) {
        return BoardError{name + ":1:1: expected at most " + std::to_string(kMaxFileSize) + " bytes, found " +
                          std::to_string(text.size())};
    }
    if (const auto deep = findTooDeep(text)) {
        return BoardError{name + ":" + placeOfByte(text, *deep) + ": " + tooDeepText()};
    }
    try {
        const Json document = Json::parse(text);
        try {
            return reader(Place(document, ""));
        } catch (const Mistake& mistake) {
            const std::string pointer = mistake.pointer.empty() ? "/" : mistake.pointer;
            return BoardError{name + ":" + placeOfPointer(text, mistake.pointer) + ": " + pointer + ": " +
                              mistake.text};
        }
    } catch (const Json::parse_error& error) {
        std::string what = error.what();
        const std::size_t start = what.find(" - ");
        what = start == std::string::npos ? what : what.substr(start + 3);
        return BoardError{name + ":" + placeOfByte(text, error.byte == 0 ? 0 : error.byte - 1) + ": " + what};
    }
}

}  // namespace

std::optional<MacAddress> parseMac(const std::string& text) {
    if (text.size() != 17) return std::nullopt;
    MacAddress mac;
    const auto digit = [](char c) -> int {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        return -1;
    };
    for (std::size_t i = 0; i < 6; ++i) {
        const int high = digit(text[i * 3]);
        const int low = digit(text[i * 3 + 1]);
        if (high < 0 || low < 0 || (i < 5 && text[i * 3 + 2] != ':')) return std::nullopt;
        mac.bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return mac;
}

std::string formatMac(const MacAddress& mac) {
    char text[18];
    (void)std::snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac.bytes[0], mac.bytes[1], mac.bytes[2],
                        mac.bytes[3], mac.bytes[4], mac.bytes[5]);  // cannot be longer than 17 characters
    return text;
}

bool isSecurityMode(const std::string& text) {
    return std::find(kSecurityModes.begin(), kSecurityModes.end(), text) != kSecurityModes.end();
}

std::variant<Board, BoardError> parseBoard(const std::string& text, const std::string& name) {
    return parseWith<Board>(text, name, readBoard);
}

std::variant<BoardStation, BoardError> parseStation(const std::string& text, const std::string& name) {
    return parseWith<BoardStation>(text, name, readStation);
}

std::variant<BoardNeighbour, BoardError> parseNeighbour(const std::string& text, const std::string& name) {
    return parseWith<BoardNeighbour>(text, name, readNeighbour);
}

std::variant<Board, BoardError> readBoardFile(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rbe");
    if (file == nullptr) {
        return BoardError{path + ": expected a readable board description: " + std::strerror(errno)};
    }
    std::string text;
    char piece[8192];
    std::size_t got = 0;
    while (text.size() <= kMaxFileSize && (got = std::fread(piece, 1, sizeof piece, file)) > 0)
        text.append(piece, got);
    const bool failed = std::ferror(file) != 0;
    (void)std::fclose(file);  // only read from
    if (failed) return BoardError{path + ": expected a readable board description: " + std::strerror(errno)};
    return parseBoard(text, path);
}

}  // namespace quorvel::manager
