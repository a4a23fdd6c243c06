#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/wifi/StationRecord.h"
#include "tests/wifi/platform/FreshProcess.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"

// The reads of an access point that have no row in the parameter table.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using scripted::runFresh;
using scripted::StationRecord;
using Texts = std::vector<std::string>;

constexpr char kMac[] = "00:11:22:33:44:55";

class ExtraReads : public scripted::PlatformTest {
  protected:
    // The count's output, filled with a pattern.
    GuardedBlock out{8};
    std::uint64_t* count() {
        return static_cast<std::uint64_t*>(out.get());
    }
    void setAssociationCount(const std::string& text) {
        platform.setVariable(1, 2, std::string("wlStaAssocCnt_") + kMac, text);
    }
    void expectUnderLock(const char* call) const {
        std::size_t made = 0;
        for (const auto& recorded : platform.calls()) {
            if (recorded.name == call) {
                EXPECT_TRUE(recorded.lockHeld) << recorded.text();
                ++made;
            }
        }
        EXPECT_GT(made, 0U) << call;
    }
};

struct Direction {
    std::uint32_t (*read)(std::uint32_t ap, const char* mac, std::uint32_t w1, std::uint32_t w2, std::uint64_t* out);
    const char* name;
    const char* number;
};

const Direction kDirections[] = {
    {WiFiAccessPointRxStatsResultGet, "WiFiAccessPointRxStatsResultGet", "1"},
    {WiFiAccessPointTxStatsResultGet, "WiFiAccessPointTxStatsResultGet", "0"},
};

TEST_F(ExtraReads, PassTheWordsOfAStatisticsResultThrough) {
    setAssociationCount("12");
    for (const Direction& direction : kDirections) {
        platform.forget();
        EXPECT_EQ(direction.read(11, kMac, 7, 0xFFFFFFFFU, count()), 0U);
        EXPECT_EQ(*count(), 12U);
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_clientRxTxStatsResult", "wlcsm_mngr_get", "wlcsm_mngr_ext_get"}),
                  (Texts{"wlcsm_mngr_clientRxTxStatsResult(1, 2, \"" + std::string(kMac) + "\", " + direction.number +
                             ", 7, 4294967295)",
                         "wlcsm_mngr_get(1, 2, \"wlStaAssocCnt_" + std::string(kMac) + "\")"}));
        expectUnderLock("wlcsm_mngr_clientRxTxStatsResult");
        expectUnderLock("wlcsm_mngr_get");
        EXPECT_TRUE(platform.logged(3, std::string(direction.name) + " Enter"));
        EXPECT_TRUE(platform.logged(3, std::string(direction.name) + " DONE"));
        EXPECT_TRUE(out.intact());
    }
}

TEST_F(ExtraReads, ClearTheStatisticsResultWhenTheManagerFails) {
    setAssociationCount("12");
    for (const std::int64_t failure : {1, -1}) {
        platform.answer("wlcsm_mngr_clientRxTxStatsResult", failure);
        for (const Direction& direction : kDirections) {
            platform.forget();
            *count() = 99;
            EXPECT_EQ(direction.read(11, kMac, 0, 0, count()), 1U);
            EXPECT_EQ(*count(), 0U);
            EXPECT_EQ(platform.logTexts(0),
                      (Texts{"wlcsm_mngr_clientRxTxStatsResult fail", "Impl call failed, result 1"}));
            EXPECT_EQ(platform.callCount("wlcsm_mngr_get"), 0U);
        }
    }
}

TEST_F(ExtraReads, ParseTheAssociationCountAsASignedNumber) {
    const std::pair<const char*, std::uint64_t> texts[] = {{"0", 0},
                                                           {"1234567", 1234567},
                                                           {"-3", static_cast<std::uint64_t>(-3)},
                                                           {"", 0},
                                                           {"many", 0},
                                                           {" 8x", 8},
                                                           {"12345678", 12345678},
                                                           {"123456789", 12345678},  // eight characters count
                                                           {"-2345678901", static_cast<std::uint64_t>(-2345678)}};
    for (const auto& [text, number] : texts) {
        setAssociationCount(text);
        EXPECT_EQ(WiFiAccessPointRxStatsResultGet(11, kMac, 0, 0, count()), 0U);
        EXPECT_EQ(*count(), number) << text;
    }
}

TEST_F(ExtraReads, ReadNoAssociationCountAsZero) {
    *count() = 99;
    EXPECT_EQ(WiFiAccessPointTxStatsResultGet(11, kMac, 0, 0, count()), 0U);
    EXPECT_EQ(*count(), 0U);
    *count() = 99;
    std::string record(1024, '\0');
    EXPECT_EQ(WiFiAccessPointStatsGet(11, kMac, record.data(), count()), 0U);
    EXPECT_EQ(*count(), 0U);
}

