#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tests/wifi/LogLines.h"
#include "tests/wifi/NeighbourWorld.h"

// The store of neighbour results: one sequence over three radios.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using scripted::logLines;
using scripted::NeighbourTest;
using Texts = std::vector<std::string>;

constexpr char kSource[] = "wifi/QuorvelWiFiNeighboringDiagnosticsResultImpl";

class NeighbourResults : public NeighbourTest {
  protected:
    // Networks named after their channels.
    void networks(std::uint32_t radio, std::initializer_list<std::uint32_t> channels) {
        std::string text;
        for (const std::uint32_t channel : channels) {
            text += "SSID: \"n" + std::to_string(channel) + "\"\nChannel: " + std::to_string(channel) + "\n\n";
        }
        scan(radio, text);
    }

    // The channels of the whole sequence, read until there is no further result.
    static std::vector<std::uint32_t> sequence() {
        std::vector<std::uint32_t> channels;
        std::uint32_t channel = 0;
        for (std::uint32_t k = 1; WiFiNeighboringDiagnosticsResultChannelGet(k, &channel) == 0; ++k) {
            channels.push_back(channel);
        }
        return channels;
    }
};

using Channels = std::vector<std::uint32_t>;

TEST_F(NeighbourResults, AreNumberedThroughAllRadios) {
    networks(1, {1, 6, 11});
    networks(2, {36, 40});
    networks(3, {149});
    EXPECT_EQ(sequence(), (Channels{1, 6, 11, 36, 40, 149}));
    EXPECT_STREQ(at(4).ssid, "n36");
}

TEST_F(NeighbourResults, SkipRadiosWithoutAny) {
    networks(3, {149, 153});
    EXPECT_EQ(sequence(), (Channels{149, 153}));
    networks(1, {1});
    EXPECT_EQ(sequence(), (Channels{1, 149, 153}));
    networks(1, {});
    networks(3, {});
    networks(2, {36});
    EXPECT_EQ(sequence(), Channels{36});
}

TEST_F(NeighbourResults, AreReplacedByTheRadiosNextScan) {
    networks(1, {1, 6, 11});
    networks(2, {36});
    networks(1, {13});
    EXPECT_EQ(sequence(), (Channels{13, 36}));
}

TEST_F(NeighbourResults, BeyondTheLastAreRefused) {
    networks(1, {1});
    networks(2, {36});
    for (const std::uint32_t k : {0U, 3U, 1000U, 0x7FFFFFFFU}) {
        platform.forget();
        std::uint32_t channel = 99;
        EXPECT_EQ(WiFiNeighboringDiagnosticsResultChannelGet(k, &channel), 1U);
        EXPECT_EQ(channel, 99U);
        EXPECT_EQ(logLines(platform, kSource),
                  (Texts{"0 QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry: Invalid resultInstance[" +
                             std::to_string(k) + "]",
                         "0 WiFiNeighboringDiagnosticsResultChannelGetImpl: WiFiNeighboring Diagnostics Result Get "
                         "Entry Fail"}));
        NeighboringWiFiResult* record = nullptr;
        EXPECT_EQ(QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(k, &record), 6U);
    }
}

