#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/wifi/MappedParameters.h"
#include "tests/wifi/StationRecord.h"
#include "tests/wifi/platform/FreshProcess.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Contexts.h"
#include "wifi/model/Implementations.h"

// Access points: mapped parameters, the filter's modes, station walks and the beacon rate.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using scripted::runFresh;
using scripted::StationRecord;
using Texts = std::vector<std::string>;

constexpr char kFirst[] = "00:11:22:33:44:5A";
constexpr char kSecond[] = "00:11:22:33:44:5B";
constexpr char kThird[] = "00:11:22:33:44:5c";

class AccessPoint : public MappedParameters {
  protected:
    AccessPoint() {
        EXPECT_EQ(WiFiAccessPointInitContext(context.get()), 0U);
        platform.forget();
    }
    std::uint32_t apply() {
        platform.forget();
        return WiFiAccessPointApplyContext(context.get(), kAccessPoint);
    }
    GuardedBlock context{sizeof(WiFiAccessPointContext)};
};

const MappedNumber kReadNumbers[] = {
    {"WiFiAccessPointEnable", "wlEnblSsid", "1", 1},
    {"WiFiAccessPointEnable", "wlEnblSsid", "0", 0},
    {"WiFiAccessPointSSIDAdvertisementEnabled", "wlHide", "1", 0},
    {"WiFiAccessPointSSIDAdvertisementEnabled", "wlHide", "0", 1},
    {"WiFiAccessPointWMMCapability", "WMMCapability", "1", 1},
    {"WiFiAccessPointUAPSDCapability", "UAPSDCapability", "1", 1},
    {"WiFiAccessPointWMMEnable", "wlDisableWme", "1", 0},
    {"WiFiAccessPointWMMEnable", "wlDisableWme", "0", 1},
    {"WiFiAccessPointUAPSDEnable", "wlWmeApsd", "1", 1},
    {"WiFiAccessPointAssociatedDeviceNumberOfEntries", "numStations", "12", 12},
    {"WiFiAccessPointAssociatedDeviceNumberOfEntries", "numStations", "0", 0},
    {"WiFiAccessPointMaxAssociatedDevices", "wlMaxAssoc", "64", 64},
    {"WiFiAccessPointIsolationEnable", "wlAPIsolation", "1", 1},
    {"WiFiAccessPointAccessControlFilterEnabled", "wlFltMacMode", "disabled", 0},
    {"WiFiAccessPointAccessControlFilterEnabled", "wlFltMacMode", "disabledXYZ", 0},
    {"WiFiAccessPointAccessControlFilterEnabled", "wlFltMacMode", "disable", 1},
    {"WiFiAccessPointAccessControlFilterEnabled", "wlFltMacMode", "allow", 1},
    {"WiFiAccessPointAccessControlFilterEnabled", "wlFltMacMode", "deny", 1},
    {"WiFiAccessPointAccessControlFilterEnabled", "wlFltMacMode", "", 1},
    {"WiFiAccessPointAccessControlFilterAccessAllow", "wlFltMacMode", "allow", 1},
    {"WiFiAccessPointAccessControlFilterAccessAllow", "wlFltMacMode", "allowed", 1},
    {"WiFiAccessPointAccessControlFilterAccessAllow", "wlFltMacMode", "allo", 0},
    {"WiFiAccessPointAccessControlFilterAccessAllow", "wlFltMacMode", "deny", 0},
    {"WiFiAccessPointAccessControlFilterAccessAllow", "wlFltMacMode", "disabled", 0},
    {"WiFiAccessPointClearAccessControlFilterTable", "wlFltMacList", "", 1},
    {"WiFiAccessPointClearAccessControlFilterTable", "wlFltMacList", kFirst, 0},
    {"WiFiAccessPointAccessControlFilterProbeResponseEnable", "wlProbeResponseMF", "1", 1},
    {"WiFiAccessPointWmmOgAckPolicy", "wlWmeNoAck", "1", 1},
};

const MappedText kTexts[] = {
    {"WiFiAccessPointStatus", "status"},
    {"WiFiAccessPointAlias", "apAlias"},
    {"WiFiAccessPointSSIDReference", "SSIDReference"},
};

