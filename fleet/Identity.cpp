#include "fleet/Identity.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <regex>

namespace quorvel::fleet {
namespace {

constexpr unsigned kMostBlocks = 60;
constexpr unsigned kPassersBlock = 63;
constexpr std::size_t kMostModel = 26;

// Spreads the bits of a number over all of its 64.
std::uint64_t mix(std::uint64_t value) {
    value += 0x9e3779b97f4a7c15U;
    value = (value ^ (value >> 30U)) * 0xbf58476d1ce4e5b9U;
    value = (value ^ (value >> 27U)) * 0x94d049bb133111ebU;
    return value ^ (value >> 31U);
}

std::uint8_t byteOf(std::uint32_t value, unsigned shift) {
    return static_cast<std::uint8_t>(value >> shift);
}

Json addressOrNull(const Json& object, const char* name) {
    const auto found = object.is_object() ? object.find(name) : object.end();
    return found != object.end() && found->is_string() ? *found : Json();
}

// A radio whose description leaves its BSSs out would get the same addresses on every board.
void nameFirstBss(Json& radio, unsigned index) {
    Json& bss = radio["bss"];
    if (bss.is_array() && !bss.empty()) return;
    const common::MacAddress usual{{0x02, 0x10, 0x18, 0x00, static_cast<std::uint8_t>(index), 0x00}};
    bss = Json::array({{{"index", 0},
                        {"ssid", "Quorvel-" + std::to_string(index * 8 + 1)},
                        {"bssid", common::formatMac(usual)},
                        {"enabled", false}}});
}

}  // namespace

Identity::Identity(std::uint64_t seed, unsigned number)
    : fleetSeed_(seed),
      number_(number),
      // An odd factor leads each number to another one.
      place_(static_cast<std::uint32_t>((number * (mix(seed) | 1U) + mix(~seed)) & kMostGateways)),
      seed_(static_cast<std::uint32_t>(mix(mix(seed) + number))) {
    if (number == 0 || number > kMostGateways) {
        throw FleetError("gateway " + std::to_string(number) + ": gateways have numbers from 1 to " +
                         std::to_string(kMostGateways));
    }
}

std::string Identity::serial(const std::string& model) const {
    std::string letters = model;
    while (!letters.empty() && std::isdigit(static_cast<unsigned char>(letters.back())) != 0)
        letters.pop_back();
    if (letters.empty()) letters = "GW-";
    std::array<char, 32> digits{};
    (void)std::snprintf(digits.data(), digits.size(), "%04X-%08u", static_cast<unsigned>(mix(fleetSeed_) & 0xffffU),
                        number_);
    return letters.substr(0, kMostModel) + digits.data();
}

common::MacAddress Identity::compose(unsigned block, std::uint8_t high, std::uint8_t low) const {
    // The lowest two bits of the first byte say: one station's address, given out locally.
    const auto first = static_cast<std::uint8_t>((block << 2U) | 2U);
    return {{first, byteOf(place_, 16), byteOf(place_, 8), byteOf(place_, 0), high, low}};
}

common::MacAddress Identity::address(const common::MacAddress& address) {
    std::uint32_t block = 0;
    for (unsigned i = 0; i < 4; ++i)
        block = (block << 8U) | address.bytes[i];
    const auto [found, isNew] = blocks_.emplace(block, static_cast<unsigned>(blocks_.size()));
    if (isNew && blocks_.size() > kMostBlocks) {
        throw FleetError("the address " + common::formatMac(address) + " begins with the " +
                         std::to_string(blocks_.size()) +
                         "th combination of four bytes; a fleet has room for 60: let more addresses begin alike");
    }
    return compose(found->second, address.bytes[4], address.bytes[5]);
}

common::MacAddress Identity::passer(unsigned passer) const {
    return compose(kPassersBlock, byteOf(passer, 8), byteOf(passer, 0));
}

void Identity::replaceAddresses(Json& json) {
    if (json.is_structured()) {
        for (auto& item : json)
            replaceAddresses(item);
        return;
    }
    if (!json.is_string()) return;
    static const std::regex pattern("([0-9A-Fa-f]{2}:){5}[0-9A-Fa-f]{2}");
    const auto text = json.get<std::string>();
    std::string result;
    std::size_t copied = 0;
    for (auto at = std::sregex_iterator(text.begin(), text.end(), pattern); at != std::sregex_iterator(); ++at) {
        const auto mac = common::parseMac(at->str());
        const auto place = static_cast<std::size_t>(at->position());
        result += text.substr(copied, place - copied);
        result += mac && !common::isGroupAddress(*mac) ? common::formatMac(address(*mac)) : at->str();
        copied = place + static_cast<std::size_t>(at->length());
    }
    if (copied != 0) json = result + text.substr(copied);
}

Json Identity::describe(const Json& board) {
    Json own = board;
    const Json model = addressOrNull(own, "serial");
    own["serial"] = serial(model.is_string() ? model.get<std::string>() : "");
    unsigned index = 0;
    for (Json& radio : own["radios"]) {
        nameFirstBss(radio, index++);
        replaceAddresses(radio);
    }
    if (own.contains("stations")) replaceAddresses(own["stations"]);
    return own;
}

}  // namespace quorvel::fleet