TEST_F(ExtraReads, BoundTheNameOfTheAssociationCount) {
    const std::string mac(200, 'm');
    EXPECT_EQ(WiFiAccessPointRxStatsResultGet(1, mac.c_str(), 0, 0, count()), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get"}),
              Texts{"wlcsm_mngr_get(0, 0, \"wlStaAssocCnt_" + std::string(63 - 14, 'm') + "\")"});
}

TEST_F(ExtraReads, FillTheStationsRecord) {
    const std::string station = StationRecord(kMac).number(StationRecord::kRssi, -50).bytes();
    platform.setRecord("wlcsm_mngr_sta_info", station);
    setAssociationCount("3");
    GuardedBlock record(StationRecord::kSize);
    EXPECT_EQ(WiFiAccessPointStatsGet(11, kMac, record.get(), count()), 0U);
    EXPECT_EQ(record.bytes(0, StationRecord::kSize), station);
    EXPECT_TRUE(record.intact());
    EXPECT_EQ(*count(), 3U);
    EXPECT_TRUE(out.intact());
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_sta_info", "wlcsm_mngr_get"}),
              (Texts{"wlcsm_mngr_sta_info(1, 2, \"" + std::string(kMac) + "\", out)",
                     "wlcsm_mngr_get(1, 2, \"wlStaAssocCnt_" + std::string(kMac) + "\")"}));
    expectUnderLock("wlcsm_mngr_sta_info");
}

TEST_F(ExtraReads, FailWithoutAStationsRecord) {
    platform.fail("wlcsm_mngr_sta_info");
    setAssociationCount("3");
    GuardedBlock record(StationRecord::kSize);
    *count() = 99;
    EXPECT_EQ(WiFiAccessPointStatsGet(11, kMac, record.get(), count()), 1U);
    EXPECT_EQ(*count(), 0U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"wlcsm_mngr_sta_info fail", "Impl call failed, result 1"}));
    EXPECT_EQ(platform.callCount("wlcsm_mngr_get"), 0U);
}

TEST_F(ExtraReads, FillTheSsidsStatus) {
    platform.setRecord("wlcsm_mngr_ssid_info", "status of the SSID");
    GuardedBlock buffer(64);
    EXPECT_EQ(WiFiAccessPointSsidNameStatusGet(11, buffer.get()), 0U);
    EXPECT_EQ(buffer.bytes(0, 18), "status of the SSID");
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_ssid_info"}), Texts{"wlcsm_mngr_ssid_info(1, 2, out)"});
    expectUnderLock("wlcsm_mngr_ssid_info");
    platform.forget();
    platform.fail("wlcsm_mngr_ssid_info");
    EXPECT_EQ(WiFiAccessPointSsidNameStatusGet(11, buffer.get()), 1U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"wlcsm_mngr_ssid_info fail", "Impl call failed, result 1"}));
}

TEST_F(ExtraReads, RefuseNoOutputWithoutLocking) {
    std::uint64_t number = 0;
    char record[1024] = {};
    EXPECT_EQ(WiFiAccessPointRxStatsResultGet(1, kMac, 0, 0, nullptr), 6U);
    EXPECT_EQ(WiFiAccessPointTxStatsResultGet(1, kMac, 0, 0, nullptr), 6U);
    EXPECT_EQ(WiFiAccessPointRxStatsResultGet(1, nullptr, 0, 0, &number), 6U);
    EXPECT_EQ(WiFiAccessPointTxStatsResultGet(1, nullptr, 0, 0, &number), 6U);
    EXPECT_EQ(WiFiAccessPointStatsGet(1, kMac, record, nullptr), 6U);
    EXPECT_EQ(WiFiAccessPointStatsGet(1, kMac, nullptr, &number), 6U);
    EXPECT_EQ(WiFiAccessPointStatsGet(1, nullptr, record, &number), 6U);
    EXPECT_EQ(WiFiAccessPointSsidNameStatusGet(1, nullptr), 6U);
    EXPECT_EQ(WiFiAccessPointMacModeGet(1, nullptr), 6U);
    EXPECT_EQ(platform.logCount(0, "Invalid input params"), 9U);
    EXPECT_EQ(platform.callTexts(), Texts{});
}

