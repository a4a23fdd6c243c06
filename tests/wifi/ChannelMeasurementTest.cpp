#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tests/wifi/LogLines.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Implementations.h"

// Channel measurements: binary records, byte for byte.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using scripted::logLines;
using scripted::PlatformTest;
using Texts = std::vector<std::string>;

constexpr std::uint32_t kMetricsSize = 1056;
constexpr std::uint32_t kStatisticsSize = 80;
constexpr std::uint32_t kTextMinimum = 2048;
constexpr char kSource[] = "wifi/QuorvelWiFiRadioImpl";

// A record as bytes; numbers are stored little-endian.
class Bytes {
  public:
    explicit Bytes(std::size_t size) : bytes_(size, '\0') {}
    Bytes& put(std::size_t offset, std::uint64_t value, std::size_t width = 4) {
        for (std::size_t i = 0; i < width; ++i) {
            bytes_[offset + i] = static_cast<char>(value >> (8 * i));
        }
        return *this;
    }
    Bytes& number(std::size_t offset, std::int32_t value) {
        return put(offset, static_cast<std::uint32_t>(value));
    }
    Bytes& neighbour(std::size_t n, std::uint8_t lastOctet, std::uint32_t width, std::int32_t rssi) {
        const std::size_t offset = 28 + 16 * n;
        for (std::size_t i = 0; i < 5; ++i) {
            bytes_[offset + i] = static_cast<char>(0xA0 + i);
        }
        bytes_[offset + 5] = static_cast<char>(lastOctet);
        bytes_[offset + 6] = 'p';  // padding moves with its entry
        return put(offset + 8, width).number(offset + 12, rssi);
    }
    [[nodiscard]] const std::string& text() const {
        return bytes_;
    }

  private:
    std::string bytes_;
};

class ChannelMeasurement : public PlatformTest {
  protected:
    void setDwell(const std::string& milliseconds) {
        platform.setVariable(1, 0, "dcsDwelltime", milliseconds);
    }

    Texts scans() {
        return platform.callTexts({"wlcsm_mngr_ci_scan_start"});
    }

    Texts managerCalls() {
        return platform.callTexts({"wlcsm_mngr_ext_get", "wlcsm_mngr_ci_scan_start", "sleep",
                                   "wlcsm_mngr_ci_scanresults", "wlcsm_mngr_chanim_stats", "wlcsm_mngr_channelstats",
                                   "wlcsm_mngr_getRadioChannelStats2"});
    }

    // The RSSI of the first `count` neighbours.
    [[nodiscard]] static std::vector<std::int32_t> rssi(const GuardedBlock& record, std::size_t count) {
        std::vector<std::int32_t> values;
        for (std::size_t n = 0; n < count; ++n) {
            values.push_back(record.at<std::int32_t>(28 + 16 * n + 12));
        }
        return values;
    }
};

TEST_F(ChannelMeasurement, ScansForTheDwellTimeWhenItIsInRange) {
    const struct {
        const char* dwell;
        const char* passed;
    } rows[] = {
        {"20", "40, 40"}, {"29", "40, 40"}, {"30", "30, 0"},  {"31", "31, 1"},  {"40", "40, 10"}, {"45", "45, 15"},
        {"50", "50, 20"}, {"51", "40, 40"}, {"60", "40, 40"}, {"-1", "40, 40"}, {"", "40, 40"},   {"0", "40, 40"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.dwell);
        platform.forget();
        setDwell(row.dwell);
        GuardedBlock metrics(kMetricsSize);
        GuardedBlock statistics(kStatisticsSize);
        metrics.write(0, Bytes(kMetricsSize).put(0, 36).text());
        statistics.write(0, Bytes(kStatisticsSize).put(0, 157).text());
        EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, metrics.text(), kMetricsSize), 0U);
        EXPECT_EQ(WiFiRadioChannelStatsGetImpl(2, statistics.text(), kStatisticsSize), 0U);
        EXPECT_EQ(scans(), (Texts{std::string("wlcsm_mngr_ci_scan_start(1, 36, ") + row.passed + ")",
                                  std::string("wlcsm_mngr_ci_scan_start(1, 157, ") + row.passed + ")"}));
    }
}

