#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/wifi/LogLines.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiRadioImpl.h"
#include "wifi/model/Contexts.h"
#include "wifi/model/Implementations.h"

// Applying a radio's staged values: the steps, their order, and the nodes that the generic write handles.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using scripted::loggedBy;
using scripted::PlatformTest;
using Nodes = std::vector<std::uint32_t>;
using Texts = std::vector<std::string>;

class RadioApply : public PlatformTest {
  protected:
    RadioApply() {
        (void)WiFiRadioInitContext(block.get());
        setVariable("wlBand", "1");
        platform.forget();
    }

    void setVariable(const std::string& name, const std::string& value) {
        platform.setVariable(1, 0, name, value);
    }

    WiFiRadioContext& context() {
        return *static_cast<WiFiRadioContext*>(block.get());
    }

    void stageText(std::uint32_t (*set)(void*, std::uint32_t, const char*, std::uint32_t), const std::string& text) {
        ASSERT_EQ(set(block.get(), 2, text.data(), static_cast<std::uint32_t>(text.size())), 0U);
    }

    // Applies behind the front end, which would forget the context afterwards.
    std::uint32_t apply() {
        platform.forget();
        const std::uint32_t result = WiFiRadioApplyContextImpl(block.get(), 2);
        EXPECT_TRUE(block.intact());
        return result;
    }

    // The nodes that are staged.
    Nodes staged() {
        Nodes nodes;
        for (std::uint32_t node = 0; node <= 65; ++node) {
            if (Quorvel_IsContextSetMap(block.get(), node) != 0) {
                nodes.push_back(node);
            }
        }
        return nodes;
    }

    Texts written() {
        return platform.callTexts({"wlcsm_mngr_set"});
    }

    // Everything that reaches the manager.
    Texts managerCalls() {
        return platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get", "wlcsm_mngr_set", "wlcsm_nvram_get",
                                   "wlcsm_nvram_set", "wlcsm_mngr_restart", "wlcsm_mngr_send_csa",
                                   "wlcsm_mngr_send_csa2", "wlcsm_mngr_ci_scan_start", "wlcsm_mngr_ci_scanresults",
                                   "wlcsm_mngr_chanim_stats", "wlcsm_mngr_channelstats", "wlcsm_get_systemUpSecs",
                                   "wlcsm_mngr_save_nvram", "sleep"});
    }

    bool logged(std::uint32_t level, const std::string& message,
                const std::string& function = "WiFiRadioApplyContextImpl") {
        return loggedBy(platform, "wifi/QuorvelWiFiRadioImpl", function, level, message);
    }
    bool failed(const std::string& message) {
        return logged(0, message);
    }
    bool steeringFailed(const std::string& message) {
        return logged(0, message, "set_bsd_steering_policy");
    }

    GuardedBlock block{sizeof(WiFiRadioContext)};
};

std::string set(const std::string& variable, const std::string& value) {
    return "wlcsm_mngr_set(1, 0, \"" + variable + "\", \"" + value + "\")";
}

std::string get(const std::string& variable) {
    return "wlcsm_mngr_get(1, 0, \"" + variable + "\")";
}

std::string genericGet(const std::string& variable) {
    return "wlcsm_mngr_ext_get(1, 0, \"" + variable + "\")";
}

std::string nvramSet(const std::string& name, const std::string& value) {
    return "wlcsm_nvram_set(\"" + name + "\", \"" + value + "\")";
}

// --- The order of the steps -----------------------------------------------------------------------------------------

TEST_F(RadioApply, AsksForTheBandFirstAndWritesNothingUnasked) {
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(managerCalls(), Texts{get("wlBand")});
    EXPECT_TRUE(logged(2, "wlBand[1]"));
    EXPECT_TRUE(platform.logged(3, "Quorvel_P_WiFiApplyContext DONE"));
}

// The apply calls the object's own check, which logs a trace line for each node.
TEST_F(RadioApply, LooksAtItsOwnNodesThroughTheCheck) {
    EXPECT_EQ(apply(), 0U);
    std::size_t checks = 0;
    for (const auto& line : platform.logs()) {
        if (line.text != "WiFiRadioCheckContextNodeSet DONE") continue;
        EXPECT_EQ(line.level, 3U);
        EXPECT_EQ(line.function, "WiFiRadioCheckContextNodeSet");
        EXPECT_EQ(line.file, "wifi/QuorvelWiFiRadio");
        ++checks;
    }
    // 37, 19, 44, 1, 48, 49, 51, 53, 54, 55, 15, 13, 56, 60, 61, 62, 27, 38, 65.
    EXPECT_EQ(checks, 19U);
}

TEST_F(RadioApply, LeavesFieldsThatAreNotMarked) {
    setVariable("radio_status", "Down");
    std::string fields(sizeof(WiFiRadioContext) - QUORVEL_CONTEXT_HEADER_SIZE, ',');
    fields[offsetof(WiFiRadioContext, Enable) - QUORVEL_CONTEXT_HEADER_SIZE] = 1;
    block.write(QUORVEL_CONTEXT_HEADER_SIZE, fields);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(managerCalls(), Texts{get("wlBand")});
    EXPECT_TRUE(block.bytes(QUORVEL_CONTEXT_HEADER_SIZE, fields.size()) == fields);
    EXPECT_EQ(staged(), Nodes{});
}