TEST_F(ExtraReads, ReturnTheLocksFailure) {
    platform.answer("QuorvelOsMutexLock", 71);
    std::uint64_t number = 0;
    std::uint32_t mode = 0;
    char record[1024] = {};
    EXPECT_EQ(WiFiAccessPointRxStatsResultGet(1, kMac, 0, 0, &number), 71U);
    EXPECT_EQ(WiFiAccessPointTxStatsResultGet(1, kMac, 0, 0, &number), 71U);
    EXPECT_EQ(WiFiAccessPointStatsGet(1, kMac, record, &number), 71U);
    EXPECT_EQ(WiFiAccessPointSsidNameStatusGet(1, record), 71U);
    EXPECT_EQ(WiFiAccessPointMacModeGet(1, &mode), 71U);
    EXPECT_EQ(platform.logCount(0, "Lock failed, result 71"), 5U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_clientRxTxStatsResult", "wlcsm_mngr_sta_info", "wlcsm_mngr_ssid_info",
                                  "popen", "QuorvelOsMutexUnlock"}),
              Texts{});
}

struct ExtraRead {
    std::uint32_t (*read)(std::uint32_t ap);
    std::string name;
    std::string failing;  // the call it fails with
    std::string failure;  // its message
    Texts calls;          // for an access point that no radio has
};

// The received (direction 1) or sent (0) statistics result.
template <auto read>
ExtraRead statisticsResult(const char* name, const char* direction) {
    return {
        [](std::uint32_t ap) {
            std::uint64_t out = 0;
            return read(ap, kMac, 1, 2, &out);
        },
        name,
        "wlcsm_mngr_clientRxTxStatsResult",
        "wlcsm_mngr_clientRxTxStatsResult fail",
        {std::string("wlcsm_mngr_clientRxTxStatsResult(4294967294, 2, \"00:11:22:33:44:55\", ") + direction + ", 1, 2)",
         "wlcsm_mngr_get(4294967294, 2, \"wlStaAssocCnt_00:11:22:33:44:55\")"}};
}

const ExtraRead kExtraReads[] = {
    statisticsResult<WiFiAccessPointRxStatsResultGet>("WiFiAccessPointRxStatsResultGet", "1"),
    statisticsResult<WiFiAccessPointTxStatsResultGet>("WiFiAccessPointTxStatsResultGet", "0"),
    {[](std::uint32_t ap) {
         char record[1024] = {};
         std::uint64_t out = 0;
         return WiFiAccessPointStatsGet(ap, kMac, record, &out);
     },
     "WiFiAccessPointStatsGet",
     "wlcsm_mngr_sta_info",
     "wlcsm_mngr_sta_info fail",
     {"wlcsm_mngr_sta_info(4294967294, 2, \"00:11:22:33:44:55\", out)",
      "wlcsm_mngr_get(4294967294, 2, \"wlStaAssocCnt_00:11:22:33:44:55\")"}},
    {[](std::uint32_t ap) {
         char buffer[1024] = {};
         return WiFiAccessPointSsidNameStatusGet(ap, buffer);
     },
     "WiFiAccessPointSsidNameStatusGet",
     "wlcsm_mngr_ssid_info",
     "wlcsm_mngr_ssid_info fail",
     {"wlcsm_mngr_ssid_info(4294967294, 2, out)"}},
    {[](std::uint32_t ap) {
         std::uint32_t mode = 0;
         return WiFiAccessPointMacModeGet(ap, &mode);
     },
     "WiFiAccessPointMacModeGet",
     "popen",
     "popen fail fail",
     {"popen(\"wl -i wl-2.2 macmode\", \"r\")"}},
};

TEST_F(ExtraReads, SayWhatTheyDo) {
    for (const ExtraRead& extra : kExtraReads) {
        SCOPED_TRACE(extra.name);
        platform.reset();
        EXPECT_EQ(extra.read(11), 0U);
        EXPECT_EQ(platform.logTexts(3),
                  (Texts{extra.name + " Enter", "WiFiSystemAccessPointRadioInstanceGet DONE", extra.name + " DONE"}));
        platform.forget();
        platform.fail(extra.failing);
        EXPECT_EQ(extra.read(11), 1U);
        Texts lines;
        for (const auto& line : platform.logs()) {
            const bool own = line.function == extra.name;
            if (own) {
                EXPECT_EQ(line.file, "wifi/QuorvelWiFiAccessPoint");
            } else if (line.level == 0) {
                EXPECT_EQ(line.function, extra.name + "Impl");
                EXPECT_EQ(line.file, "wifi/QuorvelWiFiAccessPointImpl");
            }
            if (own || line.level == 0) {
                lines.push_back(std::to_string(line.level) + " " + line.text);
            }
        }
        EXPECT_EQ(lines, (Texts{"3 " + extra.name + " Enter", "0 " + extra.failure, "0 Impl call failed, result 1"}));
        EXPECT_EQ(platform.callCount("QuorvelOsMutexUnlock"), 1U);
    }
}