TEST_F(NeighbourResults, ServeTheirNumbers) {
    networks(1, {1});
    NeighboringWiFiResult* record = nullptr;
    ASSERT_EQ(QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(1, &record), 0U);
    const struct {
        std::uint32_t (*get)(std::uint32_t, std::uint32_t*);
        std::uint32_t* member;
    } rows[] = {
        {WiFiNeighboringDiagnosticsResultModeGet, &record->mode},
        {WiFiNeighboringDiagnosticsResultChannelGet, &record->channel},
        {WiFiNeighboringDiagnosticsResultSecurityModeEnabledGet, &record->securityModeEnabled},
        {WiFiNeighboringDiagnosticsResultEncryptionModeGet, &record->encryptionMode},
        {WiFiNeighboringDiagnosticsResultOperatingFrequencyBandGet, &record->operatingFrequencyBand},
        {WiFiNeighboringDiagnosticsResultOperatingChannelBandwidthGet, &record->operatingChannelBandwidth},
        {WiFiNeighboringDiagnosticsResultBeaconPeriodGet, &record->beaconPeriod},
        {WiFiNeighboringDiagnosticsResultDTIMPeriodGet, &record->dtimPeriod},
        {WiFiNeighboringDiagnosticsResultQBSSUtilizationGet, &record->qbssUtilization},
    };
    std::uint32_t distinct = 70;
    for (const auto& row : rows) {
        *row.member = ++distinct;
    }
    distinct = 70;
    for (const auto& row : rows) {
        std::uint32_t value = 0;
        EXPECT_EQ(row.get(1, &value), 0U);
        EXPECT_EQ(value, ++distinct);
        value = 5;
        EXPECT_EQ(row.get(2, &value), 1U);
        EXPECT_EQ(value, 5U);
    }
    record->signalStrength = -47;
    record->noise = -91;
    std::int32_t strength = 0;
    std::int32_t noise = 0;
    EXPECT_EQ(WiFiNeighboringDiagnosticsResultSignalStrengthGet(1, &strength), 0U);
    EXPECT_EQ(WiFiNeighboringDiagnosticsResultNoiseGet(1, &noise), 0U);
    EXPECT_EQ(strength, -47);
    EXPECT_EQ(noise, -91);
    EXPECT_EQ(WiFiNeighboringDiagnosticsResultSignalStrengthGet(2, &strength), 1U);
    EXPECT_EQ(WiFiNeighboringDiagnosticsResultNoiseGet(2, &noise), 1U);
}

TEST_F(NeighbourResults, ServeTheirTextsWithinTheCallersBuffer) {
    networks(1, {1});
    NeighboringWiFiResult* record = nullptr;
    ASSERT_EQ(QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(1, &record), 0U);
    const struct {
        std::uint32_t (*get)(std::uint32_t, char*, std::uint32_t);
        char* field;
        std::uint32_t size;
        std::uint32_t minimum;
    } rows[] = {
        {WiFiNeighboringDiagnosticsResultRadioGet, record->radio, 32, 32},
        {WiFiNeighboringDiagnosticsResultSSIDGet, record->ssid, 32, 32},
        {WiFiNeighboringDiagnosticsResultBSSIDGet, record->bssid, 20, 17},
        {WiFiNeighboringDiagnosticsResultSupportedStandardsGet, record->supportedStandards, 64, 64},
        {WiFiNeighboringDiagnosticsResultOperatingStandardsGet, record->operatingStandards, 256, 256},
        {WiFiNeighboringDiagnosticsResultBasicDataTransferRatesGet, record->basicDataTransferRates, 256, 256},
        {WiFiNeighboringDiagnosticsResultSupportedDataTransferRatesGet, record->supportedDataTransferRates, 256, 256},
    };
    char letter = 'a';
    for (const auto& row : rows) {
        memset(row.field, letter++, row.size);  // no terminator in any of them
    }
    letter = 'a';
    for (const auto& row : rows) {
        SCOPED_TRACE(letter);
        const std::string whole(row.size, letter++);
        GuardedBlock roomy(row.size + 1);
        EXPECT_EQ(row.get(1, roomy.text(), row.size + 1), 0U);
        EXPECT_EQ(std::string(roomy.text()), whole);  // the field, and nothing of the next one
        GuardedBlock smallest(row.minimum);
        EXPECT_EQ(row.get(1, smallest.text(), row.minimum), 0U);
        EXPECT_TRUE(smallest.intact());
        EXPECT_EQ(smallest.bytes(0, row.minimum - 1), whole.substr(0, row.minimum - 1));
        EXPECT_EQ(row.get(1, smallest.text(), row.minimum - 1), 8U);
        GuardedBlock untouched(row.minimum);
        EXPECT_EQ(row.get(2, untouched.text(), row.minimum), 1U);
        EXPECT_EQ(untouched.bytes(0, row.minimum), std::string(row.minimum, '\xEE'));
    }
}