TEST_F(ChannelMeasurement, ScansForFortyMillisecondsWhenTheDwellTimeCannotBeRead) {
    GuardedBlock metrics(kMetricsSize);
    metrics.write(0, Bytes(kMetricsSize).put(0, 11).text());
    EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, metrics.text(), kMetricsSize), 0U);
    EXPECT_EQ(scans(), Texts{"wlcsm_mngr_ci_scan_start(1, 11, 40, 40)"});
}

TEST_F(ChannelMeasurement, OfMetricsScansThenWaitsThenReadsResultsAndStatistics) {
    setDwell("45");
    GuardedBlock metrics(kTextMinimum);
    metrics.write(0, Bytes(kMetricsSize).put(0, 36).put(4, 1).text());
    EXPECT_EQ(WiFiRadioDcsChannelMetricsGet(2, metrics.text(), kTextMinimum), 0U);
    EXPECT_EQ(managerCalls(),
              (Texts{"wlcsm_mngr_ext_get(1, 0, \"dcsDwelltime\")", "wlcsm_mngr_ci_scan_start(1, 36, 45, 15)",
                     "sleep(1)", "wlcsm_mngr_ci_scanresults(1, out)", "wlcsm_mngr_chanim_stats(1, out)"}));
    for (const auto& call : platform.calls()) {
        if (call.name.rfind("wlcsm_", 0) == 0 || call.name == "sleep") {
            EXPECT_TRUE(call.lockHeld) << call.text();
        }
    }
}

TEST_F(ChannelMeasurement, OfMetricsIsNotStoppedByAScanThatDoesNotStart) {
    platform.fail("wlcsm_mngr_ci_scan_start");
    GuardedBlock metrics(kMetricsSize);
    metrics.write(0, std::string(kMetricsSize, '\0'));
    EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, metrics.text(), kMetricsSize), 0U);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_chanim_stats"), 1U);
}

TEST_F(ChannelMeasurement, TakesAnyResultButNoughtForAFailure) {
    for (const char* call : {"wlcsm_mngr_ci_scanresults", "wlcsm_mngr_chanim_stats", "wlcsm_mngr_channelstats",
                             "wlcsm_mngr_getRadioChannelStats2"}) {
        SCOPED_TRACE(call);
        platform.answer(call, -1);
        GuardedBlock record(kMetricsSize);
        const bool ofMetrics = std::strstr(call, "scanresults") != nullptr || std::strstr(call, "chanim") != nullptr;
        EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, record.text(), kMetricsSize), ofMetrics ? 1U : 0U);
        EXPECT_EQ(WiFiRadioChannelStatsGetImpl(2, record.text(), kStatisticsSize),
                  std::strstr(call, "_channelstats") != nullptr ? 1U : 0U);
        EXPECT_EQ(WiFiRadioChannelStatsGet2Impl(2, record.get(), 24), std::strstr(call, "Stats2") != nullptr ? 1U : 0U);
        platform.succeed(call);
    }
}

TEST_F(ChannelMeasurement, OfMetricsHandsTheRecordOverSortedByRssi) {
    const Bytes scanned = Bytes(kMetricsSize)
                              .put(0, 36)
                              .put(4, 1)
                              .number(8, -93)
                              .put(12, 0x1122334455667788, 8)
                              .number(20, 17)
                              .number(24, 20)
                              .neighbour(0, 1, 20, -70)
                              .neighbour(1, 2, 40, -40)
                              .neighbour(2, 3, 80, -55)
                              .neighbour(3, 9, 160, -10)  // beyond the count
                              .put(1052, 3);
    platform.setRecord("wlcsm_mngr_ci_scanresults", scanned.text());
    GuardedBlock metrics(kMetricsSize);
    EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, metrics.text(), kMetricsSize), 0U);
    Bytes expected = scanned;
    expected.neighbour(0, 2, 40, -40).neighbour(1, 3, 80, -55).neighbour(2, 1, 20, -70);
    EXPECT_TRUE(metrics.bytes(0, kMetricsSize) == expected.text());
    EXPECT_TRUE(metrics.intact());
    const std::string start = "2 WiFiRadioDcsChannelMetricsGetImpl: ";
    EXPECT_EQ(
        logLines(platform, kSource),
        (Texts{start + "*** DcsChannelMetrics result for channel 36 ***\n",
               start + "noise: -93 utilization: 17  txpower: 20 (dbm)\n", start + "\n*** channel_rssi_count 3 ***\n",
               start + "index 0: BSSID: a0:a1:a2:a3:a4:02 ap_channelWidth: 40 RSSI: -40\n",
               start + "index 1: BSSID: a0:a1:a2:a3:a4:03 ap_channelWidth: 80 RSSI: -55\n",
               start + "index 2: BSSID: a0:a1:a2:a3:a4:01 ap_channelWidth: 20 RSSI: -70\n"}));
}

