// Stations: lasting numbers, and the notifications that follow from them.
#include "agent/wifi/Stations.h"
#include "tests/agent/core/AgentWorld.h"

namespace quorvel::agent_test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kTable = "Device.WiFi.AccessPoint.1.AssociatedDevice.";

class StationNumbers : public AgentWorld {
  protected:
    StationNumbers() {
        start();
        connect();
        (void)notifies();
    }

    std::vector<std::string> rows() {
        std::vector<std::string> found;
        const usp::GetInstancesResp answer = instances({kTable});
        for (const auto& row : answer.req_path_results(0).curr_insts())
            found.push_back(row.instantiated_obj_path().substr(43) + row.unique_keys().at("MACAddress"));
        return found;
    }
};

using Rows = std::vector<std::string>;

TEST_F(StationNumbers, StayWithTheStationWhenPositionsShift) {
    gateway.stations(1, {"AA:1", "AA:2", "AA:3"});
    EXPECT_EQ(rows(), (Rows{"1.AA:1", "2.AA:2", "3.AA:3"}));
    gateway.stations(1, {"AA:2", "AA:3"});
    EXPECT_EQ(rows(), (Rows{"2.AA:2", "3.AA:3"}));
    EXPECT_EQ(value(std::string(kTable) + "3.MACAddress"), "AA:3");
    EXPECT_EQ(value(std::string(kTable) + "3.Stats.BytesSent"), "13");
    EXPECT_EQ(get({std::string(kTable) + "1.MACAddress"}).req_path_results(0).err_code(), 7016U);
    EXPECT_EQ(get({std::string(kTable) + "1."}).req_path_results(0).err_code(), 7016U);
}

TEST_F(StationNumbers, AreNeverGivenAgain) {
    gateway.stations(1, {"AA:1"});
    EXPECT_EQ(rows(), Rows{"1.AA:1"});
    gateway.stations(1, {});
    EXPECT_EQ(rows(), Rows{});
    gateway.stations(1, {"AA:9", "AA:1"});
    EXPECT_EQ(rows(), (Rows{"2.AA:9", "3.AA:1"}));
}

TEST_F(StationNumbers, AreFoundBySearchesAndPartialPaths) {
    gateway.stations(1, {"AA:1", "AA:2"});
    (void)rows();
    gateway.stations(1, {"AA:2"});
    EXPECT_EQ(value(std::string(kTable) + "[MACAddress==\"AA:2\"].MACAddress"), "AA:2");
    EXPECT_EQ(value(std::string(kTable) + "*.SignalStrength"), "-50");
    const usp::GetResp answer = get({"Device.WiFi.AccessPoint.1.", kTable}, 0);
    bool seen = false;
    for (const auto& result : answer.req_path_results(0).resolved_path_results())
        seen = seen || result.resolved_path() == std::string(kTable) + "2.";
    EXPECT_TRUE(seen);
    EXPECT_EQ(answer.req_path_results(1).resolved_path_results_size(), 2);
    EXPECT_EQ(get({std::string(kTable) + "2."}, 1).req_path_results(0).resolved_path_results_size(), 1);
}

TEST_F(StationNumbers, AreNotRemovedByAListThatIsReadWhileRowsShift) {
    Stations stations;
    (void)stations.update(kTable, {"AA:1", "AA:2"});
    EXPECT_TRUE(stations.update(kTable, {"AA:2", "AA:2"}).left.empty());
    EXPECT_TRUE(stations.update(kTable, {"AA:2", ""}).left.empty());
    EXPECT_TRUE(stations.update(kTable, {"AA:2"}, false).left.empty());
    EXPECT_EQ(stations.update(kTable, {"AA:2"}).left.size(), 1U);
    EXPECT_EQ(stations.numberOf(kTable, "AA:2"), 2U);
    EXPECT_EQ(stations.numberOf(kTable, "AA:1"), 0U);
    EXPECT_EQ(stations.numberOf("x", "AA:1"), 0U);
}

TEST_F(StationNumbers, AreNotifiedWhenTheLibrarySaysSo) {
    subscribe("in", "ObjectCreation", "Device.WiFi.AccessPoint.*.AssociatedDevice.");
    subscribe("out", "ObjectDeletion", "Device.WiFi.AccessPoint.*.AssociatedDevice.*.");
    (void)notifies();
    gateway.stations(1, {"AA:1"});
    gateway.listener->onStationEvent({true, "AA:1", "1"});
    auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].obj_creation().obj_path(), std::string(kTable) + "1.");
    EXPECT_EQ(told[0].obj_creation().unique_keys().at("MACAddress"), "AA:1");
    gateway.stations(1, {});
    gateway.listener->onStationEvent({false, "AA:1", "1"});
    told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].obj_deletion().obj_path(), std::string(kTable) + "1.");
}