const MappedNumber kWrittenNumbers[] = {
    {"WiFiAccessPointEnable", "wlEnblSsid", "1", 1},
    {"WiFiAccessPointEnable", "wlEnblSsid", "0", 0},
    {"WiFiAccessPointSSIDAdvertisementEnabled", "wlHide", "0", 1},
    {"WiFiAccessPointSSIDAdvertisementEnabled", "wlHide", "1", 0},
    {"WiFiAccessPointWMMEnable", "wlDisableWme", "0", 1},
    {"WiFiAccessPointWMMEnable", "wlDisableWme", "1", 0},
    {"WiFiAccessPointUAPSDEnable", "wlWmeApsd", "1", 1},
    {"WiFiAccessPointMaxAssociatedDevices", "wlMaxAssoc", "1000", 1000},
    {"WiFiAccessPointMaxAssociatedDevices", "wlMaxAssoc", "4294967295", 0xFFFFFFFF},
    {"WiFiAccessPointIsolationEnable", "wlAPIsolation", "1", 1},
    {"WiFiAccessPointAccessControlFilterEnabled", "wlFltMacMode", "disabled", 0},
    {"WiFiAccessPointClearAccessControlFilterTable", "wlFltMacList", "", 1},
    {"WiFiAccessPointAccessControlFilterAccessAllow", "wlFltMacMode", "allow", 1},
    {"WiFiAccessPointAccessControlFilterAccessAllow", "wlFltMacMode", "deny", 0},
    {"WiFiAccessPointAccessControlFilterAccessAllow", "wlFltMacMode", "deny", 5},
    {"WiFiAccessPointAccessControlFilterProbeResponseEnable", "wlProbeResponseMF", "1", 1},
    {"WiFiAccessPointWmmOgAckPolicy", "wlWmeNoAck", "1", 1},
    {"WiFiAccessPointResetToFactory", "wlResetAP", "1", 1},
    {"WiFiAccessPointResetToFactory", "wlResetAP", "0", 0},
};

TEST_F(AccessPoint, ReadsItsVariables) {
    for (const MappedNumber& number : kReadNumbers) {
        expectRead(number);
    }
    for (const MappedText& text : kTexts) {
        expectRead(text);
    }
}

TEST_F(AccessPoint, FailsToReadWhatTheManagerDoesNotHave) {
    for (const MappedNumber& number : kReadNumbers) {
        if (std::strcmp(number.variable, "wlFltMacList") != 0) {
            expectFailure(number.stem, number.variable);
        }
    }
    for (const MappedText& text : kTexts) {
        expectFailure(text.stem, text.variable);
    }
}

TEST_F(AccessPoint, FilterTableIsClearWhenTheManagerHasNone) {
    std::uint8_t clear = 7;
    EXPECT_EQ(WiFiAccessPointClearAccessControlFilterTableGet(kAccessPoint, &clear), 0U);
    EXPECT_EQ(clear, 1U);
}

TEST_F(AccessPoint, LeavesTheOutputOfParametersThatAreNotRead) {
    expectUntouched("WiFiAccessPointPublicAccessMode");
    expectUntouched("WiFiAccessPointResetToFactory");
}

TEST_F(AccessPoint, WritesItsVariables) {
    for (const MappedNumber& number : kWrittenNumbers) {
        expectWritten(number, WiFiAccessPointApplyContext);
    }
    expectWritten(kTexts[1], WiFiAccessPointApplyContext);
    expectWritten(kTexts[2], WiFiAccessPointApplyContext);
}