TEST_F(RadioApply, TakesItsStepsInOrder) {
    setVariable("wlPhyType", "v");
    setVariable("radio_status", "Down");
    platform.setSystemUpSeconds(500);
    setVariable("dcsDwelltime", "35");
    platform.setNvram("wl1_bsd_steering_policy", "70 6 4 -65 300 0x40");
    void* ctx = block.get();
    // Staged in another order than that of the steps.
    stageText(WiFiRadioChannelStatsSet, "44");
    stageText(WiFiRadioOperationalDataTransmitRatesSet, "6,9");
    stageText(WiFiRadioRadarThresholdSet, "1 2");
    stageText(WiFiRadiopushRadioChannel2Set, "36/80");
    ASSERT_EQ(WiFiRadiopushRadioChannelSet(ctx, 2, 40), 0U);
    stageText(WiFiRadioDcsChannelMetricsSet, "52");
    ASSERT_EQ(WiFiRadioChannelSet(ctx, 2, 36), 0U);
    ASSERT_EQ(WiFiRadioAutoChannelEnableSet(ctx, 2, 1), 0U);
    ASSERT_EQ(WiFiRadioBandSteeringPhyRateThresholdSet(ctx, 2, 100), 0U);
    ASSERT_EQ(WiFiRadioBandSteeringRSSIThresholdSet(ctx, 2, -60), 0U);
    ASSERT_EQ(WiFiRadioBandSteeringBandUtilizationThresholdSet(ctx, 2, 50), 0U);
    ASSERT_EQ(WiFiRadioGreenfieldEnableSet(ctx, 2, 1), 0U);
    ASSERT_EQ(WiFiRadioRxChainMaskSet(ctx, 2, 3), 0U);
    ASSERT_EQ(WiFiRadioTxChainMaskSet(ctx, 2, 2), 0U);
    ASSERT_EQ(WiFiRadioEnableSet(ctx, 2, 1), 0U);
    ASSERT_EQ(WiFiRadioCtsProtectionEnableSet(ctx, 2, 1), 0U);
    ASSERT_EQ(WiFiRadioOperatingChannelBandwidthSet(ctx, 2, 3), 0U);
    stageText(WiFiRadioBasicDataTransmitRatesSet, "54");
    ASSERT_EQ(WiFiRadioAtfEnableSet(ctx, 2, 1), 0U);

    EXPECT_EQ(apply(), 0U);
    const std::string policy = "wlcsm_nvram_get(\"wl1_bsd_steering_policy\")";
    EXPECT_EQ(managerCalls(), (Texts{
                                  get("wlBand"),
                                  get("wlgMode"),                                              // 37
                                  get("wlPhyType"),                                            // 44
                                  set("wlNProtection", "auto"),                                //
                                  genericGet("radio_status"),                                  // 1
                                  "wlcsm_get_systemUpSecs()",                                  //
                                  set("wlBootTime", "500"),                                    //
                                  set("wlNPreambleType", "gf"),                                // 51
                                  policy,                                                      // 53
                                  nvramSet("wl1_bsd_steering_policy", "50 6 4 -65 300 0x40"),  //
                                  policy,                                                      // 54
                                  nvramSet("wl1_bsd_steering_policy", "50 6 4 -60 300 0x40"),  //
                                  policy,                                                      // 55
                                  nvramSet("wl1_bsd_steering_policy", "50 6 4 -60 100 0x40"),  //
                                  set("AutoChannelEnable", "1"),                               // 15
                                  set("AutoChannelEnable", "0"),                               // 13
                                  genericGet("dcsDwelltime"),                                  // 60
                                  "wlcsm_mngr_ci_scan_start(1, 52, 35, 5)",                    //
                                  "sleep(1)",                                                  //
                                  "wlcsm_mngr_ci_scanresults(1, out)",                         //
                                  "wlcsm_mngr_chanim_stats(1, out)",                           //
                                  "wlcsm_mngr_send_csa(1, 40)",                                // 61
                                  nvramSet("wl1_auto_cha", "0"),                               //
                                  "wlcsm_mngr_send_csa2(1, \"36/80\")",                        // 62
                                  nvramSet("wl1_auto_cha", "0"),                               //
                                  genericGet("wlBand"),                                        // 27
                                  genericGet("dcsDwelltime"),                                  // 65
                                  "wlcsm_mngr_ci_scan_start(1, 44, 35, 5)",                    //
                                  "sleep(1)",                                                  //
                                  "wlcsm_mngr_channelstats(1, out)",                           //
                                  set("wlEnbl", "1"),                                          // the generic write
                                  set("wlChannel", "36"),                                      //
                                  set("wlNBwCap", "2"),                                        //
                                  set("radarThreshold", "1 2"),                                //
                                  set("wlBasicRate", "default"),                               //
                                  set("operationalDataTransmitRates", "6 9"),                  //
                                  set("wlTxChain", "3"),                                       //
                                  set("wlRxChain", "7"),                                       //
                                  set("wlAtf", "1"),                                           //
                              }));
    EXPECT_EQ(staged(), (Nodes{1, 13, 19, 27, 37, 38, 48, 49, 60, 64, 65}));
    EXPECT_EQ(platform.logTexts(0),
              (Texts{" No direct wlmgnr mapping for node[60].", " No direct wlmgnr mapping for node[65]."}));
}