TEST_F(ChannelMeasurement, OfMetricsSortsAnyNumberOfNeighbours) {
    const std::vector<std::vector<std::int32_t>> rows = {
        {},
        {-50},
        {-50, -50},
        {-60, -50},
        {-50, -60},
        {-90, -80, -70, -60, -50},
        {-50, -60, -70, -80, -40},
        {5, -5, 0, INT32_MIN, INT32_MAX},
    };
    for (const auto& values : rows) {
        Bytes scanned(kMetricsSize);
        for (std::size_t n = 0; n < values.size(); ++n) {
            scanned.neighbour(n, 0, 20, values[n]);
        }
        scanned.put(1052, values.size());
        platform.setRecord("wlcsm_mngr_ci_scanresults", scanned.text());
        GuardedBlock metrics(kMetricsSize);
        EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, metrics.text(), kMetricsSize), 0U);
        std::vector<std::int32_t> sorted = values;
        std::sort(sorted.rbegin(), sorted.rend());
        EXPECT_EQ(rssi(metrics, values.size()), sorted);
        EXPECT_EQ(metrics.at<std::uint32_t>(1052), values.size());
    }
}

TEST_F(ChannelMeasurement, OfMetricsKeepsTheOrderOfEqualNeighbours) {
    Bytes scanned(kMetricsSize);
    scanned.neighbour(0, 1, 20, -50).neighbour(1, 2, 20, -40).neighbour(2, 3, 20, -50).neighbour(3, 4, 20, -40);
    scanned.put(1052, 4);
    platform.setRecord("wlcsm_mngr_ci_scanresults", scanned.text());
    GuardedBlock metrics(kMetricsSize);
    EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, metrics.text(), kMetricsSize), 0U);
    std::string order;
    for (std::size_t n = 0; n < 4; ++n) {
        order += static_cast<char>('0' + metrics.at<std::uint8_t>(28 + 16 * n + 5));
    }
    EXPECT_EQ(order, "2413");
}

TEST_F(ChannelMeasurement, OfMetricsFillsAllSixtyFourEntriesAndBelievesNoGreaterCount) {
    for (const std::uint32_t count : {64U, 65U, 0xFFFFFFFFU}) {
        platform.forget();
        Bytes scanned(kMetricsSize);
        for (std::size_t n = 0; n < 64; ++n) {
            scanned.neighbour(n, static_cast<std::uint8_t>(n), 20, -100 + static_cast<std::int32_t>(n));
        }
        scanned.put(1052, count);
        platform.setRecord("wlcsm_mngr_ci_scanresults", scanned.text());
        GuardedBlock metrics(kMetricsSize);
        EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, metrics.text(), kMetricsSize), 0U);
        EXPECT_EQ(rssi(metrics, 64).front(), -37);
        EXPECT_EQ(rssi(metrics, 64).back(), -100);
        EXPECT_EQ(metrics.at<std::uint32_t>(1052), count);
        EXPECT_TRUE(metrics.intact());
        EXPECT_TRUE(platform.logged(2, "index 63: BSSID: a0:a1:a2:a3:a4:00 ap_channelWidth: 20 RSSI: -100\n"));
    }
}

TEST_F(ChannelMeasurement, OfMetricsFailsWithoutScanResults) {
    platform.fail("wlcsm_mngr_ci_scanresults");
    GuardedBlock metrics(kMetricsSize);
    EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, metrics.text(), kMetricsSize), 1U);
    EXPECT_EQ(metrics.bytes(0, kMetricsSize), std::string(kMetricsSize, '\xEE'));
    EXPECT_EQ(logLines(platform, kSource),
              Texts{"0 WiFiRadioDcsChannelMetricsGetImpl: DcsChannelMetrics fail to get scan results"});
    EXPECT_EQ(platform.callCount("wlcsm_mngr_chanim_stats"), 0U);
}