TEST_F(AccessPoint, WritesNothingToEnableTheFilterOrToKeepItsTable) {
    EXPECT_EQ(WiFiAccessPointAccessControlFilterEnabledSet(context.get(), kAccessPoint, 1), 0U);
    EXPECT_EQ(WiFiAccessPointClearAccessControlFilterTableSet(context.get(), kAccessPoint, 0), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_set"), 0U);
}

TEST_F(AccessPoint, HasNowhereToWriteThePublicAccessMode) {
    EXPECT_EQ(WiFiAccessPointPublicAccessModeSet(context.get(), kAccessPoint, 2), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_set"), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{" No direct wlmgnr mapping for node[17]."});
}

TEST_F(AccessPoint, WritesInNodeOrderWhateverTheOrderOfTheSets) {
    EXPECT_EQ(WiFiAccessPointResetToFactorySet(context.get(), 1, 1), 0U);
    EXPECT_EQ(WiFiAccessPointAccessControlFilterAccessAllowSet(context.get(), 1, 1), 0U);
    EXPECT_EQ(WiFiAccessPointAccessControlFilterEnabledSet(context.get(), 1, 0), 0U);
    EXPECT_EQ(WiFiAccessPointAliasSet(context.get(), 1, "lounge", 6), 0U);
    EXPECT_EQ(WiFiAccessPointEnableSet(context.get(), 1, 1), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(
        platform.callTexts({"wlcsm_mngr_set"}),
        (Texts{writeCall("wlEnblSsid", "1"), writeCall("apAlias", "lounge"), writeCall("wlFltMacMode", "disabled"),
               writeCall("wlFltMacMode", "allow"), writeCall("wlResetAP", "1")}));
    for (std::uint32_t node = 1; node <= 24; ++node) {
        EXPECT_EQ(WiFiAccessPointCheckContextNodeSet(context.get(), node), 0U) << node;
    }
}

TEST_F(AccessPoint, WalksItsTwentyFourNodes) {
    EXPECT_EQ(apply(), 0U);
    Texts asked;
    for (std::uint32_t node = 1; node <= 24; ++node) {
        asked.push_back("Quorvel_IsContextSetMap(ctx, " + std::to_string(node) + ")");
    }
    EXPECT_EQ(platform.callTexts({"Quorvel_IsContextSetMap"}), asked);
}

TEST_F(AccessPoint, RefusesValuesOutOfRange) {
    using Set = std::uint32_t (*)(void*, std::uint32_t, std::uint32_t);
    for (const Set set :
         std::vector<Set>{WiFiAccessPointEnableSet, WiFiAccessPointSSIDAdvertisementEnabledSet,
                          WiFiAccessPointWMMEnableSet, WiFiAccessPointUAPSDEnableSet, WiFiAccessPointIsolationEnableSet,
                          WiFiAccessPointAccessControlFilterEnabledSet, WiFiAccessPointClearAccessControlFilterTableSet,
                          WiFiAccessPointAccessControlFilterProbeResponseEnableSet, WiFiAccessPointWmmOgAckPolicySet,
                          WiFiAccessPointResetToFactorySet}) {
        EXPECT_EQ(set(context.get(), 1, 2), 8U);
        EXPECT_EQ(set(context.get(), 1, 256), 8U);
    }
    for (const std::int32_t mode : {0, 4, -1, -2147483647 - 1}) {
        EXPECT_EQ(WiFiAccessPointPublicAccessModeSet(context.get(), 1, mode), 8U) << mode;
    }
    EXPECT_EQ(platform.logCount(0, "Value out of range"), 24U);
    EXPECT_EQ(platform.callCount("Quorvel_ContextSetMap"), 0U);
    for (const std::int32_t mode : {1, 2, 3}) {
        EXPECT_EQ(WiFiAccessPointPublicAccessModeSet(context.get(), 1, mode), 0U) << mode;
    }
}

TEST_F(AccessPoint, RefusesToApplyToOneThatDoesNotExist) {
    for (const std::uint32_t ap : {0U, 25U, 0xFFFFFFFFU}) {
        ASSERT_EQ(WiFiAccessPointEnableSet(context.get(), ap, 1), 0U);
        EXPECT_EQ(WiFiAccessPointApplyContext(context.get(), ap), 6U);
        EXPECT_EQ(platform.callCount("wlcsm_mngr_set"), 0U);
        EXPECT_EQ(WiFiAccessPointCheckContextNodeSet(context.get(), 1), 1U);  // nothing is lost
    }
}

TEST_F(AccessPoint, FollowsItsRadioWhenItIsMoved) {
    EXPECT_TRUE(runFresh([] {
        auto& world = scripted::Platform::instance();
        world.setVariable(2, 2, "wlMaxAssoc", "9");
        ASSERT_EQ(WiFiSystemAccessPointDelete(17), 0U);
        ASSERT_EQ(WiFiSystemAccessPointCreate(3, 11), 0U);
        std::uint32_t most = 0;
        EXPECT_EQ(WiFiAccessPointMaxAssociatedDevicesGet(11, &most), 0U);
        EXPECT_EQ(most, 9U);
    }));
}

// --- Station walks

class StationWalk : public scripted::PlatformTest {
  protected:
    void setStations(const std::vector<StationRecord>& stations) {
        platform.setVariable(1, 2, "numStations", std::to_string(stations.size()));
        for (std::size_t n = 0; n < stations.size(); ++n) {
            platform.setVariable(1, 2, "wlStaInfo_" + std::to_string(n), stations[n].bytes());
        }
    }
    void setThreeStations() {
        setStations({station(kFirst, -41, 866, 780), station(kSecond, -62, 130, 117), station(kThird, -87, -1, 6)});
    }
    static StationRecord station(const char* mac, std::int32_t rssi, std::int32_t receive, std::int32_t transmit) {
        return StationRecord(mac)
            .number(StationRecord::kRssi, rssi)
            .number(StationRecord::kReceiveRate, receive)
            .number(StationRecord::kTransmitRate, transmit);
    }
    // The list read into a zeroed buffer.
    std::string macList() {
        GuardedBlock buffer(1024);
        buffer.write(0, std::string(1024, '\0'));
        EXPECT_EQ(WiFiAccessPointAssociatedDeviceMacListGet(11, buffer.text(), 1024), 0U);
        EXPECT_TRUE(buffer.intact());
        return buffer.text();
    }
    Texts linesOf(const char* function) const {
        Texts lines;
        for (const auto& line : platform.logs()) {
            if (line.function == function) {
                lines.push_back(std::to_string(line.level) + " " + line.text);
                EXPECT_EQ(line.file, "wifi/QuorvelWiFiAccessPointImpl");
            }
        }
        return lines;
    }
};

TEST_F(StationWalk, ListsTheAddressesOfAllStations) {
    setThreeStations();
    const std::string list = macList();
    EXPECT_EQ(list, "00:11:22:33:44:5A,00:11:22:33:44:5B,00:11:22:33:44:5c");
    EXPECT_EQ(list.size(), 53U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get"}),
              (Texts{"wlcsm_mngr_get(1, 2, \"numStations\")", "wlcsm_mngr_get(1, 2, \"wlStaInfo_0\")",
                     "wlcsm_mngr_get(1, 2, \"wlStaInfo_1\")", "wlcsm_mngr_get(1, 2, \"wlStaInfo_2\")"}));
    EXPECT_EQ(linesOf("WiFiAccessPointAssociatedDeviceMacListGetImpl"),
              Texts{"2 AssociatedDeviceMacList[" + list + "]"});
    EXPECT_EQ(platform.formatOf("AssociatedDeviceMacList[" + list + "]"), "AssociatedDeviceMacList[%s]");
}

TEST_F(StationWalk, ListsOneStationWithoutComma) {
    setStations({station(kFirst, 0, 0, 0)});
    EXPECT_EQ(macList(), kFirst);
}

TEST_F(StationWalk, TakesSeventeenCharactersOfAnAddress) {
    setStations({StationRecord(std::string(StationRecord::kSize, 'a')), station(kSecond, 0, 0, 0)});
    EXPECT_EQ(macList(), std::string(17, 'a') + "," + kSecond);
}

TEST_F(StationWalk, AppendsToWhatTheBufferHolds) {
    setThreeStations();
    GuardedBlock buffer(1024);
    buffer.write(0, std::string("here: ") + '\0');
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceMacListGet(11, buffer.text(), 1024), 0U);
    EXPECT_EQ(std::string(buffer.text()), std::string("here: ") + kFirst + "," + kSecond + "," + kThird);
}

TEST_F(StationWalk, NeverWritesBeyondTheBuffer) {
    std::vector<StationRecord> crowd;
    for (int n = 0; n < 64; ++n) {
        crowd.push_back(station(kFirst, 0, 0, 0));
    }
    setStations(crowd);
    EXPECT_EQ(macList().size(), 56U * 18 - 1);  // whole addresses only
    // With these before it the 56th address would leave no room for the end.
    GuardedBlock crowded(1024);
    crowded.write(0, std::string(17, 'x') + '\0');
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceMacListGet(11, crowded.text(), 1024), 0U);
    EXPECT_EQ(std::strlen(crowded.text()), 17 + 55U * 18 - 1);
    EXPECT_TRUE(crowded.intact());
    // Two addresses more fill the buffer to its end; with one character less they do not both fit.
    for (const std::size_t held : {988U, 989U}) {
        GuardedBlock tight(1024);
        tight.write(0, std::string(held, 'x') + '\0');
        EXPECT_EQ(WiFiAccessPointAssociatedDeviceMacListGet(11, tight.text(), 1024), 0U);
        EXPECT_EQ(std::strlen(tight.text()), held == 988 ? 1023U : 989U + 17U);
        EXPECT_TRUE(tight.intact());
    }
    GuardedBlock full(1024);
    full.write(0, std::string(1024, 'x'));
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceMacListGet(11, full.text(), 1024), 0U);
    EXPECT_EQ(full.bytes(0, 1024), std::string(1024, 'x'));
    EXPECT_TRUE(full.intact());
    crowd.resize(56, station(kFirst, 0, 0, 0));
    setStations(crowd);
    EXPECT_EQ(macList().size(), 56U * 18 - 1);
}

