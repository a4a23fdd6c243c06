#include <gtest/gtest.h>
#include <quorvel.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

#include "host/ChannelRecords.h"
#include "tests/abi/PlainDataModel.h"
#include "wifi/QuorvelWiFiTable.h"
#include "wifi/model/Contexts.h"
#include "wifi/model/Mapping.h"
#include "wifi/records/NeighbourResult.h"
#include "wifi/records/NetDevStats.h"
#include "wifi/records/Station.h"

// The records that the library exchanges with the host and the manager, to the byte, on every platform, and the
// signatures that follow no pattern.

namespace quorvel {

namespace {

// The host's.
static_assert(sizeof(SpawnInfo) == 344 && sizeof(ProcessRecord) == 16);
static_assert(offsetof(SpawnInfo, program) == 0 && offsetof(SpawnInfo, arguments) == 64);
static_assert(offsetof(SpawnInfo, option320) == 320 && offsetof(SpawnInfo, option324) == 324);
static_assert(offsetof(SpawnInfo, option332) == 332 && offsetof(SpawnInfo, option333) == 333);

// The table's.
static_assert(sizeof(TableEntry) == 72 * sizeof(void*));
static_assert(sizeof(gQuorvelWiFiDataModelTable) == kParametersInTable * sizeof(TableEntry));
static_assert(sizeof(gQuorvelWiFiDataModelTableInfo) == 16);
static_assert(sizeof(MappingRow) == 4 * sizeof(void*));
static_assert(sizeof(AuthModePair) == 2 * sizeof(void*) && sizeof(authModeMapper) == 8 * sizeof(AuthModePair));
static_assert(sizeof(WpaEncryptionPair) == 2 * sizeof(void*) &&
              sizeof(wpaEncryptionMapper) == 3 * sizeof(WpaEncryptionPair));
static_assert(sizeof(notifySocketPath) == 19);

// The manager's.
static_assert(offsetof(StationInformation, authenticationState) == 98 && offsetof(StationInformation, active) == 99);
static_assert(offsetof(StationInformation, rssi) == 100 && offsetof(StationInformation, receiveRate) == 108);
static_assert(offsetof(StationInformation, transmitRate) == 112);
static_assert(offsetof(StationInformation, retransmissions) == 116);
static_assert(offsetof(StationInformation, snr) == 120 && offsetof(StationInformation, operStandard) == 124);
static_assert(offsetof(StationInformation, operBandwidth) == 188);
static_assert(sizeof(ChannelMetricsRecord) == 1056 && offsetof(ChannelMetricsRecord, neighbours) == 28);
static_assert(sizeof(ChannelNeighbour) == 16 && offsetof(ChannelNeighbour, rssi) == 12);
static_assert(offsetof(ChannelMetricsRecord, count) == 1052);
static_assert(sizeof(ChannelStatsRecord) == 80 && offsetof(ChannelStatsRecord, total) == 32);
static_assert(sizeof(ChannelStats2Record) == 24);

// The stores'.
static_assert(sizeof(NeighboringWiFiResult) == 1092 && sizeof(NetDevStats) == 192);
static_assert(offsetof(NetDevStats, rxBytes) == 128 && offsetof(NetDevStats, txBytes) == 160);
static_assert(offsetof(NetDevStats, txCompressed) == 188);

template <typename Function, typename Exact>
constexpr bool kIs = std::is_same_v<Function, Exact*>;
template <typename... Arguments>
using Returning = std::uint32_t(Arguments...);

static_assert(kIs<decltype(&WiFiCommitSettingsSet), Returning<>>);
static_assert(kIs<decltype(&WiFiRadioStatsApplyContext), Returning<void*, std::uint32_t, std::uint32_t>>);
static_assert(kIs<decltype(&WiFiRadioChannelStatsGet2), Returning<std::uint32_t, void*, std::uint32_t>>);
using StationRead = Returning<std::uint32_t, const char*, std::int32_t*>;
static_assert(kIs<decltype(&WiFiAccessPointAssociatedDeviceRSSIGet), StationRead>);
static_assert(kIs<decltype(&WiFiAccessPointAssociatedDeviceRxRateGet), StationRead>);
static_assert(kIs<decltype(&WiFiAccessPointAssociatedDeviceTxRateGet), StationRead>);
using ResultRead = Returning<std::uint32_t, const char*, std::uint32_t, std::uint32_t, std::uint64_t*>;
static_assert(kIs<decltype(&WiFiAccessPointRxStatsResultGet), ResultRead>);
static_assert(kIs<decltype(&WiFiAccessPointTxStatsResultGet), ResultRead>);
static_assert(kIs<decltype(&WiFiAccessPointStatsGet), Returning<std::uint32_t, const char*, void*, std::uint64_t*>>);
static_assert(kIs<decltype(&WiFiAccessPointSsidNameStatusGet), Returning<std::uint32_t, void*>>);
static_assert(kIs<decltype(&WiFiAccessPointMacModeGet), Returning<std::uint32_t, std::uint32_t*>>);
static_assert(kIs<decltype(&WiFiAccessPointWPSMethodSet), Returning<void*, std::uint32_t, const char*, std::uint32_t>>);
static_assert(kIs<decltype(&WiFiAccessPointWPSCancel), Returning<void*>>);

static_assert(kIs<decltype(&WiFiLock), Returning<>> && kIs<decltype(&WiFiUnlock), Returning<>>);
static_assert(kIs<decltype(&WifiSaveNvram), Returning<>> && kIs<decltype(&WiFiInit), Returning<>>);
static_assert(kIs<decltype(&WiFiUnInit), std::int32_t()>);
static_assert(kIs<decltype(&Quorvel_P_WiFiLaunchWldaemon), Returning<>>);
static_assert(kIs<decltype(&Quorvel_P_WiFiTerminateWldaemon), Returning<>>);
static_assert(kIs<decltype(&Quorvel_P_WiFiSetCurrentTimeAsStartTime), Returning<std::uint32_t>>);
static_assert(kIs<decltype(&Quorvel_P_WiFiGetTimeElapseFromStartTime), Returning<std::uint32_t, std::uint32_t*>>);
static_assert(
    kIs<decltype(&Quorvel_P_WiFiWlcsmMngrGet), std::int32_t(std::uint32_t, std::uint32_t, std::uint32_t, const void*,
                                                            void*, std::uint32_t, std::uint32_t, std::uint32_t)>);
static_assert(kIs<decltype(&Quorvel_P_WiFiApplyContext),
                  Returning<std::uint32_t, std::uint32_t, void*, const void*, std::uint32_t>>);

static_assert(kIs<decltype(&WiFiSystemStartStopSecurityDaemons), Returning<std::uint32_t, std::uint32_t>>);
static_assert(kIs<decltype(&WiFiSystemRadioInit), Returning<std::uint32_t>>);
static_assert(kIs<decltype(&WiFiSystemResetRadioToFactory), Returning<std::uint32_t>>);
static_assert(kIs<decltype(&WiFiSystemAccessPointDelete), Returning<std::uint32_t>>);
static_assert(kIs<decltype(&WiFiSystemAccessPointCreate), Returning<std::uint32_t, std::uint32_t>>);
static_assert(kIs<decltype(&WiFiSystemAccessPointRadioInstanceGet), Returning<std::uint32_t>>);
static_assert(kIs<decltype(&WiFiSystemResetAccessPointToFactory), Returning<std::uint32_t>>);
static_assert(kIs<decltype(&WiFiSystemCheckContextNodeSet), Returning<void*, std::uint32_t>>);

static_assert(std::is_same_v<AssociatedDeviceCallback, Returning<std::uint32_t, std::uint32_t, void*>*>);
static_assert(kIs<decltype(&WiFiNewAPAssociatedDeviceCallbackRegister), Returning<AssociatedDeviceCallback>>);
static_assert(kIs<decltype(&WiFiNewAPAssociatedDeviceCallbackDeRegister), Returning<>>);

enum class Kind { String, Boolean, UnsignedInt, Int };

constexpr std::size_t widthOf(Kind kind, std::size_t capacity) {
    switch (kind) {
        case Kind::String:
            return capacity;
        case Kind::Boolean:
            return 1;
        case Kind::UnsignedInt:
        case Kind::Int:
            break;
    }
    return 4;
}

struct ExpectedField {
    const char* object;
    const char* name;
    unsigned node;
    Kind kind;
    std::size_t capacity;
    std::size_t offset;
    std::size_t size;
};

constexpr ExpectedField kExpectedFields[] = {
#define PARAMETER(prefix, depth, node, name, stem, type, access, capacity, low, high) \
    {#prefix, #name, node, Kind::type, capacity, offsetof(prefix##Context, name), sizeof(prefix##Context::name)},
#include "tests/wifi/DataModelRows.inc"
};
static_assert(std::size(kExpectedFields) == kParametersInTable);

// Sizes by the prefix of the object.
const std::map<std::string, std::size_t> kSizes = {
#define OBJECT(prefix, ...) {#prefix, sizeof(prefix##Context)},
#include "tests/wifi/DataModelRows.inc"
};

}  // namespace

TEST(Contexts, HaveTheStatedSizes) {
    const abi::DataModel model = abi::readDataModel(QUORVEL_STATED_DATA_MODEL);
    EXPECT_EQ(kSizes.size(), model.statedObjects);
    for (const abi::Object& object : model.objects)
        EXPECT_EQ(kSizes.at(object.prefix), object.contextSize) << object.prefix;
}

TEST(Contexts, HaveOneFieldPerNodeInNodeOrderNaturallyAligned) {
    // The table lists three of the radio's nodes in another order.
    std::vector<ExpectedField> fields(std::begin(kExpectedFields), std::end(kExpectedFields));
    for (auto first = fields.begin(); first != fields.end();) {
        const auto last = std::find_if(first, fields.end(), [first](const ExpectedField& field) {
            return std::strcmp(field.object, first->object) != 0;
        });
        std::sort(first, last, [](const ExpectedField& a, const ExpectedField& b) { return a.node < b.node; });
        first = last;
    }
    std::string object;
    std::size_t end = 0;
    unsigned node = 0;
    for (const ExpectedField& field : fields) {
        if (object != field.object) {
            object = field.object;
            end = 132;
            node = 0;
        }
        SCOPED_TRACE(object + "." + field.name);
        const bool word = field.kind == Kind::UnsignedInt || field.kind == Kind::Int;
        if (word) end = (end + 3) / 4 * 4;
        EXPECT_EQ(field.node, ++node);
        EXPECT_EQ(field.offset, end);
        EXPECT_EQ(field.size, widthOf(field.kind, field.capacity));
        end += field.size;
    }
}

TEST(Contexts, EndWithTheFieldsThatHaveNoNode) {
    EXPECT_EQ(sizeof(WiFiAccessPointWPSContext::Method), 16U);
    EXPECT_EQ(sizeof(WiFiAccessPointWPSContext) - offsetof(WiFiAccessPointWPSContext, Method), 16U);
    EXPECT_EQ(sizeof(WiFiAccessPointAssociatedDeviceContext::Counters), 32U);
    EXPECT_EQ(
        sizeof(WiFiAccessPointAssociatedDeviceContext) - offsetof(WiFiAccessPointAssociatedDeviceContext, Counters),
        32U);
}

}  // namespace quorvel