TEST_F(RadioApply, RunsUnderTheLockAndForgetsTheContextAfterwards) {
    ASSERT_EQ(WiFiRadioChannelSet(block.get(), 2, 36), 0U);
    platform.forget();
    EXPECT_EQ(WiFiRadioApplyContext(block.get(), 2), 0U);
    for (const auto& call : platform.calls()) {
        if (call.name.rfind("wlcsm_", 0) == 0) {
            EXPECT_TRUE(call.lockHeld) << call.text();
        }
    }
    EXPECT_EQ(written(), (Texts{set("AutoChannelEnable", "0"), set("wlChannel", "36")}));
    EXPECT_EQ(staged(), Nodes{});
    EXPECT_EQ(context().Channel, 0U);
}

TEST_F(RadioApply, LeavesOrdinaryNodesToTheGenericWrite) {
    void* ctx = block.get();
    stageText(WiFiRadioAliasSet, "attic");
    stageText(WiFiRadioOperatingStandardsSet, "n,ac");
    stageText(WiFiRadioRegulatoryDomainSet, "US/0");
    stageText(WiFiRadioAMSDUModeSet, "auto");
    ASSERT_EQ(WiFiRadioExtensionChannelSet(ctx, 2, 2), 0U);
    ASSERT_EQ(WiFiRadioTransmitPowerSet(ctx, 2, -1), 0U);
    ASSERT_EQ(WiFiRadioRetryLimitSet(ctx, 2, 7), 0U);
    ASSERT_EQ(WiFiRadioDTIMPeriodSet(ctx, 2, 3), 0U);
    ASSERT_EQ(WiFiRadioResetToFactorySet(ctx, 2, 1), 0U);
    ASSERT_EQ(WiFiRadioDcsDwelltimeSet(ctx, 2, 45), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(managerCalls(), (Texts{get("wlBand"), set("rAlias", "attic"), set("operatingStandards", "n,ac"),
                                     set("wlNCtrlsb", "2"), set("wlTxPwrPcnt", "-1"), set("wlCountryRev", "US/0"),
                                     set("retryLimit", "7"), set("wlDtmIntvl", "3"), set("wlAmsdu", "auto"),
                                     set("wlResetRadio", "1"), set("dcsDwelltime", "45")}));
    EXPECT_EQ(staged(), (Nodes{3, 10, 20, 24, 28, 29, 34, 47, 57, 59}));
}

TEST_F(RadioApply, NamesStagedNodesThatNothingTakes) {
    ASSERT_EQ(WiFiRadioPacketAggregationEnableSet(block.get(), 2, 1), 0U);
    ASSERT_EQ(WiFiRadioAirtimeSchedulerEnableSet(block.get(), 2, 1), 0U);
    ASSERT_EQ(WiFiRadioClearAirtimeSchedulerStationsListSet(block.get(), 2, 1), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{});
    EXPECT_EQ(platform.logTexts(0),
              (Texts{" No direct wlmgnr mapping for node[35].", " No direct wlmgnr mapping for node[40].",
                     " No direct wlmgnr mapping for node[41]."}));
}

TEST_F(RadioApply, PassesTheGenericWritesRefusalOn) {
    EXPECT_EQ(WiFiRadioApplyContextImpl(block.get(), 4), 6U);
    EXPECT_EQ(WiFiRadioApplyContextImpl(block.get(), 0), 6U);
}

// --- Basic rates ----------------------------------------------------------------------------------------------------

constexpr const char* kAll = "1,2,5.5,6,9,11,12,18,24,36,48,54";

struct BasicRates {
    const char* band;
    const char* gMode;
    const char* rates;
    const char* keyword;
};

TEST_F(RadioApply, StoresBasicRatesAsTheirKeyword) {
    const BasicRates rows[] = {
        {"1", "0", "54", "default"}, {"1", "0", kAll, "all"},  {"1", "0", "6,12,24", "wifi2"},
        {"1", "0", "6,12", "12"},    {"1", "1", kAll, "all"},  {"2", "1", "54", "default"},
        {"2", "1", kAll, "all"},     {"2", "1", "6,12", "12"}, {"2", "1", "6,12,24", "wifi2"},
        {"2", "0", "11", "default"}, {"2", "0", "1,2", "12"},  {"2", "0", "1,2,5.5,6,9,11", "all"},
        {"0", "0", "11", "default"}, {"3", "0", "1,2", "12"},  {"2", "0", "1,2,5.5,6,11,12,24", "wifi2"},
        {"3", "1", "54", "default"}, {"0", "2", kAll, "all"},  {"2", "-1", kAll, "all"},
    };
    for (const BasicRates& row : rows) {
        SCOPED_TRACE(std::string(row.band) + " " + row.gMode + " " + row.rates);
        ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
        setVariable("wlBand", row.band);
        setVariable("wlgMode", row.gMode);
        stageText(WiFiRadioBasicDataTransmitRatesSet, row.rates);
        EXPECT_EQ(apply(), 0U);
        EXPECT_EQ(managerCalls(), (Texts{get("wlBand"), get("wlgMode"), set("wlBasicRate", row.keyword)}));
        EXPECT_TRUE(logged(2, std::string("wlgMode[") + row.gMode + "]"));
        EXPECT_EQ(staged(), Nodes{37});
        std::string field = row.keyword;
        field.resize(64, '\0');
        EXPECT_EQ(std::string(context().BasicDataTransmitRates, 64), field);
    }
}

TEST_F(RadioApply, RefusesOtherBasicRatesAndWritesNothing) {
    const BasicRates rows[] = {
        {"2", "0", "1,2,5.5,11", ""}, {"2", "0", "54", ""},    {"2", "0", kAll, ""},    {"2", "1", "11", ""},
        {"1", "0", "11", ""},         {"1", "0", "", ""},      {"1", "0", "6,12 ", ""}, {"1", "0", "default", ""},
        {"1", "0", "5", ""},          {"1", "0", "6, 12", ""}, {"1", "0", "54,", ""},
    };
    for (const BasicRates& row : rows) {
        SCOPED_TRACE(std::string(row.band) + " " + row.gMode + " " + row.rates);
        ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
        setVariable("wlBand", row.band);
        setVariable("wlgMode", row.gMode);
        stageText(WiFiRadioBasicDataTransmitRatesSet, row.rates);
        stageText(WiFiRadioAliasSet, "attic");
        ASSERT_EQ(WiFiRadioRestartSet(block.get(), 2, 1), 0U);
        ASSERT_EQ(WiFiRadioOperatingChannelBandwidthSet(block.get(), 2, 3), 0U);
        EXPECT_EQ(apply(), 6U);
        EXPECT_EQ(managerCalls(), (Texts{get("wlBand"), get("wlgMode")}));
        EXPECT_TRUE(failed(std::string("Invalid set of Basic Rates - ") + row.rates + "\n"));
        EXPECT_EQ(staged(), (Nodes{3, 19, 37, 56}));
        EXPECT_EQ(std::string(context().BasicDataTransmitRates, 64), std::string(64, '\0'));
        EXPECT_EQ(context().OperatingChannelBandwidth, 3U);
    }
}

TEST_F(RadioApply, RefusesBasicRatesThatFillTheirField) {
    const std::string rates(64, '6');
    stageText(WiFiRadioBasicDataTransmitRatesSet, rates);
    EXPECT_EQ(apply(), 6U);
    EXPECT_TRUE(failed("Invalid set of Basic Rates - " + rates + "\n"));
}

TEST_F(RadioApply, TakesAnUnreadBandForAnotherBandAndAnUnreadModeForZero) {
    platform.removeVariable(1, 0, "wlBand");
    stageText(WiFiRadioBasicDataTransmitRatesSet, "11");
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("wlBasicRate", "default")});
    EXPECT_TRUE(logged(2, "wlBand[0]"));
    EXPECT_TRUE(logged(2, "wlgMode[0]"));
}