// A station that is counted but gone when its record is read has no address: the address before it is not
// repeated.
TEST_F(StationWalk, SurvivesAStationThatLeavesWhileItWalks) {
    setThreeStations();
    platform.failAt("wlcsm_mngr_get", 3);
    EXPECT_EQ(macList(), std::string(kFirst) + ",," + kThird);
    platform.succeed("wlcsm_mngr_get");
    platform.removeVariable(1, 2, "wlStaInfo_1");
    std::int32_t value = 5;
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceRSSIGet(11, kSecond, &value), 0U);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceRSSIGet(11, kThird, &value), 0U);
    EXPECT_EQ(value, -87);
}

TEST_F(StationWalk, LooksAtNoStationBeyondTheCountItReadFirst) {
    setThreeStations();
    platform.setVariable(1, 2, "numStations", "2");
    EXPECT_EQ(macList(), std::string(kFirst) + "," + kSecond);
    std::int32_t value = 5;
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceRxRateGet(11, kThird, &value), 0U);
    EXPECT_EQ(value, 0);
}

TEST_F(StationWalk, OverANegativeNumberOfStationsFindsNobody) {
    platform.setVariable(1, 2, "numStations", "-1");
    EXPECT_EQ(macList(), "");
    std::int32_t value = 5;
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceRSSIGet(11, kFirst, &value), 0U);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_get"), 2U);
}