TEST_F(NeighbourResults, ShortTextsAreTerminated) {
    networks(1, {1});
    GuardedBlock buffer(32);
    EXPECT_EQ(WiFiNeighboringDiagnosticsResultSSIDGet(1, buffer.text(), 32), 0U);
    EXPECT_STREQ(buffer.text(), "n1");
}

TEST_F(NeighbourResults, ApplyHasNothingToWrite) {
    GuardedBlock block(1092);
    ASSERT_EQ(WiFiNeighboringDiagnosticsResultInitContext(block.get()), 0U);
    platform.forget();
    EXPECT_EQ(WiFiNeighboringDiagnosticsResultApplyContextImpl(block.get(), 1), 0U);
    EXPECT_EQ(platform.callTexts(), Texts{});
}

TEST_F(NeighbourResults, StoreGivesClearedRecordsAndFreesTheOldOnes) {
    NeighboringWiFiResult* first = nullptr;
    ASSERT_EQ(WiFiNeighboringDiagnosticsResultInit(0, 2, &first), 0U);
    ASSERT_NE(first, nullptr);
    memset(first, 'x', 2 * sizeof *first);
    const std::size_t blocks = platform.liveBlocks();
    NeighboringWiFiResult* second = nullptr;
    ASSERT_EQ(WiFiNeighboringDiagnosticsResultInit(0, 3, &second), 0U);
    EXPECT_EQ(platform.liveBlocks(), blocks) << "the first array is not freed";
    const std::string bytes(reinterpret_cast<const char*>(second), 3 * sizeof *second);
    EXPECT_TRUE(bytes == std::string(3 * 1092, '\0'));
}

TEST_F(NeighbourResults, AnotherScanFreesTheOnesBefore) {
    const std::size_t blocks = platform.liveBlocks();
    networks(1, {1, 6});
    EXPECT_EQ(platform.liveBlocks(), blocks + 1);
    networks(1, {11});
    EXPECT_EQ(platform.liveBlocks(), blocks + 1);
    networks(1, {});
    EXPECT_EQ(platform.liveBlocks(), blocks);
}

TEST_F(NeighbourResults, StoreReportsThatThereIsNoMemory) {
    NeighboringWiFiResult* array = nullptr;
    platform.fail("calloc");
    platform.fail("malloc");
    const std::uint32_t result = WiFiNeighboringDiagnosticsResultInit(1, 5, &array);
    platform.succeed("calloc");
    platform.succeed("malloc");
    EXPECT_EQ(result, 1U);
    EXPECT_EQ(logLines(platform, kSource), Texts{"0 WiFiNeighboringDiagnosticsResultInit: Memory allocation fail."});
}

TEST_F(NeighbourResults, ReleaseSparesTheThirdRadiosResults) {
    networks(1, {1});
    networks(2, {36});
    networks(3, {149});
    const std::size_t blocks = platform.liveBlocks();
    WiFiNeighboringDiagnosticsResultUnInit();
    EXPECT_EQ(platform.liveBlocks(), blocks - 2);
    NeighboringWiFiResult* record = nullptr;
    ASSERT_EQ(QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(3, &record), 0U);
    EXPECT_EQ(record->channel, 149U);
    // Freed results are not handed out, and a second release frees nothing.
    EXPECT_EQ(QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(1, &record), 6U);
    EXPECT_EQ(QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(2, &record), 6U);
    WiFiNeighboringDiagnosticsResultUnInit();
    networks(1, {6});
    EXPECT_EQ(at(1).channel, 6U);
}

TEST_F(NeighbourResults, RecordsHaveTheirLayout) {
    EXPECT_EQ(sizeof(NeighboringWiFiResult), 1092U);
    EXPECT_EQ(offsetof(NeighboringWiFiResult, radio), 132U);
    EXPECT_EQ(offsetof(NeighboringWiFiResult, supportedStandards), 240U);
    EXPECT_EQ(offsetof(NeighboringWiFiResult, basicDataTransferRates), 572U);
    EXPECT_EQ(offsetof(NeighboringWiFiResult, dtimPeriod), 1084U);
}

}  // namespace

}  // namespace quorvel
