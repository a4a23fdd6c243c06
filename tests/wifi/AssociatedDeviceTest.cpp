#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/wifi/DataModel.h"
#include "tests/wifi/StationRecord.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiAccessPointAssociatedDeviceImpl.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Contexts.h"

// Associated devices: fields of the manager's station record.

namespace quorvel {

namespace {

using datamodel::Parameter;
using scripted::GuardedBlock;
using scripted::StationRecord;
using Texts = std::vector<std::string>;

constexpr char kMac[] = "00:11:22:33:44:55";

struct NumberField {
    const char* stem;
    std::size_t offset;   // in the record
    std::size_t context;  // in the context
};

const NumberField kNumbers[] = {
    {"WiFiAccessPointAssociatedDeviceAuthenticationState", 98, 149},
    {"WiFiAccessPointAssociatedDeviceLastDataDownlinkRate", 108, 152},
    {"WiFiAccessPointAssociatedDeviceLastDataUplinkRate", 112, 156},
    {"WiFiAccessPointAssociatedDeviceSignalStrength", 100, 160},
    {"WiFiAccessPointAssociatedDeviceRetransmissions", 116, 164},
    {"WiFiAccessPointAssociatedDeviceActive", 99, 168},
    {"WiFiAccessPointAssociatedDeviceSnr", 120, 172},
    {"WiFiAccessPointAssociatedDeviceOperBandwidth", 188, 240},
};

class AssociatedDevice : public scripted::PlatformTest {
  protected:
    AssociatedDevice() {
        platform.setVariable(1, 2, "numStations", "3");
        // Each byte differs, so that a field read one byte off has another value.
        std::string bytes;
        for (std::size_t n = 0; n < StationRecord::kSize; ++n) {
            bytes.push_back(static_cast<char>(n + 1));
        }
        station = StationRecord(bytes).text(0, std::string(kMac) + '\0');
        setStation();
    }
    void setStation() {
        platform.setVariable(1, 2, "wlStaInfo_1", station.bytes());
    }
    static std::vector<Parameter> parameters() {
        return datamodel::parametersOf("WiFiAccessPointAssociatedDevice");
    }
    // Bytes of the smallest output.
    static std::size_t size(const Parameter& parameter) {
        return parameter.width();
    }
    Texts failureOf(const Parameter& parameter, std::uint32_t ap, std::uint32_t dev, std::uint32_t expected) {
        platform.forget();
        GuardedBlock out(size(parameter));
        EXPECT_EQ(parameter.get(ap, dev, out.get(), parameter.capacity), expected);
        EXPECT_EQ(out.bytes(0, out.size()), std::string(out.size(), '\xEE'));
        Texts lines;
        for (const auto& line : platform.logs()) {
            if (line.level == 0 && line.file == "wifi/QuorvelWiFiAccessPointAssociatedDeviceImpl") {
                lines.push_back(line.text);
                // The fetch logs its failure, then its caller does.
                const bool ofGetter = line.text.find("Invalid") == 0 || line.text.find("Quorvel_P_") == 0;
                EXPECT_EQ(line.function, ofGetter ? parameter.getterName() + "Impl"
                                                  : "Quorvel_P_GetWiFiAccessPointAssociatedDeviceList")
                    << line.text;
            }
        }
        EXPECT_TRUE(platform.logged(0, "Impl call failed, result " + std::to_string(expected)));
        return lines;
    }
    StationRecord station;
};

TEST_F(AssociatedDevice, ReadsEachNumberAtItsPlace) {
    for (const NumberField& field : kNumbers) {
        SCOPED_TRACE(field.stem);
        const Parameter& parameter = datamodel::parameter(field.stem);
        platform.forget();
        GuardedBlock out(parameter.width());
        EXPECT_EQ(parameter.get(11, 2, out.get(), 0), 0U);
        EXPECT_EQ(out.bytes(0, out.size()), station.bytes().substr(field.offset, out.size()));
        EXPECT_TRUE(out.intact());
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_ext_get", "wlcsm_mngr_get"}),
                  (Texts{"wlcsm_mngr_ext_get(1, 2, \"numStations\")", "wlcsm_mngr_get(1, 2, \"wlStaInfo_1\")"}));
        for (const auto& call : platform.calls()) {
            if (call.name == "wlcsm_mngr_get") {
                EXPECT_TRUE(call.lockHeld);
            }
        }
    }
}

TEST_F(AssociatedDevice, SignalStrengthIsSigned) {
    station.number(100, std::int32_t{-71});
    setStation();
    std::int32_t signal = 0;
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceSignalStrengthGet(11, 2, &signal), 0U);
    EXPECT_EQ(signal, -71);
}