TEST_F(StationWalk, FailsWithoutAStation) {
    using Read = std::uint32_t (*)(std::uint32_t, const char*, std::int32_t*);
    for (const char* none : {"0", "", "none", "absent"}) {
        SCOPED_TRACE(none);
        platform.reset();
        if (std::strcmp(none, "absent") != 0) {
            platform.setVariable(1, 2, "numStations", none);
        }
        GuardedBlock buffer(1024);
        EXPECT_EQ(WiFiAccessPointAssociatedDeviceMacListGet(11, buffer.text(), 1024), 1U);
        EXPECT_EQ(linesOf("WiFiAccessPointAssociatedDeviceMacListGetImpl"),
                  Texts{"0 There is no station associated on AP[11]"});
        EXPECT_EQ(buffer.bytes(0, 1024), std::string(1024, '\xEE'));
        for (const Read read : {WiFiAccessPointAssociatedDeviceRSSIGet, WiFiAccessPointAssociatedDeviceRxRateGet,
                                WiFiAccessPointAssociatedDeviceTxRateGet}) {
            platform.forget();
            std::int32_t value = 5;
            EXPECT_EQ(read(11, kFirst, &value), 1U);
            EXPECT_EQ(value, 0);
            EXPECT_EQ(platform.logTexts(0),
                      (Texts{"There is no station associated on AP[11]", "Impl call failed, result 1"}));
            EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get"}), Texts{"wlcsm_mngr_get(1, 2, \"numStations\")"});
        }
    }
}

