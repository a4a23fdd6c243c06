// The features that differ between the gateways of a fleet.
#include "fleet/Identity.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>
#include <variant>

#include "gateway/description/Reader.h"

namespace quorvel::fleet_test {
namespace {

using fleet::FleetError;
using fleet::Identity;
using fleet::Json;

Json shippedBoard() {
    std::ifstream file(std::string(QUORVEL_SOURCES) + "/gateway/boards/tri-band.json");
    return Json::parse(std::string(std::istreambuf_iterator<char>(file), {}));
}

Json gateway(std::uint64_t seed, unsigned number) {
    return Identity(seed, number).describe(shippedBoard());
}

void collect(const Json& json, std::multiset<std::string>& addresses) {
    for (const Json& radio : json.at("radios")) {
        for (const Json& bss : radio.at("bss"))
            addresses.insert(bss.at("bssid").get<std::string>());
    }
    for (const Json& station : json.at("stations"))
        addresses.insert(station.at("mac").get<std::string>());
}

TEST(Identities, AreTheSameEveryTime) {
    EXPECT_EQ(gateway(7, 12), gateway(7, 12));
    EXPECT_EQ(Identity(7, 12).seed(), Identity(7, 12).seed());
}

TEST(Identities, DifferByNumberAndBySeed) {
    EXPECT_NE(gateway(7, 12).at("serial"), gateway(7, 13).at("serial"));
    EXPECT_NE(gateway(7, 12).at("serial"), gateway(8, 12).at("serial"));
    EXPECT_NE(gateway(7, 12).at("stations"), gateway(8, 12).at("stations"));
    EXPECT_NE(Identity(7, 12).seed(), Identity(7, 13).seed());
    EXPECT_NE(Identity(7, 12).seed(), Identity(8, 12).seed());
}

TEST(Identities, AreStatedOnceForEver) {
    // A fleet that comes up again is the one that controllers know.
    const Json one = gateway(1, 1);
    EXPECT_EQ(one.at("serial"), "QW3-5CC1-00000001");
    EXPECT_EQ(one.at("radios")[0].at("bss")[0].at("bssid"), "02:f7:04:e2:00:10");
}

TEST(Identities, ShareNoAddress) {
    std::multiset<std::string> addresses;
    for (const unsigned number : {1U, 2U, 3U, 255U, 256U, 65536U, fleet::kMostGateways})
        collect(gateway(5, number), addresses);
    for (const std::string& address : addresses) {
        EXPECT_EQ(addresses.count(address), 1U) << address;
        const auto mac = common::parseMac(address);
        ASSERT_TRUE(mac.has_value()) << address;
        EXPECT_EQ(mac->bytes[0] & 3U, 2U) << address << " is not one station's address, given out locally";
    }
}

TEST(Identities, KeepTheEndOfAnAddress) {
    const std::string before = shippedBoard().at("radios")[1].at("bss")[3].at("bssid");
    const std::string after = gateway(5, 9).at("radios")[1].at("bss")[3].at("bssid");
    EXPECT_EQ(before.substr(12), after.substr(12));
}

TEST(Identities, GiveDescriptionsThatABoardAccepts) {
    for (const unsigned number : {1U, fleet::kMostGateways}) {
        const auto read = description::parseBoard(gateway(5, number).dump(), "board.json");
        const auto* const error = std::get_if<description::Error>(&read);
        EXPECT_EQ(error, nullptr) << error->message;
    }
}

TEST(Identities, NameTheBssThatADescriptionLeavesOut) {
    const Json bare = {{"name", "bare"},
                       {"identifier", "0x0030"},
                       {"chips", {"43c5"}},
                       {"radios", {{{"index", 0}, {"band", "5GHz"}, {"channel", 36}}}}};
    const auto first = description::parseBoard(Identity(1, 1).describe(bare).dump(), "board.json");
    const auto second = description::parseBoard(Identity(1, 2).describe(bare).dump(), "board.json");
    ASSERT_TRUE(std::holds_alternative<description::Board>(first));
    ASSERT_TRUE(std::holds_alternative<description::Board>(second));
    for (unsigned i = 0; i < description::kBssPerRadio; ++i) {
        EXPECT_NE(std::get<description::Board>(first).radios[0].bss[i].bssid,
                  std::get<description::Board>(second).radios[0].bss[i].bssid);
    }
}

TEST(Identities, KeepASerialNumberWithinItsLength) {
    EXPECT_EQ(Identity(1, 1).serial("").substr(0, 3), "GW-");
    EXPECT_LE(Identity(1, fleet::kMostGateways).serial(std::string(40, 'x')).size(), 40U);
}

TEST(Identities, HaveNumbersWithinAnAddress) {
    EXPECT_THROW((void)Identity(1, 0), FleetError);
    EXPECT_THROW((void)Identity(1, fleet::kMostGateways + 1), FleetError);
}

TEST(Identities, RefuseAddressesOfTooManyBlocks) {
    Identity identity(1, 1);
    Json many = Json::array();
    for (unsigned i = 0; i < 61; ++i)
        many.push_back(common::formatMac({{2, 0, 0, static_cast<std::uint8_t>(i), 0, 0}}));
    EXPECT_THROW(identity.replaceAddresses(many), FleetError);
}

TEST(Identities, ReplaceAddressesWithinTexts) {
    Identity identity(1, 2);
    Json json = {{"path", "AssociatedDeviceRSSI[02:5A:00:00:01:01]"}, {"group", "01:00:5e:00:00:01"}};
    identity.replaceAddresses(json);
    const std::string own = common::formatMac(identity.address(*common::parseMac("02:5a:00:00:01:01")));
    EXPECT_EQ(json.at("path"), "AssociatedDeviceRSSI[" + own + "]");
    EXPECT_EQ(json.at("group"), "01:00:5e:00:00:01");
}

}  // namespace
}  // namespace quorvel::fleet_test