// --- Bandwidth, protection, chains, greenfield ----------------------------------------------------------------------

TEST_F(RadioApply, WritesTheBandwidthAsTheManagerCounts) {
    for (std::uint32_t bandwidth = 1; bandwidth <= 5; ++bandwidth) {
        ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
        ASSERT_EQ(WiFiRadioOperatingChannelBandwidthSet(block.get(), 2, bandwidth), 0U);
        EXPECT_EQ(apply(), 0U);
        EXPECT_EQ(written(), Texts{set("wlNBwCap", std::to_string(bandwidth - 1))});
        EXPECT_EQ(context().OperatingChannelBandwidth, bandwidth - 1);
        EXPECT_EQ(staged(), Nodes{19});
    }
}

TEST_F(RadioApply, WritesProtectionToTheVariableOfThePhyType) {
    const std::pair<const char*, const char*> rows[] = {
        {"v", "wlNProtection"}, {"h", "wlNProtection"}, {"n", "wlNProtection"}, {"a", "wlProtection"},
        {"g", "wlProtection"},  {"", "wlProtection"},   {"vh", "wlProtection"}};
    for (const auto& [phyType, variable] : rows) {
        for (const std::uint32_t flag : {0U, 1U}) {
            SCOPED_TRACE(phyType);
            ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
            setVariable("wlPhyType", phyType);
            ASSERT_EQ(WiFiRadioCtsProtectionEnableSet(block.get(), 2, flag), 0U);
            EXPECT_EQ(apply(), 0U);
            EXPECT_EQ(managerCalls(),
                      (Texts{get("wlBand"), get("wlPhyType"), set(variable, flag == 1 ? "auto" : "off")}));
            EXPECT_EQ(staged(), Nodes{});
        }
    }
}

TEST_F(RadioApply, TurnsProtectionOffForAnyValueButOne) {
    ASSERT_EQ(WiFiRadioCtsProtectionEnableSet(block.get(), 2, 1), 0U);
    context().CtsProtectionEnable = 2;
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("wlProtection", "off")});
}

TEST_F(RadioApply, DoesNotMindProtectionThatIsRefused) {
    ASSERT_EQ(WiFiRadioCtsProtectionEnableSet(block.get(), 2, 1), 0U);
    platform.fail("wlcsm_mngr_set");
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("wlProtection", "auto")});
    EXPECT_EQ(platform.logTexts(0), Texts{});
    EXPECT_EQ(staged(), Nodes{});
}