struct StationNumber {
    std::uint32_t (*read)(std::uint32_t ap, const char* mac, std::int32_t* out);
    const char* implementation;
    const char* closing;  // before the number
    std::int32_t ofSecond;
    std::int32_t ofThird;
};

// Quirk: the transmit rate's last line names the receive rate.
const StationNumber kStationNumbers[] = {
    {WiFiAccessPointAssociatedDeviceRSSIGet, "WiFiAccessPointAssociatedDeviceRSSIGetImpl", "AssociatedDeviceRSSI[", -62,
     -87},
    {WiFiAccessPointAssociatedDeviceRxRateGet, "WiFiAccessPointAssociatedDeviceRxRateGetImpl",
     "AssociatedDeviceRxRate[", 130, -1},
    {WiFiAccessPointAssociatedDeviceTxRateGet, "WiFiAccessPointAssociatedDeviceTxRateGetImpl",
     "AssociatedDeviceRxRate[", 117, 6},
};

TEST_F(StationWalk, ReadsANumberOfTheStationWithTheAddress) {
    setThreeStations();
    for (const StationNumber& number : kStationNumbers) {
        SCOPED_TRACE(number.implementation);
        platform.forget();
        GuardedBlock out(4);
        EXPECT_EQ(number.read(11, kSecond, static_cast<std::int32_t*>(out.get())), 0U);
        EXPECT_EQ(out.at<std::int32_t>(0), number.ofSecond);
        EXPECT_TRUE(out.intact());
        // Address, signal, transmit rate, receive rate, in this order.
        EXPECT_EQ(linesOf(number.implementation),
                  (Texts{"2 STA info:00:11:22:33:44:5B,-62,117,130\n",
                         "2 " + (number.closing + std::to_string(number.ofSecond)) + "]"}));
        // No station behind the match is read.
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get"}),
                  (Texts{"wlcsm_mngr_get(1, 2, \"numStations\")", "wlcsm_mngr_get(1, 2, \"wlStaInfo_0\")",
                         "wlcsm_mngr_get(1, 2, \"wlStaInfo_1\")"}));
        std::int32_t value = 0;
        EXPECT_EQ(number.read(11, kThird, &value), 0U);
        EXPECT_EQ(value, number.ofThird);
    }
}

TEST_F(StationWalk, ComparesSeventeenCharactersWhateverTheirCase) {
    setThreeStations();
    std::int32_t value = 0;
    for (const char* mac : {"00:11:22:33:44:5C", "00:11:22:33:44:5c", "00:11:22:33:44:5c and more"}) {
        EXPECT_EQ(WiFiAccessPointAssociatedDeviceRSSIGet(11, mac, &value), 0U);
        EXPECT_EQ(value, -87) << mac;
    }
    for (const char* mac : {"00:11:22:33:44:5", "00:11:22:33:44:5d", "00-11-22-33-44-5c", ""}) {
        EXPECT_EQ(WiFiAccessPointAssociatedDeviceRSSIGet(11, mac, &value), 0U);
        EXPECT_EQ(value, 0) << mac;
    }
}

TEST_F(StationWalk, ReadsZeroForAStationThatIsNotThere) {
    setThreeStations();
    for (const StationNumber& number : kStationNumbers) {
        platform.forget();
        std::int32_t value = 5;
        EXPECT_EQ(number.read(11, "ff:ff:ff:ff:ff:ff", &value), 0U);
        EXPECT_EQ(value, 0);
        EXPECT_EQ(linesOf(number.implementation), Texts{"2 " + std::string(number.closing) + "0]"});
        EXPECT_EQ(platform.callCount("wlcsm_mngr_get"), 4U);
    }
}