TEST_F(StationNumbers, AreNotifiedWithinFiveSecondsWithoutAnEvent) {
    subscribe("in", "ObjectCreation", kTable);
    gateway.stations(1, {"AA:1"});
    pass(5s);
    EXPECT_EQ(notifies().size(), 1U);
    // A read that comes first tells it once.
    gateway.stations(1, {"AA:1", "AA:2"});
    (void)rows();
    pass(10s);
    EXPECT_EQ(notifies().size(), 1U);
}

TEST_F(StationNumbers, AreReadSeldomWhileNobodyWaits) {
    pass(5s);
    gateway.calls.clear();
    pass(9min);
    EXPECT_EQ(gateway.count("get"), 0U);
    pass(1min);
    EXPECT_EQ(gateway.count("get"), 1U);
    subscribe("in", "ObjectCreation", kTable);
    gateway.calls.clear();
    pass(20s);
    EXPECT_EQ(gateway.count("get"), 4U);
}

TEST_F(StationNumbers, OfThoseWhoWereThereBeforeASubscriptionAreNotNotified) {
    gateway.stations(1, {"AA:1"});
    pass(5s);
    subscribe("in", "ObjectCreation", kTable);
    pass(10s);
    EXPECT_TRUE(notifies().empty());
}

TEST_F(StationNumbers, AreNotifiedAtOnceOfAllWhoComeWhileAListIsRead) {
    subscribe("in", "ObjectCreation", "Device.WiFi.AccessPoint.*.AssociatedDevice.");
    (void)notifies();
    gateway.holding = true;
    gateway.stations(1, {"AA:1"});
    gateway.listener->onStationEvent({true, "AA:1", "1"});
    gateway.stations(2, {"BB:1"});
    gateway.listener->onStationEvent({true, "BB:1", "2"});
    gateway.holding = false;
    gateway.release();
    EXPECT_EQ(notifies().size(), 2U);
}

TEST_F(StationNumbers, AreKeptByChangesOfTheirValues) {
    gateway.stations(1, {"AA:1", "AA:2"});
    (void)rows();
    subscribe("vc", "ValueChange", "Device.WiFi.AccessPoint.1.AssociatedDevice.*.SignalStrength");
    pass(2s);
    (void)notifies();
    // The first leaves: the second moves, and its value with it.
    gateway.stations(1, {"AA:2"});
    pass(2s);
    EXPECT_TRUE(notifies().empty());
    gateway.values[std::string(kTable) + "1.SignalStrength"] = "-77";
    pass(2s);
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].value_change().param_path(), std::string(kTable) + "2.SignalStrength");
    EXPECT_EQ(told[0].value_change().param_value(), "-77");
}

TEST_F(StationNumbers, ValuesOfTheLibraryAreNotifiedWhenTheyChange) {
    subscribe("ssid", "ValueChange", "Device.WiFi.SSID.1.SSID");
    subscribe("all", "ValueChange", "Device.WiFi.SSID.1.");
    subscribe("found", "ValueChange", "Device.WiFi.SSID.[SSID==\"net1\"].SSID");
    subscribe("up", "ValueChange", "Device.WiFi.Radio.1.UpTime");
    subscribe("secret", "ValueChange", "Device.WiFi.AccessPoint.1.Security.KeyPassphrase");
    (void)notifies();
    gateway.change("Device.WiFi.SSID.1.SSID", "new");
    EXPECT_EQ(notifies().size(), 3U);
    gateway.change("Device.WiFi.Radio.1.UpTime", "99");
    EXPECT_TRUE(notifies().empty());
    gateway.change("Device.WiFi.AccessPoint.1.Security.KeyPassphrase", "psst");
    const auto told = notifies();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].value_change().param_value(), "");
}

TEST_F(StationNumbers, ALostGatewayForgetsNobody) {
    gateway.stations(1, {"AA:1"});
    EXPECT_EQ(rows(), Rows{"1.AA:1"});
    gateway.lost = true;
    pass(5s);
    gateway.lost = false;
    gateway.listener->onRestored();
    EXPECT_EQ(rows(), Rows{"1.AA:1"});
}

}  // namespace
}  // namespace quorvel::agent_test