TEST_F(RadioApply, WritesChainsAsAMask) {
    const std::pair<std::uint32_t, const char*> rows[] = {
        {0, "0"},           {1, "1"},           {2, "3"},
        {3, "7"},           {4, "15"},          {31, "2147483647"},
        {32, "4294967295"}, {33, "4294967295"}, {255, "4294967295"},
        {256, "0"},         {258, "3"},         {0xFFFFFFFF, "4294967295"},
    };
    for (const auto& [chains, mask] : rows) {
        SCOPED_TRACE(chains);
        ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
        ASSERT_EQ(WiFiRadioTxChainMaskSet(block.get(), 2, chains), 0U);
        ASSERT_EQ(WiFiRadioRxChainMaskSet(block.get(), 2, chains), 0U);
        EXPECT_EQ(apply(), 0U);
        EXPECT_EQ(written(), (Texts{set("wlTxChain", mask), set("wlRxChain", mask)}));
        EXPECT_EQ(staged(), (Nodes{48, 49}));
        EXPECT_EQ(std::to_string(context().TxChainMask), mask);
        EXPECT_EQ(std::to_string(context().RxChainMask), mask);
    }
}

TEST_F(RadioApply, WritesGreenfieldAsGfWhichTheReadDoesNotKnow) {
    ASSERT_EQ(WiFiRadioGreenfieldEnableSet(block.get(), 2, 1), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("wlNPreambleType", "gf")});
    EXPECT_EQ(staged(), Nodes{});
    std::uint8_t enabled = 0x5A;
    EXPECT_EQ(WiFiRadioGreenfieldEnableGet(2, &enabled), 0U);
    EXPECT_EQ(enabled, 0);
    setVariable("wlNPreambleType", "1");  // the manager may normalise it
    EXPECT_EQ(WiFiRadioGreenfieldEnableGet(2, &enabled), 0U);
    EXPECT_EQ(enabled, 1);
}

TEST_F(RadioApply, WritesGreenfieldForAnyValueButZero) {
    ASSERT_EQ(WiFiRadioGreenfieldEnableSet(block.get(), 2, 1), 0U);
    context().GreenfieldEnable = 2;
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("wlNPreambleType", "gf")});
}

TEST_F(RadioApply, WritesNoGreenfieldAsTheEmptyText) {
    ASSERT_EQ(WiFiRadioGreenfieldEnableSet(block.get(), 2, 0), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("wlNPreambleType", "")});
    EXPECT_EQ(staged(), Nodes{});
}

TEST_F(RadioApply, ReportsGreenfieldThatIsRefusedAndGoesOn) {
    ASSERT_EQ(WiFiRadioGreenfieldEnableSet(block.get(), 2, 1), 0U);
    stageText(WiFiRadioAliasSet, "attic");
    platform.failAt("wlcsm_mngr_set", 1);
    EXPECT_EQ(apply(), 0U);
    EXPECT_TRUE(failed("wlcsm_mngr_set wlNPreambleType fail."));
    EXPECT_EQ(written(), (Texts{set("wlNPreambleType", "gf"), set("rAlias", "attic")}));
    EXPECT_EQ(staged(), Nodes{3});
}

// --- Enable ---------------------------------------------------------------------------------------------------------

TEST_F(RadioApply, StampsTheStartOfARadioThatWasNotUp) {
    platform.setSystemUpSeconds(777);
    for (const char* status : {"Down", "", "up", "Upside"}) {
        SCOPED_TRACE(status);
        ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
        setVariable("radio_status", status);
        ASSERT_EQ(WiFiRadioEnableSet(block.get(), 2, 1), 0U);
        EXPECT_EQ(apply(), 0U);
        EXPECT_EQ(written(), (Texts{set("wlBootTime", "777"), set("wlEnbl", "1")}));
        EXPECT_EQ(staged(), Nodes{1});
    }
}

TEST_F(RadioApply, LeavesTheStartOfARadioThatIsUp) {
    setVariable("radio_status", "Up");
    ASSERT_EQ(WiFiRadioEnableSet(block.get(), 2, 1), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(managerCalls(), (Texts{get("wlBand"), genericGet("radio_status"), set("wlEnbl", "1")}));
}

TEST_F(RadioApply, LeavesTheStartWhenTheStatusCannotBeRead) {
    ASSERT_EQ(WiFiRadioEnableSet(block.get(), 2, 1), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("wlEnbl", "1")});
}

TEST_F(RadioApply, DoesNotAskForTheStatusOfARadioThatIsDisabled) {
    setVariable("radio_status", "Down");
    ASSERT_EQ(WiFiRadioEnableSet(block.get(), 2, 0), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(managerCalls(), (Texts{get("wlBand"), set("wlEnbl", "0")}));
}

TEST_F(RadioApply, AsksForTheStatusForTheValueOneOnly) {
    setVariable("radio_status", "Down");
    ASSERT_EQ(WiFiRadioEnableSet(block.get(), 2, 1), 0U);
    context().Enable = 2;
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(managerCalls(), (Texts{get("wlBand"), set("wlEnbl", "2")}));
}

// --- Channel --------------------------------------------------------------------------------------------------------

TEST_F(RadioApply, WritesAutomaticChannelAtOnceAndClearsIt) {
    for (const std::uint32_t flag : {0U, 1U}) {
        ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
        ASSERT_EQ(WiFiRadioAutoChannelEnableSet(block.get(), 2, flag), 0U);
        EXPECT_EQ(apply(), 0U);
        EXPECT_EQ(written(), Texts{set("AutoChannelEnable", std::to_string(flag))});
        EXPECT_EQ(staged(), Nodes{});
    }
}

TEST_F(RadioApply, WritesAutomaticChannelAsTheNumberItIs) {
    ASSERT_EQ(WiFiRadioAutoChannelEnableSet(block.get(), 2, 1), 0U);
    context().AutoChannelEnable = 200;
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("AutoChannelEnable", "200")});
}

