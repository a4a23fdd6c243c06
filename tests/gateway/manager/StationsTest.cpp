#include <gtest/gtest.h>

#include <cstring>

#include "tests/gateway/manager/TestBoard.h"

namespace quorvel::manager::test {
namespace {

description::Station newStation(unsigned accessPoint) {
    description::Station setup;
    setup.mac = {{0x02, 9, 9, 9, 9, 9}};
    setup.accessPoint = accessPoint;
    setup.plan.push_back({0, description::StationStep::Kind::kJoin, {}, {}});
    return setup;
}

TEST(Stations, OfTheBoardAssociateAtPowerOn) {
    const Model model = defaultModel();
    EXPECT_TRUE(station(model, 1).associated);
    EXPECT_EQ(text(model, 0, 0, "numStations"), "2");
    EXPECT_EQ(text(model, 2, 2, "numStations"), "2");
    EXPECT_FALSE(station(model, 9).associated);
    EXPECT_FALSE(station(model, 10).associated);
}

TEST(Stations, FollowTheirPlan) {
    Model model = defaultModel();
    model.advanceTo(59'000);
    EXPECT_FALSE(station(model, 9).associated);
    model.advanceTo(60'000);
    EXPECT_TRUE(station(model, 9).associated);
    model.advanceTo(600'000);
    EXPECT_FALSE(station(model, 9).associated);
}

TEST(Stations, MoveBetweenAccessPointsByPlan) {
    Model model = defaultModel();
    description::Station setup = newStation(1);
    setup.plan.push_back({5, description::StationStep::Kind::kMove, -80, {}});
    setup.plan.push_back({8, description::StationStep::Kind::kMove, -50, 9});
    ASSERT_FALSE(model.joinStation(setup));
    model.advanceTo(6000);
    EXPECT_EQ(model.stations().back().setup.rssi, -80);
    EXPECT_EQ(text(model, 0, 0, "numStations"), "3");
    model.advanceTo(9000);
    EXPECT_EQ(text(model, 0, 0, "numStations"), "2");
    EXPECT_EQ(text(model, 1, 0, "numStations"), "3");
}

TEST(Stations, AreListedInTheOrderOfTheirAssociation) {
    Model model = defaultModel();
    const auto mac = [&](const char* name) { return model.get(0, 0, name).value_or("").substr(0, 17); };
    EXPECT_EQ(mac("wlStaInfo_0"), "02:5a:00:00:01:01");
    EXPECT_EQ(mac("wlStaInfo_1"), "02:5a:00:00:01:02");
    for (const char* none : {"wlStaInfo_2", "wlStaInfo_-1", "wlStaInfo_", "wlStaInfo_x"})
        EXPECT_FALSE(model.get(0, 0, none)) << none;
    ASSERT_FALSE(model.leaveStation(stationMac(1)));
    EXPECT_EQ(mac("wlStaInfo_0"), "02:5a:00:00:01:02");
}

TEST(Stations, CountTheirAssociations) {
    Model model = defaultModel();
    EXPECT_EQ(text(model, 0, 0, "wlStaAssocCnt_02:5a:00:00:01:01"), "1");
    ASSERT_FALSE(model.leaveStation(stationMac(1)));
    ASSERT_FALSE(model.rejoinStation(stationMac(1), {}));
    EXPECT_EQ(text(model, 0, 0, "wlStaAssocCnt_02:5A:00:00:01:01"), "2");
    EXPECT_FALSE(model.get(0, 0, "wlStaAssocCnt_02:00:00:00:00:00"));
}

TEST(Stations, StayAwayAfterTheyLeft) {
    Model model = defaultModel();
    ASSERT_FALSE(model.leaveStation(stationMac(1)));
    model.advanceTo(60'000);
    EXPECT_FALSE(station(model, 1).associated);
}

TEST(Stations, ThatAreUnknownAreNamedInTheRefusal) {
    Model model = defaultModel();
    const common::MacAddress unknown{{2, 0, 0, 0, 0, 0}};
    EXPECT_EQ(model.leaveStation(unknown), "there is no station 02:00:00:00:00:00");
    EXPECT_TRUE(model.rejoinStation(unknown, {}));
    EXPECT_TRUE(model.moveStation(unknown, -50));
    EXPECT_TRUE(model.setTraffic(unknown, 1, 1));
    description::Station twice = newStation(1);
    twice.mac = stationMac(1);
    EXPECT_TRUE(model.joinStation(twice));
    Model two(shippedBoard("dual-band"), {}, 1);
    EXPECT_TRUE(two.joinStation(newStation(17)));
}

TEST(MacFilter, DropsADeniedStationAndRefusesIt) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlFltMacList", "02:00:00:00:00:01 02:5A:00:00:01:01"));
    EXPECT_TRUE(station(model, 1).associated);
    ASSERT_TRUE(model.set(0, 0, "wlFltMacMode", "deny"));
    EXPECT_FALSE(station(model, 1).associated);
    EXPECT_TRUE(station(model, 2).associated);
    model.advanceTo(20'000);
    EXPECT_EQ(model.refusal(station(model, 1)), "the MAC filter denies it");
    EXPECT_FALSE(station(model, 1).associated);
    ASSERT_TRUE(model.set(0, 0, "wlFltMacMode", "disabled"));
    model.advanceTo(30'000);
    EXPECT_TRUE(station(model, 1).associated);
}

TEST(MacFilter, AllowsOnlyListedStations) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlFltMacMode", "allow"));
    EXPECT_EQ(text(model, 0, 0, "numStations"), "0");
    ASSERT_TRUE(model.set(0, 0, "wlFltMacList", "02:5a:00:00:01:02"));
    model.advanceTo(10'000);
    EXPECT_TRUE(station(model, 2).associated);
    EXPECT_FALSE(station(model, 1).associated);
    EXPECT_FALSE(model.set(0, 0, "wlFltMacMode", "perhaps"));
}

TEST(Security, ChangedPassphraseDropsStationsUntilItIsBack) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlWpaPsk", "another passphrase"));
    EXPECT_EQ(text(model, 0, 0, "numStations"), "0");
    EXPECT_EQ(text(model, 0, 1, "numStations"), "1");
    ASSERT_TRUE(model.set(0, 0, "wlWpaPsk", "quorvel-home"));
    model.advanceTo(10'000);
    EXPECT_EQ(text(model, 0, 0, "numStations"), "2");
}

TEST(Security, ChangedModeDropsStationsThatDoNotKnowIt) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlAuthMode", "psk psk2"));
    EXPECT_EQ(text(model, 0, 0, "numStations"), "2");
    ASSERT_TRUE(model.set(0, 0, "wlAuthMode", "psk"));
    EXPECT_EQ(text(model, 0, 0, "numStations"), "0");
    ASSERT_TRUE(model.set(0, 0, "wlAuthMode", "*DEL*"));
    EXPECT_EQ(text(model, 0, 0, "wlAuthMode"), "*DEL*");
    model.advanceTo(10'000);
    EXPECT_EQ(text(model, 0, 0, "numStations"), "0");
}

TEST(Security, WithWepAsksForTheSelectedKey) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 3, "wlEnblSsid", "1"));
    ASSERT_TRUE(model.set(0, 3, "wlWep", "enabled"));
    ASSERT_TRUE(model.set(0, 3, "wlKey2", "abcde"));
    description::Station setup = newStation(4);
    setup.security = "WEP-64";
    setup.passphrase = "abcde";
    ASSERT_FALSE(model.joinStation(setup));
    EXPECT_EQ(text(model, 0, 3, "numStations"), "0");
    ASSERT_TRUE(model.set(0, 3, "wlKeyIndex", "2"));
    model.advanceTo(5000);
    EXPECT_EQ(text(model, 0, 3, "numStations"), "1");
    ASSERT_TRUE(model.set(0, 3, "wlKeyIndex", "7"));
    EXPECT_EQ(text(model, 0, 3, "numStations"), "0");
}

TEST(Security, EnterpriseStationsNeedNoPassphrase) {
    Model model = defaultModel();
    ASSERT_FALSE(model.joinStation(newStation(11)));
    EXPECT_EQ(text(model, 1, 2, "numStations"), "1");
}

TEST(SecurityServices, WhenStoppedLetNoStationInAndKeepTheOthers) {
    Model model = defaultModel();
    ASSERT_TRUE(model.startStopServices(0, 8));
    EXPECT_EQ(text(model, 0, 0, "numStations"), "2");
    ASSERT_FALSE(model.joinStation(newStation(1)));
    EXPECT_EQ(text(model, 0, 0, "numStations"), "2");
    ASSERT_TRUE(model.startStopServices(0, 7));
    model.advanceTo(5000);
    EXPECT_EQ(text(model, 0, 0, "numStations"), "3");
    EXPECT_FALSE(model.startStopServices(0, 9));
}

TEST(AccessPoint, LetsInNoMoreThanItsLimit) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlMaxAssoc", "2"));
    ASSERT_FALSE(model.joinStation(newStation(1)));
    EXPECT_EQ(model.refusal(model.stations().back()), "the access point is full");
    ASSERT_TRUE(model.set(0, 0, "wlMaxAssoc", "3"));
    model.advanceTo(5000);
    EXPECT_EQ(text(model, 0, 0, "numStations"), "3");
}

TEST(AccessPoint, SwitchedOffDropsItsStationsOnly) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 1, "wlEnblSsid", "0"));
    EXPECT_EQ(text(model, 0, 1, "status"), "Down");
    EXPECT_EQ(text(model, 0, 1, "numStations"), "0");
    EXPECT_EQ(text(model, 0, 0, "numStations"), "2");
}