TEST_F(ExtraReads, ReturnTheUnlocksFailure) {
    for (const ExtraRead& extra : kExtraReads) {
        SCOPED_TRACE(extra.name);
        platform.reset();
        platform.answer("QuorvelOsMutexUnlock", 55);
        EXPECT_EQ(extra.read(11), 55U);
        EXPECT_EQ(platform.logTexts(0), Texts{"Unlock failed, result 55"});
        EXPECT_FALSE(platform.logged(3, extra.name + " DONE"));
    }
}

// The manager is called all the same; its answer decides.
TEST_F(ExtraReads, PassAnAccessPointThatNoRadioHasOn) {
    for (const ExtraRead& extra : kExtraReads) {
        SCOPED_TRACE(extra.name);
        platform.reset();
        EXPECT_EQ(extra.read(27), 0U);
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_clientRxTxStatsResult", "wlcsm_mngr_sta_info", "wlcsm_mngr_ssid_info",
                                      "wlcsm_mngr_get", "popen"}),
                  extra.calls);
    }
}

TEST_F(ExtraReads, FollowAnAccessPointToItsRadio) {
    EXPECT_TRUE(runFresh([] {
        auto& world = scripted::Platform::instance();
        ASSERT_EQ(WiFiSystemAccessPointDelete(24), 0U);
        ASSERT_EQ(WiFiSystemAccessPointCreate(3, 11), 0U);
        char buffer[64] = {};
        EXPECT_EQ(WiFiAccessPointSsidNameStatusGet(11, buffer), 0U);
        std::uint32_t mode = 0;
        EXPECT_EQ(WiFiAccessPointMacModeGet(11, &mode), 0U);
        // Uses its number within the radio, whatever the slot.
        EXPECT_EQ(world.callTexts({"wlcsm_mngr_ssid_info", "popen"}),
                  (Texts{"wlcsm_mngr_ssid_info(2, 2, out)", "popen(\"wl -i wl2.2 macmode\", \"r\")"}));
    }));
}

TEST_F(ExtraReads, AskTheToolForTheMacMode) {
    const std::pair<std::uint32_t, const char*> interfaces[] = {
        {1, "wl0"}, {2, "wl0.1"}, {8, "wl0.7"}, {9, "wl1"}, {11, "wl1.2"}, {16, "wl1.7"}, {17, "wl2"}, {24, "wl2.7"}};
    for (const auto& [ap, interface] : interfaces) {
        const std::string command = "wl -i " + std::string(interface) + " macmode";
        platform.setCommandOutput(command, "2\n1\n");
        platform.forget();
        GuardedBlock mode(4);
        EXPECT_EQ(WiFiAccessPointMacModeGet(ap, static_cast<std::uint32_t*>(mode.get())), 0U);
        EXPECT_EQ(mode.at<std::uint32_t>(0), 2U);
        EXPECT_TRUE(mode.intact());
        EXPECT_EQ(platform.callTexts({"popen"}), Texts{"popen(\"" + command + "\", \"r\")"});
        expectUnderLock("popen");
    }
}

TEST_F(ExtraReads, ParseTheFirstLineOfTheMacMode) {
    const std::pair<std::string, std::uint32_t> outputs[] = {{"1\n", 1},
                                                             {"0\n", 0},
                                                             {"2", 2},
                                                             {"10", 10},
                                                             {"", 0},
                                                             {"\n2\n", 0},
                                                             {"error\n", 0},
                                                             {"-1\n", 0xFFFFFFFF},
                                                             {std::string(255, '0') + "9\n", 9},
                                                             {std::string(256, '0') + "9\n", 0},
                                                             {std::string(255, '0') + "12\n", 1}};
    for (const auto& [output, number] : outputs) {
        platform.setCommandOutput("wl -i wl0 macmode", output);
        std::uint32_t mode = 77;
        EXPECT_EQ(WiFiAccessPointMacModeGet(1, &mode), 0U);
        EXPECT_EQ(mode, number) << output;
    }
}

TEST_F(ExtraReads, FailWhenTheToolCannotBeStarted) {
    platform.fail("popen");
    std::uint32_t mode = 77;
    EXPECT_EQ(WiFiAccessPointMacModeGet(1, &mode), 1U);
    EXPECT_EQ(mode, 77U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"popen fail fail", "Impl call failed, result 1"}));
}

}  // namespace

}  // namespace quorvel