TEST_F(AssociatedDevice, GivesAsManyBytesOfTheAddressAsTheBufferHas) {
    GuardedBlock exact(17);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceMACAddressGet(11, 2, exact.text(), 17), 0U);
    EXPECT_EQ(exact.bytes(0, 17), kMac);
    EXPECT_TRUE(exact.intact());
    GuardedBlock roomy(32);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceMACAddressGet(11, 2, roomy.text(), 32), 0U);
    EXPECT_EQ(roomy.bytes(0, 32), station.bytes().substr(0, 32));  // and what follows in the record
    EXPECT_TRUE(roomy.intact());
    GuardedBlock huge(4096);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceMACAddressGet(11, 2, huge.text(), 4096), 0U);
    EXPECT_EQ(huge.bytes(0, StationRecord::kSize), station.bytes());
    EXPECT_TRUE(huge.intact());
    platform.forget();
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceMACAddressGet(11, 2, exact.text(), 16), 8U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Value out of range"});
    EXPECT_EQ(platform.callTexts(), Texts{});
}

TEST_F(AssociatedDevice, GivesTheStandardWithinItsField) {
    for (const std::size_t length : {0U, 2U, 63U, 64U}) {
        station.text(124, std::string(length, 's') + std::string(64 - length, '\0'));
        setStation();
        GuardedBlock out(64);
        EXPECT_EQ(WiFiAccessPointAssociatedDeviceOperStandardGet(11, 2, out.text(), 64), 0U);
        EXPECT_EQ(out.bytes(0, length), std::string(length, 's'));
        if (length < 64) {
            EXPECT_EQ(out.at<char>(length), '\0');
        }
        EXPECT_TRUE(out.intact());
    }
    GuardedBlock roomy(100);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceOperStandardGet(11, 2, roomy.text(), 100), 0U);
    EXPECT_EQ(roomy.bytes(0, 64), std::string(64, 's'));
    EXPECT_NE(roomy.at<char>(64), '\xBD');  // the record's next byte stays there
    EXPECT_TRUE(roomy.intact());
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceOperStandardGet(11, 2, roomy.text(), 63), 8U);
}

TEST_F(AssociatedDevice, RefusesAccessPointZeroBeforeAskingTheManager) {
    for (const Parameter& parameter : parameters()) {
        SCOPED_TRACE(parameter.stem);
        EXPECT_EQ(failureOf(parameter, 0, 1, 6),
                  Texts{"Invalid accessPointInstance[0], accessPointInstance should start from 1."});
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_ext_get", "wlcsm_mngr_get"}), Texts{});
    }
}

TEST_F(AssociatedDevice, RefusesADeviceBeyondTheCount) {
    for (const Parameter& parameter : parameters()) {
        SCOPED_TRACE(parameter.stem);
        EXPECT_EQ(failureOf(parameter, 11, 4, 1),
                  (Texts{"associatedDeviceInstance[4] is bigger then the AssociatedDeviceNumberOfEntries[3]",
                         "Quorvel_P_GetWiFiAccessPointAssociatedDeviceList Fail accessPointInstance[11] "
                         "associatedDeviceInstance[4]"}));
        EXPECT_EQ(platform.callCount("wlcsm_mngr_get"), 0U);
    }
}

TEST_F(AssociatedDevice, FailsWithoutACount) {
    platform.removeVariable(1, 2, "numStations");
    for (const std::uint32_t ap : {11U, 25U}) {
        for (const Parameter& parameter : parameters()) {
            EXPECT_EQ(failureOf(parameter, ap, 1, 1),
                      (Texts{"WiFiAccessPointAssociatedDeviceNumberOfEntriesGetImpl Fail. ",
                             "Quorvel_P_GetWiFiAccessPointAssociatedDeviceList Fail accessPointInstance[" +
                                 std::to_string(ap) + "] associatedDeviceInstance[1]"}));
        }
    }
}

TEST_F(AssociatedDevice, ZeroAsksForThePlaceBeforeTheFirst) {
    platform.setVariable(1, 2, "wlStaInfo_-1", StationRecord("ff:ee:dd:cc:bb:aa").bytes());
    char mac[18] = {};
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceMACAddressGet(11, 0, mac, sizeof mac), 0U);
    EXPECT_STREQ(mac, "ff:ee:dd:cc:bb:aa");
    platform.setVariable(1, 2, "numStations", "0");
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceMACAddressGet(11, 0, mac, sizeof mac), 0U);
}