TEST(AccessPoint, RenamedLosesItsStationsForAMoment) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlSsid", "New name"));
    EXPECT_EQ(text(model, 0, 0, "numStations"), "0");
    model.advanceTo(4000);
    EXPECT_EQ(text(model, 0, 0, "numStations"), "2");
    const auto info = model.ssidInfo(0, 0);
    ASSERT_TRUE(info);
    EXPECT_STREQ(info->ssid, "New name");
    EXPECT_EQ(info->up, 1U);
}

TEST(Traffic, GrowsWithTimeAndStopsWithTheStation) {
    Model model = defaultModel();
    model.advanceTo(10'000);
    const Counters ten = station(model, 1).counters;
    // 9,000 kbit/s downlink and 1,200 uplink, a quarter more or less.
    EXPECT_NEAR(static_cast<double>(ten.txBytes), 11'250'000, 11'250'000 / 4.0);
    EXPECT_NEAR(static_cast<double>(ten.rxBytes), 1'500'000, 1'500'000 / 4.0);
    EXPECT_GT(ten.txFrames, 0U);
    EXPECT_GE(model.radios()[0].counters.txBytes, ten.txBytes);
    ASSERT_FALSE(model.leaveStation(stationMac(1)));
    model.advanceTo(20'000);
    EXPECT_EQ(station(model, 1).counters.txBytes, ten.txBytes);
}

TEST(Traffic, IsHandedToTheKernelInterfacesOnce) {
    Model model = defaultModel();
    model.advanceTo(1000);
    const auto traffic = model.takeKernelTraffic();
    ASSERT_FALSE(traffic.empty());
    EXPECT_EQ(traffic[0].radio, 0U);
    EXPECT_EQ(traffic[0].tx, model.radios()[0].bss[0].counters.txBytes);
    EXPECT_TRUE(model.takeKernelTraffic().empty());
}

TEST(Noise, StaysAroundItsLevel) {
    Model model = defaultModel();
    bool moved = false;
    for (int second = 1; second <= 200; ++second) {
        model.advanceTo(second * 1000);
        EXPECT_NEAR(model.noise(0), -92, 2);
        moved = moved || model.noise(0) != -92;
    }
    EXPECT_TRUE(moved);
}

TEST(Events, TellOfAnAssociationWithItsRecord) {
    Model model = defaultModel();
    (void)model.takeMessages();
    ASSERT_FALSE(model.joinStation(newStation(10)));
    const auto messages = model.takeMessages();
    ASSERT_EQ(messages.size(), 1U);
    ASSERT_EQ(messages[0].size, 256U);
    unsigned char bytes[256];
    std::memcpy(bytes, &messages[0].bytes, sizeof bytes);
    const unsigned char header[20] = {1, 0, 0, 0, 1, 0, 0, 0, 8, 0, 0, 0, 2, 9, 9, 9, 9, 9, 0, 0};
    EXPECT_EQ(std::memcmp(bytes, header, sizeof header), 0);
    EXPECT_EQ(std::memcmp(bytes + 20, "02:09:09:09:09:09", 18), 0);
    EXPECT_EQ(bytes[118], 1);
    EXPECT_EQ(bytes[119], 1);
    std::int32_t rssi = 0;
    std::memcpy(&rssi, bytes + 120, sizeof rssi);
    EXPECT_EQ(rssi, -60);
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes + 144), "ac");
    std::uint32_t bandwidth = 0;
    std::memcpy(&bandwidth, bytes + 208, sizeof bandwidth);
    EXPECT_EQ(bandwidth, 80U);
}