TEST_F(RadioApply, TurnsAutomaticChannelOffForAFixedOne) {
    ASSERT_EQ(WiFiRadioChannelSet(block.get(), 2, 36), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), (Texts{set("AutoChannelEnable", "0"), set("wlChannel", "36")}));
    EXPECT_EQ(staged(), Nodes{13});
}

TEST_F(RadioApply, DoesNotMindAutomaticChannelThatIsRefused) {
    ASSERT_EQ(WiFiRadioAutoChannelEnableSet(block.get(), 2, 1), 0U);
    ASSERT_EQ(WiFiRadioChannelSet(block.get(), 2, 36), 0U);
    platform.failAt("wlcsm_mngr_set", 1);
    platform.failAt("wlcsm_mngr_set", 2);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), (Texts{set("AutoChannelEnable", "1"), set("AutoChannelEnable", "0"), set("wlChannel", "36")}));
    EXPECT_EQ(platform.logTexts(0), Texts{});
    EXPECT_EQ(staged(), Nodes{13});
}

TEST_F(RadioApply, LeavesAutomaticChannelForChannelZero) {
    ASSERT_EQ(WiFiRadioChannelSet(block.get(), 2, 0), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("wlChannel", "0")});
}

TEST_F(RadioApply, AnnouncesAChannelSwitchAndTurnsAutomaticChannelOff) {
    ASSERT_EQ(WiFiRadiopushRadioChannelSet(block.get(), 1, 40), 0U);
    platform.forget();
    EXPECT_EQ(WiFiRadioApplyContextImpl(block.get(), 1), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_send_csa", "wlcsm_mngr_send_csa2", "wlcsm_nvram_set", "wlcsm_mngr_set"}),
              (Texts{"wlcsm_mngr_send_csa(0, 40)", nvramSet("wl0_auto_cha", "0")}));
    EXPECT_EQ(platform.nvram("wl0_auto_cha"), "0");
    EXPECT_EQ(staged(), Nodes{});
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(RadioApply, AnnouncesAChannelSpecificationWhole) {
    const std::string longest(2048, '3');
    for (const std::string& text : {std::string("36/80"), std::string(), longest}) {
        ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
        stageText(WiFiRadiopushRadioChannel2Set, text);
        // A text that fills its field ends there; the next field does not belong to it.
        context().AtfCapable = 'x';
        EXPECT_EQ(apply(), 0U);
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_send_csa", "wlcsm_mngr_send_csa2", "wlcsm_nvram_set"}),
                  (Texts{"wlcsm_mngr_send_csa2(1, \"" + text + "\")", nvramSet("wl1_auto_cha", "0")}));
        EXPECT_EQ(staged(), Nodes{});
    }
}

TEST_F(RadioApply, DoesNotMindSwitchesThatAreRefused) {
    ASSERT_EQ(WiFiRadiopushRadioChannelSet(block.get(), 2, 40), 0U);
    stageText(WiFiRadiopushRadioChannel2Set, "40u");
    platform.fail("wlcsm_mngr_send_csa");
    platform.fail("wlcsm_mngr_send_csa2");
    platform.fail("wlcsm_nvram_set");
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(platform.callCount("wlcsm_nvram_set"), 2U);
    EXPECT_EQ(staged(), Nodes{});
}

// --- Restart --------------------------------------------------------------------------------------------------------

TEST_F(RadioApply, RestartsWhateverTheStagedValueAndWritesNothingElse) {
    for (const std::uint32_t flag : {0U, 1U}) {
        ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
        ASSERT_EQ(WiFiRadioRestartSet(block.get(), 2, flag), 0U);
        stageText(WiFiRadioAliasSet, "attic");
        ASSERT_EQ(WiFiRadiopushRadioChannelSet(block.get(), 2, 40), 0U);
        stageText(WiFiRadioDcsChannelMetricsSet, "36");
        stageText(WiFiRadioChannelStatsSet, "36");
        stageText(WiFiRadioOperationalDataTransmitRatesSet, "6,9");
        EXPECT_EQ(apply(), 0U);
        EXPECT_EQ(managerCalls(), (Texts{get("wlBand"), "wlcsm_mngr_restart(1, 0, 1, 1)"}));
        EXPECT_EQ(staged(), (Nodes{3, 38, 56, 60, 61, 65}));
        EXPECT_EQ(std::string(context().OperationalDataTransmitRates), "6,9");
        EXPECT_FALSE(platform.logged(3, "Quorvel_P_WiFiApplyContext DONE"));
    }
}