TEST_F(ChannelMeasurement, OfMetricsFailsWithoutStatisticsThoughTheResultsAreCopied) {
    const Bytes scanned = Bytes(kMetricsSize).put(0, 36).neighbour(0, 1, 20, -70).neighbour(1, 2, 20, -40).put(1052, 2);
    platform.setRecord("wlcsm_mngr_ci_scanresults", scanned.text());
    platform.fail("wlcsm_mngr_chanim_stats");
    GuardedBlock metrics(kMetricsSize);
    EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, metrics.text(), kMetricsSize), 1U);
    EXPECT_TRUE(metrics.bytes(0, kMetricsSize) == scanned.text());  // not sorted either
    EXPECT_EQ(logLines(platform, kSource),
              Texts{"0 WiFiRadioDcsChannelMetricsGetImpl: DcsChannelMetrics fail to get chanim_stats"});
}

TEST_F(ChannelMeasurement, OfMetricsAcceptsARecordAnywhereInMemory) {
    const Bytes scanned = Bytes(kMetricsSize).neighbour(0, 1, 20, -70).neighbour(1, 2, 20, -40).put(1052, 2);
    platform.setRecord("wlcsm_mngr_ci_scanresults", scanned.text());
    GuardedBlock block(kMetricsSize + 1);
    EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, block.text() + 1, kMetricsSize), 0U);
    EXPECT_EQ(block.at<std::int32_t>(1 + 28 + 12), -40);
    EXPECT_TRUE(block.intact());
}

TEST_F(ChannelMeasurement, WithoutRecordFailsAndTellsItAsTraffic) {
    EXPECT_EQ(WiFiRadioDcsChannelMetricsGetImpl(2, nullptr, kMetricsSize), 1U);
    EXPECT_EQ(logLines(platform, kSource), Texts{"2 WiFiRadioDcsChannelMetricsGetImpl: DcsChannelMetrics is NULL"});
    platform.forget();
    EXPECT_EQ(WiFiRadioChannelStatsGetImpl(2, nullptr, kStatisticsSize), 1U);
    EXPECT_EQ(logLines(platform, kSource), Texts{"2 WiFiRadioChannelStatsGetImpl: ChannelStats is NULL"});
    platform.forget();
    EXPECT_EQ(WiFiRadioChannelStatsGet2Impl(2, nullptr, 24), 1U);
    EXPECT_EQ(logLines(platform, kSource), Texts{"2 WiFiRadioChannelStatsGet2Impl: ChannelStats is NULL"});
    EXPECT_EQ(platform.logTexts(0), Texts{});
    EXPECT_EQ(platform.callTexts(), Texts{});
}

TEST_F(ChannelMeasurement, WithoutRecordIsRefusedByTheFrontEnds) {
    EXPECT_EQ(WiFiRadioDcsChannelMetricsGet(2, nullptr, kTextMinimum), 6U);
    EXPECT_EQ(WiFiRadioChannelStatsGet(2, nullptr, kTextMinimum), 6U);
    EXPECT_EQ(WiFiRadioChannelStatsGet2(2, nullptr, 24), 6U);
    EXPECT_EQ(platform.callTexts(), Texts{});
}

TEST_F(ChannelMeasurement, OfStatisticsScansThenWaitsThenReadsTheCounters) {
    setDwell("30");
    const Bytes measured = Bytes(kStatisticsSize)
                               .put(0, 44)
                               .put(4, 1)
                               .number(8, -95)
                               .number(24, 33)
                               .put(32, 10000000000U, 8)
                               .put(40, 2000000002U, 8)
                               .put(48, 300, 8)
                               .put(56, 0xFFFFFFFFFFFFFFFFU, 8)
                               .put(64, 500, 8)
                               .put(72, 600, 8);
    platform.setRecord("wlcsm_mngr_channelstats", measured.text());
    GuardedBlock statistics(kTextMinimum);
    statistics.write(0, Bytes(kStatisticsSize).put(0, 44).put(4, 1).text());
    EXPECT_EQ(WiFiRadioChannelStatsGet(2, statistics.text(), kTextMinimum), 0U);
    EXPECT_EQ(managerCalls(),
              (Texts{"wlcsm_mngr_ext_get(1, 0, \"dcsDwelltime\")", "wlcsm_mngr_ci_scan_start(1, 44, 30, 0)", "sleep(1)",
                     "wlcsm_mngr_channelstats(1, out)"}));
    EXPECT_TRUE(statistics.bytes(0, kStatisticsSize) == measured.text());
    EXPECT_EQ(statistics.bytes(kStatisticsSize, 8), std::string(8, '\xEE'));
    const std::string start = "2 WiFiRadioChannelStatsGetImpl: ";
    EXPECT_EQ(logLines(platform, kSource),
              (Texts{start + "*** Channelstats result for channel 44 ***\n", start + "noise: -95 utilization: 33 \n",
                     start + "ch_utilization_total: 10000000000 ch_utilization_busy: 2000000002 \n",
                     start + "ch_utilization_busy_tx: 300 ch_utilization_busy_rx: 18446744073709551615 \n",
                     start + "ch_utilization_busy_self: 500 ch_utilization_busy_ext: 600 \n"}));
    for (const auto& call : platform.calls()) {
        if (call.name.rfind("wlcsm_", 0) == 0 || call.name == "sleep") {
            EXPECT_TRUE(call.lockHeld) << call.text();
        }
    }
}