TEST_F(StationWalk, LogsAnAddressWithoutTerminatorByItsCharacters) {
    setStations({StationRecord(std::string(98, 'a'))});
    std::int32_t value = 0;
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceRSSIGet(11, std::string(17, 'A').c_str(), &value), 0U);
    EXPECT_TRUE(platform.logged(2, "STA info:" + std::string(17, 'a') + ",0,0,0\n"));
}

TEST_F(StationWalk, AsksForTheStationsOfAnAccessPointThatNoRadioHas) {
    platform.setVariable(0xFFFFFFFE, 2, "numStations", "1");
    platform.setVariable(0xFFFFFFFE, 2, "wlStaInfo_0", station(kFirst, -41, 0, 0).bytes());
    std::int32_t value = 0;
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceRSSIGet(27, kFirst, &value), 0U);
    EXPECT_EQ(value, -41);
    EXPECT_TRUE(platform.logged(0, "Invalid input params accessPointIndex:27 max:24"));
}

TEST_F(StationWalk, NeedsAnAddress) {
    for (const StationNumber& number : kStationNumbers) {
        platform.forget();
        std::int32_t value = 5;
        EXPECT_EQ(number.read(11, nullptr, &value), 6U);
        EXPECT_EQ(number.read(11, kFirst, nullptr), 6U);
        EXPECT_EQ(value, 5);
        EXPECT_EQ(platform.logTexts(0), (Texts{"Invalid input params", "Invalid input params"}));
        EXPECT_EQ(platform.callTexts(), Texts{});
    }
}

TEST_F(StationWalk, SnapshotEndsAtTheListOfAnAccessPointWithoutStations) {
    for (const char* name : {"wlEnblSsid", "status", "apAlias", "SSIDReference", "wlHide", "WMMCapability",
                             "UAPSDCapability", "wlDisableWme", "wlWmeApsd"}) {
        platform.setVariable(1, 2, name, "1");
    }
    platform.setVariable(1, 2, "numStations", "0");
    GuardedBlock context(sizeof(WiFiAccessPointContext));
    EXPECT_EQ(WiFiAccessPointInstanceGet(context.get(), 11), 1U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"There is no station associated on AP[11]", "Impl call failed, result 1",
                                           "Get failed, result 1"}));
    EXPECT_FALSE(platform.logged(3, "WiFiAccessPointMaxAssociatedDevicesGet Enter"));
    EXPECT_TRUE(context.intact());
}

// --- Beacon rate

class BeaconRate : public scripted::PlatformTest {
  protected:
    std::string read(const char* units, const char* band) {
        platform.forget();
        platform.setVariable(1, 0, "wlBand", band);
        platform.setVariable(1, 2, "wlBeaconRate", units);
        GuardedBlock buffer(32);
        buffer.write(0, std::string(32, '\0'));
        EXPECT_EQ(WiFiAccessPointBeaconRateGet(11, buffer.text(), 32), 0U);
        EXPECT_TRUE(buffer.intact());
        return buffer.text();
    }
};

TEST_F(BeaconRate, IsNamedFromItsUnits) {
    const std::pair<const char*, const char*> rates[] = {
        {"2", "1Mbps"},   {"4", "2Mbps"}, {"11", "5.5Mbps"}, {"12", "6Mbps"}, {"22", "11Mbps"}, {"24", "12Mbps"},
        {"48", "24Mbps"}, {"36", ""},     {"1", ""},         {"3", ""},       {"-1", ""},       {"4294967295", ""}};
    for (const char* band : {"1", "2"}) {
        for (const auto& [units, name] : rates) {
            EXPECT_EQ(read(units, band), name) << units;
            EXPECT_TRUE(platform.logged(2, "BeaconRate[" + std::string(name) + "]"));
        }
    }
}

TEST_F(BeaconRate, DefaultsByTheBand) {
    EXPECT_EQ(read("0", "1"), "6Mbps");
    EXPECT_TRUE(platform.logged(2, "wlBand[1]"));
    EXPECT_EQ(read("0", "2"), "1Mbps");
    EXPECT_EQ(read("0", "0"), "1Mbps");
    EXPECT_EQ(read("0", ""), "1Mbps");
    EXPECT_TRUE(platform.logged(2, "wlBand[0]"));
    EXPECT_EQ(read("0", "11"), "1Mbps");
}