TEST_F(RadioApply, RestartsAfterTheStepsBeforeIt) {
    ASSERT_EQ(WiFiRadioRestartSet(block.get(), 2, 1), 0U);
    ASSERT_EQ(WiFiRadioChannelSet(block.get(), 2, 36), 0U);
    ASSERT_EQ(WiFiRadioAutoChannelEnableSet(block.get(), 2, 1), 0U);
    ASSERT_EQ(WiFiRadioGreenfieldEnableSet(block.get(), 2, 0), 0U);
    ASSERT_EQ(WiFiRadioOperatingChannelBandwidthSet(block.get(), 2, 3), 0U);
    ASSERT_EQ(WiFiRadioTxChainMaskSet(block.get(), 2, 2), 0U);
    ASSERT_EQ(WiFiRadioRxChainMaskSet(block.get(), 2, 3), 0U);
    stageText(WiFiRadioBasicDataTransmitRatesSet, "54");
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(managerCalls(),
              (Texts{get("wlBand"), get("wlgMode"), set("wlNPreambleType", ""), set("AutoChannelEnable", "1"),
                     set("AutoChannelEnable", "0"), "wlcsm_mngr_restart(1, 0, 1, 1)"}));
    EXPECT_EQ(staged(), (Nodes{13, 19, 37, 48, 49, 56}));
    EXPECT_EQ(std::string(context().BasicDataTransmitRates), "default");
    EXPECT_EQ(context().OperatingChannelBandwidth, 2U);
    EXPECT_EQ(context().TxChainMask, 3U);
    EXPECT_EQ(context().RxChainMask, 7U);
}

TEST_F(RadioApply, SucceedsWhenTheRestartDoesNot) {
    ASSERT_EQ(WiFiRadioRestartSet(block.get(), 2, 1), 0U);
    platform.fail("wlcsm_mngr_restart");
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

// --- Radar, rates ---------------------------------------------------------------------------------------------------

TEST_F(RadioApply, DropsTheRadarThresholdOn24GHzAndGoesOn) {
    setVariable("wlBand", "2");
    stageText(WiFiRadioRadarThresholdSet, "1 2 3");
    stageText(WiFiRadioAliasSet, "attic");
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("rAlias", "attic")});
    EXPECT_TRUE(failed("WiFiRadioRadarThreshold are only allowed to be set on 5G Radio"));
    EXPECT_EQ(staged(), Nodes{3});
}

TEST_F(RadioApply, WritesTheRadarThresholdOnOtherBands) {
    for (const char* band : {"1", "0", "", "3", "22"}) {
        ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
        setVariable("wlBand", band);
        stageText(WiFiRadioRadarThresholdSet, "1 2 3");
        EXPECT_EQ(apply(), 0U);
        EXPECT_EQ(written(), Texts{set("radarThreshold", "1 2 3")}) << band;
        EXPECT_EQ(staged(), Nodes{27});
    }
    platform.removeVariable(1, 0, "wlBand");
    ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
    stageText(WiFiRadioRadarThresholdSet, "1 2 3");
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("radarThreshold", "1 2 3")});
}

TEST_F(RadioApply, LooksForTheBandInSixteenBytes) {
    const std::pair<std::string, bool> rows[] = {
        {"02", true}, {std::string(15, ' ') + "2", true}, {std::string(16, ' ') + "2", false}};
    for (const auto& [band, dropped] : rows) {
        SCOPED_TRACE(band);
        ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
        setVariable("wlBand", band);
        stageText(WiFiRadioRadarThresholdSet, "1 2 3");
        EXPECT_EQ(apply(), 0U);
        EXPECT_EQ(written(), dropped ? Texts{} : Texts{set("radarThreshold", "1 2 3")});
        EXPECT_EQ(staged(), dropped ? Nodes{} : Nodes{27});
    }
}

TEST_F(RadioApply, WritesOperationalRatesWithBlanks) {
    stageText(WiFiRadioOperationalDataTransmitRatesSet, "1b,2b,5.5,,11,");
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("operationalDataTransmitRates", "1b 2b 5.5  11 ")});
    EXPECT_EQ(staged(), Nodes{38});
    EXPECT_EQ(std::string(context().OperationalDataTransmitRates), "1b 2b 5.5  11 ");
}

TEST_F(RadioApply, ReplacesCommasWithinTheRatesFieldOnly) {
    stageText(WiFiRadioOperationalDataTransmitRatesSet, std::string(64, ','));
    context().SupportedDataTransmitRates[0] = ',';  // the field behind
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("operationalDataTransmitRates", std::string(64, ' '))});
    EXPECT_EQ(context().SupportedDataTransmitRates[0], ',');
}

// --- Measurements ---------------------------------------------------------------------------------------------------

TEST_F(RadioApply, MeasuresTheChannelThatIsStagedAndDiscardsTheRecord) {
    stageText(WiFiRadioDcsChannelMetricsSet, "36 and more");
    stageText(WiFiRadioChannelStatsSet, "x");
    // The manager may write more than the record.
    platform.setRecord("wlcsm_mngr_ci_scanresults", std::string(1056, '\1'));
    platform.setRecord("wlcsm_mngr_channelstats", std::string(1024, '\1'));
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_ci_scan_start"}),
              (Texts{"wlcsm_mngr_ci_scan_start(1, 36, 40, 40)", "wlcsm_mngr_ci_scan_start(1, 0, 40, 40)"}));
    EXPECT_EQ(std::string(context().DcsChannelMetrics), "36 and more");
    EXPECT_EQ(std::string(context().RadioChannelStats), "x");
    EXPECT_EQ(staged(), (Nodes{60, 65}));
    EXPECT_EQ(written(), Texts{});
}