TEST_F(AssociatedDevice, IsAllZerosWhenItLeavesBetweenCountAndRecord) {
    platform.removeVariable(1, 2, "wlStaInfo_1");
    for (const Parameter& parameter : parameters()) {
        GuardedBlock out(size(parameter));
        EXPECT_EQ(parameter.get(11, 2, out.get(), parameter.capacity), 0U);
        EXPECT_EQ(out.at<char>(0), '\0') << parameter.stem;
        EXPECT_TRUE(out.intact());
    }
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(AssociatedDevice, FetchTellsCountAndRecord) {
    GuardedBlock record(1024);
    std::uint32_t count = 0;
    EXPECT_EQ(Quorvel_P_GetWiFiAccessPointAssociatedDeviceList(11, 2, &count, record.get()), 0U);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(record.bytes(0, StationRecord::kSize), station.bytes());
    EXPECT_TRUE(record.intact());
    // The last device is not beyond the count, the one behind it is.
    EXPECT_EQ(Quorvel_P_GetWiFiAccessPointAssociatedDeviceList(11, 3, &count, record.get()), 0U);
    EXPECT_EQ(Quorvel_P_GetWiFiAccessPointAssociatedDeviceList(11, 4, &count, record.get()), 1U);
    EXPECT_EQ(count, 3U);
}

TEST_F(AssociatedDevice, HasNothingToApply) {
    GuardedBlock context(276);
    ASSERT_EQ(WiFiAccessPointAssociatedDeviceInitContext(context.get()), 0U);
    platform.forget();
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceApplyContext(context.get(), 11, 2), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set", "wlcsm_mngr_get", "Quorvel_ContextInit"}),
              Texts{"Quorvel_ContextInit(ctx, 276)"});
    GuardedBlock stats(168);
    ASSERT_EQ(WiFiAccessPointAssociatedDeviceStatsInitContext(stats.get()), 0U);
    platform.forget();
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceStatsApplyContext(stats.get(), 11, 2), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set", "wlcsm_mngr_get", "Quorvel_ContextInit"}),
              Texts{"Quorvel_ContextInit(ctx, 168)"});
}

TEST_F(AssociatedDevice, SnapshotTakesAllFieldsFromOneRecord) {
    for (std::uint32_t n = 0; n < 10; ++n) {
        station.number(196 + 4 * std::size_t{n}, 1000U << n);
    }
    station.text(124, std::string(64, 's'));
    setStation();
    GuardedBlock context(276);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 11, 2), 0U);
    EXPECT_EQ(context.bytes(132, 17), kMac);
    for (const NumberField& field : kNumbers) {
        const std::size_t width = datamodel::parameter(field.stem).width();
        EXPECT_EQ(context.bytes(field.context, width), station.bytes().substr(field.offset, width)) << field.stem;
    }
    EXPECT_EQ(context.bytes(176, 64), std::string(64, 's'));
    const std::uint32_t counters[] = {1000, 2000, 4000, 8000 + 16000, 32000 + 64000, 128000, 256000, 512000};
    for (std::size_t n = 0; n < 8; ++n) {
        EXPECT_EQ(context.at<std::uint32_t>(244 + 4 * n), counters[n]) << n;
    }
    EXPECT_TRUE(context.intact());
    EXPECT_EQ(platform.callCount("wlcsm_mngr_get"), 1U);
    EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 1U);
}

TEST_F(AssociatedDevice, SnapshotAddsCountersModuloTheirWidth) {
    station.number(208, 0xFFFFFFFFU).number(212, 2U);
    setStation();
    GuardedBlock context(276);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 11, 2), 0U);
    EXPECT_EQ(context.at<std::uint32_t>(244 + 4 * 3), 1U);
}

TEST_F(AssociatedDevice, SnapshotBeyondTheCountFailsWithTheFetch) {
    GuardedBlock context(276);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 11, 4), 1U);
    EXPECT_TRUE(
        platform.logged(0, "associatedDeviceInstance[4] is bigger then the AssociatedDeviceNumberOfEntries[3]"));
    EXPECT_EQ(context.bytes(132, 144), std::string(144, '\0'));
    for (const auto& line : platform.logs()) {
        if (line.text.find("Quorvel_P_") == 0) {
            EXPECT_EQ(line.function, "WiFiAccessPointAssociatedDeviceInstanceGetImpl");
        }
    }
    EXPECT_TRUE(platform.logged(0, "Impl call failed, result 1"));
    platform.forget();
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 0, 1), 6U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"Invalid accessPointInstance[0], accessPointInstance should start from 1.",
                                           "Impl call failed, result 6"}));
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_ext_get", "wlcsm_mngr_get"}), Texts{});
    EXPECT_TRUE(context.intact());
}

TEST_F(AssociatedDevice, StatisticsLeaveTheValue) {
    platform.forget();
    for (const Parameter& parameter : datamodel::parametersOf("WiFiAccessPointAssociatedDeviceStats")) {
        std::uint32_t value = 77;
        EXPECT_EQ(parameter.get(11, 2, &value, 0), 0U) << parameter.stem;
        EXPECT_EQ(value, 77U) << parameter.stem;
    }
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get"}), Texts{});
    EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 9U);
    GuardedBlock context(168);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceStatsInstanceGet(context.get(), 11, 2), 0U);
    EXPECT_EQ(context.bytes(132, 36), std::string(36, '\0'));
    EXPECT_TRUE(context.intact());
}

}  // namespace

}  // namespace quorvel