TEST_F(BeaconRate, TakesTheBandFromTheRadiosFirstInterface) {
    EXPECT_EQ(read("0", "1"), "6Mbps");
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get"}),
              (Texts{"wlcsm_mngr_get(1, 0, \"wlBand\")", "wlcsm_mngr_ext_get(1, 2, \"wlBeaconRate\")"}));
}

TEST_F(BeaconRate, SaysBandRateAndFailure) {
    const auto lines = [this] {
        Texts texts;
        for (const auto& line : platform.logs()) {
            if (line.file == "wifi/QuorvelWiFiAccessPointImpl") {
                EXPECT_EQ(line.function, "WiFiAccessPointBeaconRateGetImpl");
                texts.push_back(std::to_string(line.level) + " " + line.text);
            }
        }
        return texts;
    };
    EXPECT_EQ(read("22", "2"), "11Mbps");
    EXPECT_EQ(lines(), (Texts{"2 wlBand[2]", "2 BeaconRate[11Mbps]"}));
    platform.removeVariable(1, 2, "wlBeaconRate");
    platform.forget();
    char buffer[32] = {};
    EXPECT_EQ(WiFiAccessPointBeaconRateGet(11, buffer, sizeof buffer), 1U);
    EXPECT_EQ(lines(), (Texts{"2 wlBand[2]", "0 Quorvel_P_WiFiWlcsmMngrGet WIFIACCESSPOINT_BEACONRATE fail"}));
}

TEST_F(BeaconRate, ReadsWithoutABand) {
    platform.setVariable(0, 0, "wlBeaconRate", "0");
    char buffer[32] = {};
    EXPECT_EQ(WiFiAccessPointBeaconRateGet(1, buffer, sizeof buffer), 0U);
    EXPECT_STREQ(buffer, "1Mbps");
}

TEST_F(BeaconRate, LeavesTheBufferForARateWithoutName) {
    platform.setVariable(0, 0, "wlBeaconRate", "36");
    char buffer[33] = "as it was";
    EXPECT_EQ(WiFiAccessPointBeaconRateGet(1, buffer, 32), 0U);
    EXPECT_STREQ(buffer, "as it was");
    GuardedBlock unterminated(32);
    EXPECT_EQ(WiFiAccessPointBeaconRateGet(1, unterminated.text(), 32), 0U);
    EXPECT_EQ(platform.formatOf("BeaconRate[" + std::string(32, '\xEE') + "]"), "BeaconRate[%s]");
}

TEST_F(BeaconRate, FailsWhenTheManagerDoes) {
    platform.setVariable(0, 0, "wlBand", "1");
    GuardedBlock buffer(32);
    EXPECT_EQ(WiFiAccessPointBeaconRateGet(1, buffer.text(), 32), 1U);
    EXPECT_TRUE(platform.logged(0, "Quorvel_P_WiFiWlcsmMngrGet WIFIACCESSPOINT_BEACONRATE fail"));
    EXPECT_EQ(buffer.bytes(0, 32), std::string(32, '\xEE'));
    platform.forget();
    EXPECT_EQ(WiFiAccessPointBeaconRateGet(25, buffer.text(), 32), 6U);
    EXPECT_TRUE(platform.logged(0, "Quorvel_P_WiFiWlcsmMngrGet WIFIACCESSPOINT_BEACONRATE fail"));
    EXPECT_TRUE(platform.logged(0, "Impl call failed, result 6"));
}

TEST_F(BeaconRate, NeverWritesBeyondTheBuffer) {
    platform.setVariable(0, 0, "wlBeaconRate", "11");
    for (std::uint32_t size = 0; size <= 8; ++size) {
        GuardedBlock buffer(size);
        EXPECT_EQ(WiFiAccessPointBeaconRateGetImpl(1, buffer.text(), size), 0U);
        EXPECT_TRUE(buffer.intact()) << size;
    }
}

}  // namespace

}  // namespace quorvel