TEST_F(ChannelMeasurement, OfStatisticsFailsWithoutResults) {
    platform.fail("wlcsm_mngr_channelstats");
    GuardedBlock statistics(kStatisticsSize);
    EXPECT_EQ(WiFiRadioChannelStatsGetImpl(2, statistics.text(), kStatisticsSize), 1U);
    EXPECT_EQ(logLines(platform, kSource), Texts{"0 WiFiRadioChannelStatsGetImpl: Channelstats fail to get results"});
    EXPECT_EQ(statistics.bytes(0, kStatisticsSize), std::string(kStatisticsSize, '\xEE'));
}

TEST_F(ChannelMeasurement, OfTheCurrentChannelReadsSixNumbers) {
    const Bytes measured = Bytes(24).put(0, 5180).number(4, -96).number(8, -90).number(12, -33).put(16, 41).put(20, 7);
    platform.setRecord("wlcsm_mngr_getRadioChannelStats2", measured.text());
    GuardedBlock record(24);
    EXPECT_EQ(WiFiRadioChannelStatsGet2(2, record.get(), 24), 0U);
    EXPECT_EQ(managerCalls(), Texts{"wlcsm_mngr_getRadioChannelStats2(1, out, 24)"});
    EXPECT_TRUE(record.bytes(0, 24) == measured.text());
    const std::string start = "2 WiFiRadioChannelStatsGet2Impl: ";
    EXPECT_EQ(logLines(platform, kSource),
              (Texts{start + "*** Channelstats result\n", start + "ch_Frequency: 5180\n",
                     start + "ch_NoiseFloor: -96\n", start + "ch_Non80211Noise: -90\n",
                     start + "ch_Max80211Rssi: -33\n", start + "ch_ObssUtil: 41\n", start + "ch_SelfBssUtil: 7\n"}));
    for (const auto& call : platform.calls()) {
        EXPECT_TRUE(call.lockHeld || call.name.rfind("QuorvelOs", 0) == 0) << call.text();
    }
}

TEST_F(ChannelMeasurement, OfTheCurrentChannelReadsNoMoreThanTheCallersRecord) {
    platform.setRecord("wlcsm_mngr_getRadioChannelStats2", std::string(24, '\1'));
    for (const std::uint32_t length : {0U, 8U, 23U}) {
        std::vector<char> exact(length);  // on the heap, where the sanitizer sees its end
        EXPECT_EQ(WiFiRadioChannelStatsGet2(2, exact.empty() ? reinterpret_cast<char*>(&exact) : exact.data(), length),
                  0U);
    }
}

TEST_F(ChannelMeasurement, OfTheCurrentChannelFailsWithoutResults) {
    platform.fail("wlcsm_mngr_getRadioChannelStats2");
    GuardedBlock record(24);
    EXPECT_EQ(WiFiRadioChannelStatsGet2(2, record.get(), 24), 1U);
    EXPECT_EQ(logLines(platform, kSource), Texts{"0 WiFiRadioChannelStatsGet2Impl: Channelstats2 fail to get results"});
    EXPECT_EQ(record.bytes(0, 24), std::string(24, '\xEE'));
}

}  // namespace

}  // namespace quorvel
