#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Contexts.h"

// The values that a radio's setters accept, and the fields that take them.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using scripted::PlatformTest;

// A setter, its node and field, and the node's number written out.
template <typename... Value>
struct Row {
    std::uint32_t (*set)(void*, std::uint32_t, Value...);
    std::uint32_t node;
    std::size_t field;
    std::uint32_t number;
};

// With the limits of its range, both accepted.
struct RangeRow : Row<std::uint32_t> {
    std::uint32_t low;
    std::uint32_t high;
};

struct TextRow : Row<const char*, std::uint32_t> {
    std::uint32_t capacity;
};

#define ROW(name, number) \
    { WiFiRadio##name##Set, WiFiRadioNode::name, offsetof(WiFiRadioContext, name), number }

class RadioSetters : public PlatformTest {
  protected:
    RadioSetters() {
        (void)WiFiRadioInitContext(context.get());
    }

    // The nodes that are staged.
    std::vector<std::uint32_t> staged() {
        std::vector<std::uint32_t> nodes;
        for (std::uint32_t node = 0; node <= 65; ++node) {
            if (Quorvel_IsContextSetMap(context.get(), node) != 0) {
                nodes.push_back(node);
            }
        }
        return nodes;
    }

    // Everything but the host's header.
    [[nodiscard]] std::string fields() const {
        return context.bytes(QUORVEL_CONTEXT_HEADER_SIZE, sizeof(WiFiRadioContext) - QUORVEL_CONTEXT_HEADER_SIZE);
    }

    template <typename Value>
    void expectAccepted(const Row<Value>& row, Value value, std::size_t width) {
        SCOPED_TRACE("node " + std::to_string(row.number) + " value " + std::to_string(value));
        ASSERT_EQ(WiFiRadioInitContext(context.get()), 0U);
        std::string expected = fields();
        EXPECT_EQ(row.set(context.get(), 2, value), 0U);
        for (std::size_t i = 0; i < width; ++i) {
            expected[row.field - QUORVEL_CONTEXT_HEADER_SIZE + i] =
                static_cast<char>(static_cast<std::uint32_t>(value) >> (8 * i));
        }
        EXPECT_TRUE(fields() == expected);
        EXPECT_EQ(staged(), std::vector<std::uint32_t>{row.number});
        EXPECT_TRUE(context.intact());
    }

    // Each setter takes each of the values.
    template <typename Value, std::size_t count>
    void expectAllAccepted(const Row<Value> (&rows)[count], std::initializer_list<Value> values, std::size_t width) {
        for (const auto& row : rows) {
            EXPECT_EQ(row.node, row.number);
            for (const Value value : values) {
                expectAccepted(row, value, width);
            }
        }
    }

    void expectRefused(const Row<std::uint32_t>& row, std::uint32_t value) {
        SCOPED_TRACE("node " + std::to_string(row.number) + " value " + std::to_string(value));
        ASSERT_EQ(WiFiRadioInitContext(context.get()), 0U);
        platform.forget();
        const std::string before = fields();
        EXPECT_EQ(row.set(context.get(), 2, value), 8U);
        EXPECT_TRUE(platform.logged(0, "Value out of range"));
        EXPECT_TRUE(fields() == before);
        EXPECT_EQ(staged(), std::vector<std::uint32_t>{});
    }

    GuardedBlock context{sizeof(WiFiRadioContext)};
};

TEST_F(RadioSetters, OfFlagsTakeZeroAndOne) {
    const Row<std::uint32_t> rows[] = {
        ROW(Enable, 1),
        ROW(AutoChannelEnable, 15),
        ROW(IEEE80211hEnabled, 26),
        ROW(PacketAggregationEnable, 35),
        ROW(AirtimeSchedulerEnable, 40),
        ROW(ClearAirtimeSchedulerStationsList, 41),
        ROW(CtsProtectionEnable, 44),
        ROW(ObssCoexistenceEnable, 45),
        ROW(GreenfieldEnable, 51),
        ROW(Restart, 56),
        ROW(ResetToFactory, 57),
        ROW(AtfEnable, 64),
    };
    expectAllAccepted(rows, {0U, 1U}, 1);
    for (const auto& row : rows) {
        expectRefused(row, 2U);
        expectRefused(row, 256U);
        expectRefused(row, 0xFFFFFFFFU);
    }
}

TEST_F(RadioSetters, OfNumbersWithARangeTakeItsEndsAndNothingBeyond) {
    const RangeRow rows[] = {
        {ROW(OperatingChannelBandwidth, 19), 1, 5},
        {ROW(ExtensionChannel, 20), 1, 3},
        {ROW(RetryLimit, 29), 0, 7},
        {ROW(DcsDwelltime, 59), 30, 50},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.node, row.number);
        for (std::uint32_t value = row.low; value <= row.high; ++value) {
            expectAccepted(row, value, 4);
        }
        expectRefused(row, row.low - 1);
        expectRefused(row, row.high + 1);
        expectRefused(row, 0xFFFFFFFFU);
    }
}