TEST_F(RadioApply, DoesNotMindMeasurementsThatFail) {
    stageText(WiFiRadioDcsChannelMetricsSet, std::string(2048, '1'));
    stageText(WiFiRadioChannelStatsSet, "44");
    stageText(WiFiRadioAliasSet, "attic");
    for (const char* call : {"wlcsm_mngr_ci_scan_start", "wlcsm_mngr_ci_scanresults", "wlcsm_mngr_channelstats"}) {
        platform.fail(call);
    }
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("rAlias", "attic")});
    EXPECT_EQ(staged(), (Nodes{3, 60, 65}));
    EXPECT_TRUE(platform.logged(0, "DcsChannelMetrics fail to get scan results"));
    EXPECT_TRUE(platform.logged(0, "Channelstats fail to get results"));
}

TEST_F(RadioApply, HandsTheMeasurementsTheChannelAOneAndZeros) {
    const struct {
        const char* text;
        std::uint32_t channel;
    } rows[] = {{"36", 36}, {" 161x", 161}, {"-1", 0xFFFFFFFF}, {"", 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        ASSERT_EQ(WiFiRadioInitContext(block.get()), 0U);
        stageText(WiFiRadioDcsChannelMetricsSet, row.text);
        stageText(WiFiRadioChannelStatsSet, row.text);
        EXPECT_EQ(apply(), 0U);
        GuardedBlock request(8);
        request.put(0, row.channel);
        request.put(4, std::uint32_t{1});
        const std::string words = request.bytes(0, 8);
        EXPECT_EQ(platform.handed("wlcsm_mngr_ci_scanresults"), words + std::string(1048, '\0'));
        EXPECT_EQ(platform.handed("wlcsm_mngr_channelstats"), words + std::string(72, '\0'));
    }
}

// --- Band-steering policy -------------------------------------------------------------------------------------------

TEST_F(RadioApply, ReplacesOneFieldOfTheSteeringPolicy) {
    const std::pair<std::uint32_t, const char*> rows[] = {
        {53, "-9 6 4 -65 300 0x1a0"}, {54, "70 6 4 -9 300 0x1a0"}, {55, "70 6 4 -65 -9 0x1a0"}};
    for (const auto& [node, text] : rows) {
        platform.setNvram("wl1_bsd_steering_policy", "70 6 4 -65 300 0x1a0");
        EXPECT_EQ(set_bsd_steering_policy(2, -9, node), 0U);
        EXPECT_EQ(platform.nvram("wl1_bsd_steering_policy"), text);
    }
}

TEST_F(RadioApply, StartsAnAbsentSteeringPolicyFromTheSameDefaultsOnEveryBand) {
    const std::pair<std::uint32_t, const char*> rows[] = {
        {53, "7 5 3 0 0 0x40"}, {54, "80 5 3 7 0 0x40"}, {55, "80 5 3 0 7 0x40"}};
    for (const char* band : {"1", "2", "0"}) {
        for (const auto& [node, text] : rows) {
            setVariable("wlBand", band);
            platform.removeNvram("wl1_bsd_steering_policy");
            platform.forget();
            EXPECT_EQ(set_bsd_steering_policy(2, 7, node), 0U);
            EXPECT_EQ(platform.nvram("wl1_bsd_steering_policy"), text);
            EXPECT_EQ(managerCalls(), (Texts{"wlcsm_nvram_get(\"wl1_bsd_steering_policy\")", genericGet("wlBand"),
                                             nvramSet("wl1_bsd_steering_policy", text)}));
        }
    }
}

TEST_F(RadioApply, RefusesOtherNodesOfTheSteeringPolicy) {
    for (const std::uint32_t node : {0U, 52U, 56U}) {
        platform.forget();
        EXPECT_EQ(set_bsd_steering_policy(2, 7, node), 1U);
        EXPECT_TRUE(steeringFailed("Invalid node[" + std::to_string(node) + "]"));
        EXPECT_EQ(managerCalls(), (Texts{"wlcsm_nvram_get(\"wl1_bsd_steering_policy\")", genericGet("wlBand")}));
    }
}

TEST_F(RadioApply, CutsALongSteeringPolicy) {
    platform.setNvram("wl1_bsd_steering_policy", "-2147483648 -2147483648 -2147483648 1 2 0xffffffff");
    EXPECT_EQ(set_bsd_steering_policy(2, 7, 55), 0U);
    EXPECT_EQ(platform.nvram("wl1_bsd_steering_policy"), "-2147483648 -2147483648 -214748");
}

TEST_F(RadioApply, ReportsASteeringPolicyThatIsNotStoredAndGoesOn) {
    ASSERT_EQ(WiFiRadioBandSteeringRSSIThresholdSet(block.get(), 2, -60), 0U);
    stageText(WiFiRadioAliasSet, "attic");
    platform.fail("wlcsm_nvram_set");
    EXPECT_EQ(apply(), 0U);
    EXPECT_TRUE(steeringFailed("wlcsm_nvram_set(wl1_bsd_steering_policy, 80 5 3 -60 0 0x40) FAIL."));
    EXPECT_EQ(staged(), Nodes{3});
    EXPECT_EQ(written(), Texts{set("rAlias", "attic")});
    EXPECT_EQ(set_bsd_steering_policy(2, -60, 54), 1U);
}

TEST_F(RadioApply, DoesNotSaveByItself) {
    ASSERT_EQ(WiFiRadioChannelSet(block.get(), 2, 36), 0U);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_save_nvram"), 0U);
}

}  // namespace

}  // namespace quorvel