TEST(Events, TellOfALeaveWithAHeaderAlone) {
    Model model = defaultModel();
    (void)model.takeMessages();
    ASSERT_FALSE(model.leaveStation(stationMac(8)));
    const auto messages = model.takeMessages();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].size, 20U);
    EXPECT_EQ(messages[0].bytes.header.radio, 2U);
    EXPECT_EQ(messages[0].bytes.header.bss, 2U);
    EXPECT_EQ(messages[0].bytes.header.event, 12U);
}

TEST(StationInformation, IsTheRecordOfTheStationWithThatMac) {
    Model model = defaultModel();
    model.advanceTo(30'000);
    const auto record = model.stationInfo(0, 0, "02:5A:00:00:01:01");
    ASSERT_TRUE(record);
    EXPECT_STREQ(record->mac, "02:5a:00:00:01:01");
    EXPECT_EQ(record->rssi, -48);
    EXPECT_NEAR(static_cast<int>(record->snr), 44, 2);
    EXPECT_EQ(record->associatedSeconds, 30U);
    EXPECT_GT(record->downlinkRate, record->uplinkRate);
    EXPECT_GT(record->txBytes, 0U);
    EXPECT_FALSE(model.stationInfo(0, 1, "02:5a:00:00:01:01"));
    EXPECT_FALSE(model.stationInfo(0, 0, "nonsense"));
    EXPECT_FALSE(model.stationInfo(9, 0, "02:5a:00:00:01:01"));
}

std::string wholeLog(std::uint64_t seed) {
    Model model(shippedBoard("tri-band"), {}, seed);
    model.advanceTo(45'000);
    if (!model.set(0, 0, "wlWpaPsk", "another passphrase")) ADD_FAILURE();
    model.advanceTo(3'600'000);
    std::string log;
    for (const LogEntry& entry : model.entries()) {
        log +=
            std::to_string(entry.number) + " " + std::to_string(entry.at) + " " + entry.kind + " " + entry.text + "\n";
    }
    return log + std::to_string(model.radios()[0].counters.txBytes);
}

TEST(Simulation, RepeatsItselfByteForByteFromTheSameSeed) {
    EXPECT_EQ(wholeLog(5), wholeLog(5));
    EXPECT_NE(wholeLog(5), wholeLog(6));
}

TEST(Simulation, IsTheSameInOneLeapAndInSteps) {
    Model leap = defaultModel();
    Model steps = defaultModel();
    leap.advanceTo(100'000);
    for (int i = 1; i <= 1000; ++i)
        steps.advanceTo(i * 100);
    EXPECT_EQ(leap.radios()[1].counters.txBytes, steps.radios()[1].counters.txBytes);
    EXPECT_EQ(leap.entries().size(), steps.entries().size());
}

TEST(Simulation, RestsWhenNothingCanChangeByItself) {
    const Model busy = defaultModel();
    EXPECT_EQ(busy.nextChange(), 1000);
    const Model idle(shippedBoard("unsupported"), {}, 1);
    EXPECT_FALSE(idle.nextChange());
}

description::StationStep step(description::StationStep::Kind kind, double at) {
    description::StationStep result;
    result.kind = kind;
    result.at = at;
    return result;
}

// A board with the station only, which joins at power-on.
Model modelWith(description::Station station) {
    station.plan.insert(station.plan.begin(), step(description::StationStep::Kind::kJoin, 0));
    description::Board board = shippedBoard("tri-band");
    station.mac = stationMac(0x77);
    station.accessPoint = 1;
    board.stations = {std::move(station)};
    return {std::move(board), {}, 1};
}

TEST(Simulation, RestsWhileStationsHaveNoTraffic) {
    description::Station quiet = shippedBoard("tri-band").stations.at(0);
    quiet.downlinkTraffic = quiet.uplinkTraffic = 0;
    quiet.plan.clear();
    Model model = modelWith(quiet);
    model.advanceTo(10'000);
    ASSERT_TRUE(station(model, 0x77).associated);
    EXPECT_FALSE(model.nextChange());
    quiet.plan = {step(description::StationStep::Kind::kLeave, 60.25)};
    EXPECT_EQ(modelWith(quiet).nextChange(), 61'000);
}

TEST(Simulation, RestsWhileAStationIsRefused) {
    description::Station stranger = shippedBoard("tri-band").stations.at(0);
    stranger.plan.clear();
    stranger.passphrase = "not the passphrase";
    Model model = modelWith(stranger);
    model.advanceTo(10'500);
    ASSERT_FALSE(station(model, 0x77).associated);
    EXPECT_FALSE(model.nextChange());
    // With the right one it comes at its next try.
    ASSERT_TRUE(model.set(0, 0, "wlWpaPsk", "not the passphrase"));
    const auto next = model.nextChange();
    ASSERT_TRUE(next);
    model.advanceTo(*next - 1);
    EXPECT_FALSE(station(model, 0x77).associated);
    model.advanceTo(*next);
    EXPECT_TRUE(station(model, 0x77).associated);
}

}  // namespace
}  // namespace quorvel::manager::test