TEST_F(RadioSetters, OfOtherNumbersTakeAnyValue) {
    const Row<std::uint32_t> rows[] = {
        ROW(Channel, 13),
        ROW(AutoChannelRefreshPeriod, 16),
        ROW(AutoChannelDwellTime, 17),
        ROW(FragmentationThreshold, 30),
        ROW(RTSThreshold, 31),
        ROW(LongRetryLimit, 32),
        ROW(BeaconPeriod, 33),
        ROW(DTIMPeriod, 34),
        ROW(TxChainMask, 48),
        ROW(RxChainMask, 49),
        ROW(pushRadioChannel, 61),
    };
    expectAllAccepted(rows, {0U, 1U, 0x80000000U, 0xFFFFFFFFU}, 4);
}

TEST_F(RadioSetters, OfSignedNumbersTakeAnyValue) {
    const Row<std::int32_t> rows[] = {
        ROW(MCS, 22),
        ROW(TransmitPower, 24),
        ROW(STBCMode, 46),
        ROW(BandSteeringBandUtilizationThreshold, 53),
        ROW(BandSteeringRSSIThreshold, 54),
        ROW(BandSteeringPhyRateThreshold, 55),
    };
    expectAllAccepted(rows, {0, -1, INT32_MIN, INT32_MAX}, 4);
}

TEST_F(RadioSetters, OfTextsTakeTheFieldsCapacityAndNothingMore) {
    const TextRow rows[] = {
        {ROW(Alias, 3), 64},
        {ROW(OperatingFrequencyBand, 8), 64},
        {ROW(OperatingStandards, 10), 64},
        {ROW(GuardInterval, 21), 64},
        {ROW(RadarThreshold, 27), 256},
        {ROW(RegulatoryDomain, 28), 12},
        {ROW(PreambleType, 36), 64},
        {ROW(BasicDataTransmitRates, 37), 64},
        {ROW(OperationalDataTransmitRates, 38), 64},
        {ROW(AutoChannelSelectionExclusionList, 42), 256},
        {ROW(AutoChannelSelectionPreferenceList, 43), 256},
        {ROW(AMSDUMode, 47), 4},
        {ROW(DcsChannelMetrics, 60), 2048},
        {ROW(pushRadioChannel2, 62), 2048},
        {{WiFiRadioChannelStatsSet, WiFiRadioNode::RadioChannelStats, offsetof(WiFiRadioContext, RadioChannelStats),
          65},
         2048},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("node " + std::to_string(row.number));
        EXPECT_EQ(row.node, row.number);
        ASSERT_EQ(WiFiRadioInitContext(context.get()), 0U);
        std::string expected = fields();
        const std::string text(row.capacity + 1, 'x');
        EXPECT_EQ(row.set(context.get(), 2, text.data(), row.capacity + 1), 8U);
        EXPECT_TRUE(fields() == expected);
        EXPECT_EQ(staged(), std::vector<std::uint32_t>{});
        // The whole field, and not the first byte of the next.
        EXPECT_EQ(row.set(context.get(), 2, text.data(), row.capacity), 0U);
        expected.replace(row.field - QUORVEL_CONTEXT_HEADER_SIZE, row.capacity, text, 0, row.capacity);
        EXPECT_TRUE(fields() == expected);
        EXPECT_EQ(staged(), std::vector<std::uint32_t>{row.number});
        // A shorter text clears the rest of the longer one.
        EXPECT_EQ(row.set(context.get(), 2, "ab", 2), 0U);
        expected.replace(row.field - QUORVEL_CONTEXT_HEADER_SIZE, row.capacity,
                         "ab" + std::string(row.capacity - 2, '\0'));
        EXPECT_TRUE(fields() == expected);
        EXPECT_EQ(row.set(context.get(), 2, nullptr, 2), 6U);
        EXPECT_TRUE(context.intact());
    }
}

#undef ROW

TEST_F(RadioSetters, KnowNodesUpToTheirLast) {
    EXPECT_EQ(WiFiRadioCheckContextNodeSet(context.get(), 65), 0U);
    EXPECT_FALSE(platform.logged(0, "Exceeded subnodes"));
    EXPECT_EQ(WiFiRadioCheckContextNodeSet(context.get(), 66), 0U);
    EXPECT_TRUE(platform.logged(0, "Exceeded subnodes"));
}

TEST_F(RadioSetters, ContextHasItsSize) {
    platform.forget();
    EXPECT_EQ(WiFiRadioInitContext(context.get()), 0U);
    EXPECT_EQ(platform.callTexts({"Quorvel_ContextInit"}),
              std::vector<std::string>{"Quorvel_ContextInit(ctx, " + std::to_string(sizeof(WiFiRadioContext)) + ")"});
}

}  // namespace

}  // namespace quorvel
