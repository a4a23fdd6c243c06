#include <gtest/gtest.h>
#include <wlcsm.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "tests/wifi/LogLines.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiRadioImpl.h"
#include "wifi/model/Implementations.h"

// A radio's reads. Radio 2 is radio index 1 at the manager.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using scripted::loggedBy;
using scripted::PlatformTest;
using Texts = std::vector<std::string>;

constexpr std::uint32_t kUntouched = 0x5A5A5A5A;
constexpr char kSource[] = "wifi/QuorvelWiFiRadioImpl";

class RadioReads : public PlatformTest {
  protected:
    void set(const std::string& name, const std::string& value) {
        platform.setVariable(1, 0, name, value);
    }

    Texts managerReads() {
        return platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get", "wlcsm_nvram_get"});
    }

    // Reads a text; empty when the read fails.
    static std::optional<std::string> text(std::uint32_t (*get)(std::uint32_t, char*, std::uint32_t),
                                           std::uint32_t length = 64) {
        GuardedBlock buffer(length + 1);
        const std::uint32_t result = get(2, buffer.text(), length);
        EXPECT_TRUE(buffer.intact());
        if (result != 0) {
            return std::nullopt;
        }
        return std::string(buffer.text());
    }

    bool failed(const char* function, const std::string& message) {
        return loggedBy(platform, kSource, function, 0, message);
    }
    bool noted(const char* function, const std::string& message) {
        return loggedBy(platform, kSource, function, 2, message);
    }
};

std::string genericRead(const std::string& variable) {
    return "wlcsm_mngr_ext_get(1, 0, \"" + variable + "\")";
}

std::string plainRead(const std::string& variable) {
    return "wlcsm_mngr_get(1, 0, \"" + variable + "\")";
}

// --- Reads that are one variable ------------------------------------------------------------------------------------

TEST_F(RadioReads, TakeTheirTextsFromTheirVariables) {
    const struct {
        std::uint32_t (*get)(std::uint32_t, char*, std::uint32_t);
        const char* variable;
        std::uint32_t length;
    } rows[] = {
        {WiFiRadioStatusGet, "radio_status", 32},
        {WiFiRadioAliasGet, "rAlias", 64},
        {WiFiRadioNameGet, "name", 64},
        {WiFiRadioSupportedFrequencyBandsGet, "wlFreqBands", 10},
        {WiFiRadioOperatingFrequencyBandGet, "wlBand", 64},
        {WiFiRadioSupportedStandardsGet, "supportedStandards", 32},
        {WiFiRadioOperatingStandardsGet, "operatingStandards", 64},
        {WiFiRadioPossibleChannelsGet, "possibleChannels", 1024},
        {WiFiRadioChannelsInUseGet, "wlCurrentChannel", 1024},
        {WiFiRadioGuardIntervalGet, "guardInterval", 64},
        {WiFiRadioTransmitPowerSupportedGet, "transmitPowerSupported", 64},
        {WiFiRadioRadarThresholdGet, "radarThreshold", 256},
        {WiFiRadioPreambleTypeGet, "wlPreambleType", 64},
        {WiFiRadioAutoChannelSelectionExclusionListGet, "wlAcsExclChannels", 256},
        {WiFiRadioAMSDUModeGet, "wlAmsdu", 4},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.variable);
        platform.forget();
        set(row.variable, "abc");
        EXPECT_EQ(text(row.get, row.length), "abc");
        EXPECT_EQ(managerReads(), Texts{genericRead(row.variable)});
        platform.removeVariable(1, 0, row.variable);
        GuardedBlock buffer(row.length);
        EXPECT_EQ(row.get(2, buffer.text(), row.length), 1U);
        EXPECT_EQ(buffer.bytes(0, row.length), std::string(row.length, '\xEE'));
    }
}

TEST_F(RadioReads, TakeTheirNumbersFromTheirVariables) {
    const struct {
        std::uint32_t (*get)(std::uint32_t, std::uint32_t*);
        const char* variable;
    } rows[] = {
        {WiFiRadioLastChangeGet, "lastChange"},
        {WiFiRadioMaxBitRateGet, "maxBitRate"},
        {WiFiRadioAutoChannelRefreshPeriodGet, "autoChannelRefreshPeriod"},
        {WiFiRadioAutoChannelDwellTimeGet, "wlAcsChanDwellTime"},
        {WiFiRadioExtensionChannelGet, "wlNCtrlsb"},
        {WiFiRadioRetryLimitGet, "retryLimit"},
        {WiFiRadioFragmentationThresholdGet, "wlFrgThrshld"},
        {WiFiRadioRTSThresholdGet, "wlRtsThrshld"},
        {WiFiRadioLongRetryLimitGet, "longRetryLimit"},
        {WiFiRadioBeaconPeriodGet, "wlBcnIntvl"},
        {WiFiRadioDTIMPeriodGet, "wlDtmIntvl"},
        {WiFiRadioDcsDwelltimeGet, "dcsDwelltime"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.variable);
        platform.forget();
        set(row.variable, "1234");
        std::uint32_t value = kUntouched;
        EXPECT_EQ(row.get(2, &value), 0U);
        EXPECT_EQ(value, 1234U);
        EXPECT_EQ(managerReads(), Texts{genericRead(row.variable)});
        platform.removeVariable(1, 0, row.variable);
        value = kUntouched;
        EXPECT_EQ(row.get(2, &value), 1U);
        EXPECT_EQ(value, kUntouched);
    }
}

TEST_F(RadioReads, TakeTheirSignedNumbersFromTheirVariables) {
    const struct {
        std::uint32_t (*get)(std::uint32_t, std::int32_t*);
        const char* variable;
    } rows[] = {
        {WiFiRadioMCSGet, "MCS"}, {WiFiRadioTransmitPowerGet, "wlTxPwrPcnt"}, {WiFiRadioSTBCModeGet, "wlStbcTx"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.variable);
        platform.forget();
        set(row.variable, "-1");
        std::int32_t value = 7;
        EXPECT_EQ(row.get(2, &value), 0U);
        EXPECT_EQ(value, -1);
        EXPECT_EQ(managerReads(), Texts{genericRead(row.variable)});
        platform.removeVariable(1, 0, row.variable);
        value = 7;
        EXPECT_EQ(row.get(2, &value), 1U);
        EXPECT_EQ(value, 7);
    }
}

TEST_F(RadioReads, TakeTheirFlagsFromTheirVariables) {
    const struct {
        std::uint32_t (*get)(std::uint32_t, std::uint8_t*);
        const char* variable;
    } rows[] = {
        {WiFiRadioEnableGet, "wlEnbl"},
        {WiFiRadioAutoChannelSupportedGet, "autoChannelSupported"},
        {WiFiRadioAutoChannelEnableGet, "AutoChannelEnable"},
        {WiFiRadioIEEE80211hSupportedGet, "IEEE80211hSupported"},
        {WiFiRadioIEEE80211hEnabledGet, "WlRegMode"},
        {WiFiRadioObssCoexistenceEnableGet, "wlObssCoex"},
        {WiFiRadioAtfEnableGet, "wlAtf"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.variable);
        for (const std::uint8_t flag : {std::uint8_t{0}, std::uint8_t{1}}) {
            platform.forget();
            set(row.variable, std::to_string(flag));
            std::uint8_t value = 0x5A;
            EXPECT_EQ(row.get(2, &value), 0U);
            EXPECT_EQ(value, flag);
            EXPECT_EQ(managerReads(), Texts{genericRead(row.variable)});
        }
        platform.removeVariable(1, 0, row.variable);
        std::uint8_t value = 0x5A;
        EXPECT_EQ(row.get(2, &value), 1U);
        EXPECT_EQ(value, 0x5A);
    }
}

TEST_F(RadioReads, OfWhatIsNotSupportedSucceedAndLeaveTheValue) {
    platform.setVariableEverywhere("wlResetRadio", "1");
    for (auto* get : {WiFiRadioPacketAggregationEnableGet, WiFiRadioAirtimeSchedulerEnableGet,
                      WiFiRadioClearAirtimeSchedulerStationsListGet, WiFiRadioRestartGet, WiFiRadioResetToFactoryGet}) {
        std::uint8_t value = 0x5A;
        EXPECT_EQ(get(2, &value), 0U);
        EXPECT_EQ(value, 0x5A);
    }
    std::uint32_t channel = kUntouched;
    EXPECT_EQ(WiFiRadiopushRadioChannelGet(2, &channel), 0U);
    EXPECT_EQ(channel, kUntouched);
    EXPECT_EQ(managerReads(), Texts{});
}

TEST_F(RadioReads, SayThatGreenfieldAndAirtimeFairnessAreSupported) {
    std::uint8_t greenfield = 0;
    std::uint8_t fairness = 0;
    EXPECT_EQ(WiFiRadioGreenfieldSupportedGet(2, &greenfield), 0U);
    EXPECT_EQ(WiFiRadioAtfCapableGet(2, &fairness), 0U);
    EXPECT_EQ(greenfield, 1);
    EXPECT_EQ(fairness, 1);
    EXPECT_EQ(managerReads(), Texts{});
}

// --- Channel and bandwidth ------------------------------------------------------------------------------------------

TEST_F(RadioReads, ChannelIsTheOneInUse) {
    set("wlChannel", "0");
    set("wlCurrentChannel", "149");
    std::uint32_t channel = 0;
    EXPECT_EQ(WiFiRadioChannelGet(2, &channel), 0U);
    EXPECT_EQ(channel, 149U);
    EXPECT_EQ(managerReads(), Texts{plainRead("wlCurrentChannel")});
    set("wlCurrentChannel", "36l");
    EXPECT_EQ(WiFiRadioChannelGet(2, &channel), 0U);
    EXPECT_EQ(channel, 36U);
}

TEST_F(RadioReads, ChannelFailsWhenTheManagerDoes) {
    std::uint32_t channel = kUntouched;
    EXPECT_EQ(WiFiRadioChannelGet(2, &channel), 1U);
    EXPECT_EQ(channel, kUntouched);
    EXPECT_TRUE(failed("WiFiRadioChannelGetImpl", "wlcsm_mngr_get wlCurrentChannel FAIL"));
}

TEST_F(RadioReads, ConfiguredBandwidthCountsTheManagersCodes) {
    const std::pair<const char*, std::uint32_t> rows[] = {{"1", 1}, {"3", 2}, {"7", 3}, {"15", 4}};
    for (const auto& [code, index] : rows) {
        platform.forget();
        set("wlNBw", code);
        std::uint32_t value = 0;
        EXPECT_EQ(WiFiRadioConfiguredChannelBandwidthGet(2, &value), 0U);
        EXPECT_EQ(value, index);
        EXPECT_EQ(managerReads(), Texts{plainRead("wlNBw")});
    }
}

TEST_F(RadioReads, ConfiguredBandwidthRefusesOtherCodes) {
    for (const char* code : {"0", "2", "4", "8", "14", "16", "31", "-1"}) {
        platform.forget();
        set("wlNBw", code);
        std::uint32_t value = kUntouched;
        EXPECT_EQ(WiFiRadioConfiguredChannelBandwidthGet(2, &value), 1U);
        EXPECT_EQ(value, kUntouched);
        EXPECT_TRUE(failed("WiFiRadioConfiguredChannelBandwidthGetImpl", std::string("Invalid WLNBW(1) = ") + code));
    }
}

TEST_F(RadioReads, ConfiguredBandwidthFailsWhenTheManagerDoes) {
    std::uint32_t value = kUntouched;
    EXPECT_EQ(WiFiRadioConfiguredChannelBandwidthGet(2, &value), 1U);
    EXPECT_EQ(value, kUntouched);
    EXPECT_TRUE(
        failed("WiFiRadioConfiguredChannelBandwidthGetImpl", "wlcsm_mngr_get [wlNBw] failure on radioInstance[2]"));
}

TEST_F(RadioReads, OperatingBandwidthIsOneMoreThanTheManagers) {
    for (std::uint32_t code = 0; code <= 4; ++code) {
        set("wlNBwCap", std::to_string(code));
        std::uint32_t value = 0;
        EXPECT_EQ(WiFiRadioOperatingChannelBandwidthGet(2, &value), 0U);
        EXPECT_EQ(value, code + 1);
    }
    EXPECT_EQ(managerReads().front(), genericRead("wlNBwCap"));
}

TEST_F(RadioReads, OperatingBandwidthPassesAFailureOnAndAddsOneAllTheSame) {
    for (const auto& [radio, result] : {std::pair{2U, 1U}, std::pair{4U, 6U}}) {
        std::uint32_t value = 0;
        EXPECT_EQ(WiFiRadioOperatingChannelBandwidthGet(radio, &value), result);
        EXPECT_EQ(value, 1U);
    }
}

// --- Regulatory domain ----------------------------------------------------------------------------------------------

TEST_F(RadioReads, RegulatoryDomainIsTheCountryIndoors) {
    const std::pair<const char*, const char*> rows[] = {
        {"US/0", "USI"}, {"DE", "DEI"}, {"  FR/13", "FRI"}, {"G", "GI"},
        {"A B", "AI"},   {"", "I"},     {"   ", "I"},       {"US/0 and more than thirty-two characters of text", "USI"},
    };
    for (const auto& [country, domain] : rows) {
        SCOPED_TRACE(country);
        platform.forget();
        set("wlCountryRev", country);
        EXPECT_EQ(text(WiFiRadioRegulatoryDomainGet, 12), domain);
        EXPECT_EQ(managerReads(), Texts{genericRead("wlCountryRev")});
    }
}

// Reads 32 bytes: the whole of a text of 32 characters, and 31 of a longer one.
TEST_F(RadioReads, RegulatoryDomainIsLookedForInThirtyTwoBytes) {
    set("wlCountryRev", std::string(30, ' ') + "US");
    EXPECT_EQ(text(WiFiRadioRegulatoryDomainGet, 12), "USI");
    set("wlCountryRev", std::string(30, ' ') + "US/");
    EXPECT_EQ(text(WiFiRadioRegulatoryDomainGet, 12), "UI");
    set("wlCountryRev", std::string(31, ' ') + "US");
    EXPECT_EQ(text(WiFiRadioRegulatoryDomainGet, 12), "I");
}

TEST_F(RadioReads, RegulatoryDomainPassesAFailureOnAndIsIndoorsAllTheSame) {
    for (const auto& [radio, result] : {std::pair{2U, 1U}, std::pair{0U, 6U}}) {
        GuardedBlock buffer(12);
        EXPECT_EQ(WiFiRadioRegulatoryDomainGet(radio, buffer.text(), 12), result);
        EXPECT_STREQ(buffer.text(), "I");
    }
}

TEST_F(RadioReads, RegulatoryDomainIsBoundedByTheBuffer) {
    set("wlCountryRev", "US/0");
    GuardedBlock buffer(2);
    EXPECT_EQ(WiFiRadioRegulatoryDomainGetImpl(2, buffer.text(), 2), 0U);
    EXPECT_STREQ(buffer.text(), "U");
    EXPECT_TRUE(buffer.intact());
}

// --- Rates ----------------------------------------------------------------------------------------------------------

constexpr const char* kOfdmAll = "1,2,5.5,6,9,11,12,18,24,36,48,54";

TEST_F(RadioReads, BasicRatesSpellOutTheManagersKeyword) {
    const struct {
        const char* band;
        const char* gMode;
        const char* keyword;
        const char* rates;
    } rows[] = {
        {"1", "0", "default", "54"},
        {"1", "0", "all", kOfdmAll},
        {"1", "0", "wifi2", "6,12,24"},
        {"1", "0", "12", "6,12"},
        {"1", "1", "default", "54"},
        {"1", "1", "all", kOfdmAll},
        {"1", "1", "wifi2", "6,12,24"},
        {"1", "1", "12", "6,12"},
        {"2", "1", "default", "54"},
        {"2", "1", "all", kOfdmAll},
        {"2", "1", "wifi2", "6,12,24"},
        {"2", "1", "12", "6,12"},
        {"2", "-1", "all", kOfdmAll},
        {"2", "0", "default", "11"},
        {"2", "0", "all", "1,2,5.5,11"},
        {"2", "0", "12", "1,2"},
        {"2", "0", "wifi2", "1,2,5.5,6,11,12,24"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.band) + " " + row.gMode + " " + row.keyword);
        platform.forget();
        set("wlBand", row.band);
        set("wlgMode", row.gMode);
        set("wlBasicRate", row.keyword);
        EXPECT_EQ(text(WiFiRadioBasicDataTransmitRatesGet), row.rates);
        EXPECT_EQ(managerReads(), (Texts{genericRead("wlBasicRate"), plainRead("wlBand"), plainRead("wlgMode")}));
        EXPECT_TRUE(noted("WiFiRadioBasicDataTransmitRatesGetImpl", std::string("wlBand[") + row.band + "]"));
        EXPECT_TRUE(noted("WiFiRadioBasicDataTransmitRatesGetImpl", std::string("wlgMode[") + row.gMode + "]"));
        EXPECT_EQ(platform.logTexts(0), Texts{});
    }
}

TEST_F(RadioReads, BasicRatesAreBoundedByTheBuffer) {
    set("wlBand", "1");
    set("wlBasicRate", "all");
    GuardedBlock buffer(8);
    EXPECT_EQ(WiFiRadioBasicDataTransmitRatesGetImpl(2, buffer.text(), 8), 0U);
    EXPECT_EQ(buffer.bytes(0, 8), std::string("1,2,5.5\0", 8));
    EXPECT_TRUE(buffer.intact());
}

TEST_F(RadioReads, BasicRatesOfAnUnknownKeywordSucceedAndLeaveTheOutput) {
    for (const char* keyword : {"abc", "", "alls", "al", "ALL", "defaul", "default rates", " all"}) {
        for (const auto& [band, gMode] : {std::pair{"1", "1"}, std::pair{"2", "1"}, std::pair{"2", "0"}}) {
            platform.forget();
            set("wlBand", band);
            set("wlgMode", gMode);
            set("wlBasicRate", keyword);
            GuardedBlock buffer(64);
            EXPECT_EQ(WiFiRadioBasicDataTransmitRatesGet(2, buffer.text(), 64), 0U);
            EXPECT_EQ(buffer.bytes(0, 64), std::string(64, '\xEE'));
            EXPECT_TRUE(failed("WiFiRadioBasicDataTransmitRatesGetImpl", "Fail: shouldn't go here."));
        }
    }
}

TEST_F(RadioReads, BasicRatesRefuseAnotherBand) {
    set("wlBasicRate", "all");
    for (const char* band : {"0", "3", "-1", ""}) {
        platform.forget();
        set("wlBand", band);
        GuardedBlock buffer(64);
        EXPECT_EQ(WiFiRadioBasicDataTransmitRatesGet(2, buffer.text(), 64), 1U);
        EXPECT_EQ(buffer.bytes(0, 64), std::string(64, '\xEE'));
        const std::string number = band[0] == '\0' ? "0" : band;
        EXPECT_TRUE(failed("WiFiRadioBasicDataTransmitRatesGetImpl", "Invalid band[" + number + "]"));
    }
}

TEST_F(RadioReads, BasicRatesTakeAnUnreadBandForZeroAndAnUnreadModeForTheBandsNumber) {
    set("wlBasicRate", "all");
    EXPECT_EQ(text(WiFiRadioBasicDataTransmitRatesGet), std::nullopt);
    EXPECT_TRUE(platform.logged(0, "Invalid band[0]"));
    set("wlBand", "2");
    EXPECT_EQ(text(WiFiRadioBasicDataTransmitRatesGet), "1,2,5.5,6,9,11,12,18,24,36,48,54");
    EXPECT_TRUE(platform.logged(2, "wlgMode[2]"));
}

TEST_F(RadioReads, BasicRatesPassAFailureOn) {
    char buffer[65] = {};
    EXPECT_EQ(WiFiRadioBasicDataTransmitRatesGetImpl(2, buffer, 64), 1U);
    EXPECT_TRUE(
        failed("WiFiRadioBasicDataTransmitRatesGetImpl", "Quorvel_P_WiFiWlcsmMngrGet BASICDATATRANSMITRATES FAIL"));
    EXPECT_EQ(WiFiRadioBasicDataTransmitRatesGetImpl(4, buffer, 64), 6U);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_get"), 0U);
}

TEST_F(RadioReads, OperationalRatesLoseTheirMarksAndSupportedRatesKeepThem) {
    const struct {
        const char* rates;
        const char* operational;
        const char* supported;
    } rows[] = {
        {"1b 2b 5.5b 11", "1,2,5.5,11", "1b,2b,5.5b,11"},
        {"", "", ""},
        {"b", "", "b"},
        {"bb6bb 9b", "6,9", "bb6bb,9b"},
        {" 6  9 ", ",6,,9,", ",6,,9,"},
        {"6,9", "6,9", "6,9"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.rates);
        platform.forget();
        set("operationalDataTransmitRates", row.rates);
        EXPECT_EQ(text(WiFiRadioOperationalDataTransmitRatesGet), row.operational);
        EXPECT_EQ(text(WiFiRadioSupportedDataTransmitRatesGet), row.supported);
        EXPECT_EQ(managerReads(), Texts(2, genericRead("operationalDataTransmitRates")));
    }
}

TEST_F(RadioReads, RatesFailWithOneWhateverTheReadsResult) {
    char buffer[65] = {};
    for (const std::uint32_t radio : {2U, 4U}) {
        platform.forget();
        EXPECT_EQ(WiFiRadioOperationalDataTransmitRatesGetImpl(radio, buffer, 64), 1U);
        EXPECT_EQ(WiFiRadioSupportedDataTransmitRatesGetImpl(radio, buffer, 64), 1U);
        EXPECT_TRUE(failed("WiFiRadioOperationalDataTransmitRatesGetImpl",
                           "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_OPERATIONALDATATRANSMITRATES FAIL"));
        EXPECT_TRUE(failed("WiFiRadioSupportedDataTransmitRatesGetImpl",
                           "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_SUPPORTEDDATATRANSMITRATES FAIL"));
    }
}

TEST_F(RadioReads, RatesLongerThanTheBufferAreCutInsideIt) {
    std::string rates;
    while (rates.size() < 900) {
        rates += "54b ";
    }
    set("operationalDataTransmitRates", rates);
    GuardedBlock operational(64);
    GuardedBlock supported(64);
    EXPECT_EQ(WiFiRadioOperationalDataTransmitRatesGet(2, operational.text(), 64), 0U);
    EXPECT_EQ(WiFiRadioSupportedDataTransmitRatesGet(2, supported.text(), 64), 0U);
    EXPECT_EQ(std::strlen(supported.text()), 63U);
    EXPECT_EQ(std::string(supported.text()).substr(0, 8), "54b,54b,");
    EXPECT_EQ(std::strlen(operational.text()), 47U);
    EXPECT_TRUE(operational.intact());
    EXPECT_TRUE(supported.intact());
}

TEST(StringReplacement, ReplacesEveryOccurrence) {
    const struct {
        const char* before;
        char from;
        char to;
        const char* after;
    } rows[] = {{"a b c", ' ', ',', "a,b,c"}, {"   ", ' ', ',', ",,,"}, {"", ' ', ',', ""}, {"abc", 'x', 'y', "abc"}};
    for (const auto& row : rows) {
        std::string subject = row.before;
        str_replace(subject.data(), row.from, row.to);
        EXPECT_EQ(subject, row.after);
    }
}

// --- Preference list ------------------------------------------------------------------------------------------------

TEST_F(RadioReads, PreferenceListIsReadPlainly) {
    set("wlAcsPrefChannels", "1,6,11");
    EXPECT_EQ(text(WiFiRadioAutoChannelSelectionPreferenceListGet, 256), "1,6,11");
    EXPECT_EQ(managerReads(), Texts{plainRead("wlAcsPrefChannels")});
    set("wlAcsPrefChannels", "6");
    EXPECT_EQ(text(WiFiRadioAutoChannelSelectionPreferenceListGet, 256), "6");
}

TEST_F(RadioReads, PreferenceListIsEmptyWhenNoneCanBeRead) {
    EXPECT_EQ(text(WiFiRadioAutoChannelSelectionPreferenceListGet, 256), "");
    set("wlAcsPrefChannels", "");
    EXPECT_EQ(text(WiFiRadioAutoChannelSelectionPreferenceListGet, 256), "");
}

TEST_F(RadioReads, PreferenceListIsBoundedByTheBuffer) {
    set("wlAcsPrefChannels", std::string(1000, '1'));
    GuardedBlock buffer(256);
    EXPECT_EQ(WiFiRadioAutoChannelSelectionPreferenceListGet(2, buffer.text(), 256), 0U);
    EXPECT_EQ(std::string(buffer.text()), std::string(255, '1'));
    EXPECT_TRUE(buffer.intact());
    GuardedBlock small(8);
    EXPECT_EQ(WiFiRadioAutoChannelSelectionPreferenceListGetImpl(2, small.text(), 8), 0U);
    EXPECT_EQ(std::string(small.text()), std::string(7, '1'));
    EXPECT_TRUE(small.intact());
}

TEST_F(RadioReads, PreferenceListSucceedsForARadioThatDoesNotExist) {
    for (const std::uint32_t radio : {0U, 4U}) {
        GuardedBlock buffer(256);
        EXPECT_EQ(WiFiRadioAutoChannelSelectionPreferenceListGet(radio, buffer.text(), 256), 0U);
        EXPECT_STREQ(buffer.text(), "");
    }
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

// --- Protection, chains, greenfield ---------------------------------------------------------------------------------

TEST_F(RadioReads, CtsProtectionStandsInTheVariableOfThePhyType) {
    const std::pair<const char*, const char*> rows[] = {
        {"v", "wlNProtection"}, {"h", "wlNProtection"}, {"n", "wlNProtection"}, {"a", "wlProtection"},
        {"g", "wlProtection"},  {"", "wlProtection"},   {"vn", "wlProtection"}, {"N", "wlProtection"},
    };
    for (const auto& [phyType, variable] : rows) {
        for (const auto& [word, flag] : {std::pair{"auto", 1}, std::pair{"off", 0}}) {
            SCOPED_TRACE(std::string(phyType) + " " + word);
            platform.forget();
            set("wlPhyType", phyType);
            set("wlNProtection", "wrong");
            set("wlProtection", "wrong");
            set(variable, word);
            std::uint8_t value = 0x5A;
            EXPECT_EQ(WiFiRadioCtsProtectionEnableGet(2, &value), 0U);
            EXPECT_EQ(value, flag);
            EXPECT_EQ(managerReads(), (Texts{plainRead("wlPhyType"), plainRead(variable)}));
        }
    }
}

TEST_F(RadioReads, CtsProtectionRefusesOtherWords) {
    set("wlPhyType", "n");
    for (const char* word : {"on", "", "autos", "of", "AUTO", "1"}) {
        platform.forget();
        set("wlNProtection", word);
        std::uint8_t value = 0x5A;
        EXPECT_EQ(WiFiRadioCtsProtectionEnableGet(2, &value), 1U);
        EXPECT_EQ(value, 0x5A);
        EXPECT_TRUE(failed("WiFiRadioCtsProtectionEnableGetImpl",
                           std::string("Invalid wlProtection[") + word + "] in wlPhyType[n] mode"));
    }
}

TEST_F(RadioReads, CtsProtectionOfAnUnreadPhyTypeIsThePlainOne) {
    set("wlProtection", "auto");
    std::uint8_t value = 0x5A;
    EXPECT_EQ(WiFiRadioCtsProtectionEnableGet(2, &value), 0U);
    EXPECT_EQ(value, 1);
    platform.removeVariable(1, 0, "wlProtection");
    EXPECT_EQ(WiFiRadioCtsProtectionEnableGet(2, &value), 1U);
    EXPECT_TRUE(platform.logged(0, "Invalid wlProtection[] in wlPhyType[] mode"));
}

TEST_F(RadioReads, ChainMasksReadAsNumbersOfChains) {
    const std::pair<const char*, std::uint32_t> rows[] = {{"0", 0}, {"1", 1},  {"3", 2},   {"5", 2},  {"7", 3},
                                                          {"8", 1}, {"15", 4}, {"255", 8}, {"-1", 32}};
    for (const auto& [mask, chains] : rows) {
        SCOPED_TRACE(mask);
        set("wlTxChain", mask);
        set("wlRxChain", mask);
        std::uint32_t sending = kUntouched;
        std::uint32_t receiving = kUntouched;
        EXPECT_EQ(WiFiRadioTxChainMaskGet(2, &sending), 0U);
        EXPECT_EQ(WiFiRadioRxChainMaskGet(2, &receiving), 0U);
        EXPECT_EQ(sending, chains);
        EXPECT_EQ(receiving, chains);
    }
}

TEST_F(RadioReads, ChainMasksHaveAVariableEach) {
    set("wlTxChain", "7");
    set("wlRxChain", "1");
    std::uint32_t sending = kUntouched;
    std::uint32_t receiving = kUntouched;
    EXPECT_EQ(WiFiRadioTxChainMaskGet(2, &sending), 0U);
    EXPECT_EQ(WiFiRadioRxChainMaskGet(2, &receiving), 0U);
    EXPECT_EQ(sending, 3U);
    EXPECT_EQ(receiving, 1U);
    EXPECT_EQ(managerReads(), (Texts{genericRead("wlTxChain"), genericRead("wlRxChain")}));
}

TEST_F(RadioReads, ChainMasksAreZeroWhenTheReadFails) {
    for (const auto& [radio, result] : {std::pair{2U, 1U}, std::pair{4U, 6U}}) {
        platform.forget();
        std::uint32_t sending = kUntouched;
        std::uint32_t receiving = kUntouched;
        EXPECT_EQ(WiFiRadioTxChainMaskGet(radio, &sending), result);
        EXPECT_EQ(WiFiRadioRxChainMaskGet(radio, &receiving), result);
        EXPECT_EQ(sending, 0U);
        EXPECT_EQ(receiving, 0U);
        EXPECT_TRUE(failed("WiFiRadioTxChainMaskGetImpl", "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_TXCHAINMASK Fail"));
        EXPECT_TRUE(failed("WiFiRadioRxChainMaskGetImpl", "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_RXCHAINMASK Fail"));
    }
}

TEST_F(RadioReads, GreenfieldIsTrueForOneOnly) {
    const std::pair<const char*, int> rows[] = {{"1", 1}, {"gf", 0}, {"0", 0}, {"", 0}, {"11", 0}, {" 1", 0}};
    for (const auto& [type, flag] : rows) {
        platform.forget();
        set("wlNPreambleType", type);
        std::uint8_t value = 0x5A;
        EXPECT_EQ(WiFiRadioGreenfieldEnableGet(2, &value), 0U);
        EXPECT_EQ(value, flag) << type;
        EXPECT_EQ(managerReads(), Texts{plainRead("wlNPreambleType")});
    }
    platform.removeVariable(1, 0, "wlNPreambleType");
    std::uint8_t value = 0x5A;
    EXPECT_EQ(WiFiRadioGreenfieldEnableGet(2, &value), 0U);
    EXPECT_EQ(value, 0);
}

// --- Up-time --------------------------------------------------------------------------------------------------------

TEST_F(RadioReads, UpTimeCountsFromTheStartOfARadioThatIsUp) {
    set("radio_status", "Up");
    platform.setRadioUpSeconds(1, 3661);
    std::uint32_t seconds = kUntouched;
    EXPECT_EQ(WiFiRadioUpTimeGet(2, &seconds), 0U);
    EXPECT_EQ(seconds, 3661U);
    EXPECT_EQ(managerReads(), Texts{genericRead("radio_status")});
}

TEST_F(RadioReads, UpTimeOfARadioThatIsNotUpIsZero) {
    platform.setRadioUpSeconds(1, 3661);
    for (const char* status : {"Down", "", "up", "Upside", "U"}) {
        set("radio_status", status);
        std::uint32_t seconds = kUntouched;
        EXPECT_EQ(WiFiRadioUpTimeGet(2, &seconds), 0U) << status;
        EXPECT_EQ(seconds, 0U) << status;
    }
    EXPECT_EQ(platform.callCount("wlcsm_get_wlUpSecs"), 0U);
}

TEST_F(RadioReads, UpTimeFailsWhenTheStatusCannotBeRead) {
    for (const std::uint32_t radio : {2U, 0U}) {
        platform.forget();
        std::uint32_t seconds = kUntouched;
        EXPECT_EQ(WiFiRadioUpTimeGet(radio, &seconds), 1U);
        EXPECT_EQ(seconds, 0U);
        EXPECT_TRUE(failed("WiFiRadioUpTimeGetImpl",
                           "Radio[" + std::to_string(radio) + "] is not enabled, WiFiRadioStatusGetImpl failure."));
    }
}

// --- Band utilization -----------------------------------------------------------------------------------------------

TEST_F(RadioReads, BandUtilizationIsWhatTheIdleShareLeaves) {
    const std::pair<const char*, std::uint32_t> rows[] = {{"30", 70},  {"0", 100}, {"100", 0},
                                                          {"-5", 105}, {"99", 1},  {"", 100}};
    for (const auto& [idle, busy] : rows) {
        SCOPED_TRACE(idle);
        platform.forget();
        set("WlBandUtilization", idle);
        std::uint32_t value = kUntouched;
        EXPECT_EQ(WiFiRadioBandUtilizationGet(2, &value), 0U);
        EXPECT_EQ(value, busy);
        EXPECT_TRUE(noted("WiFiRadioBandUtilizationGetImpl", "BandUtilization[" + std::to_string(busy) + "]"));
        EXPECT_EQ(managerReads(), Texts{plainRead("WlBandUtilization")});
    }
}

TEST_F(RadioReads, BandUtilizationRefusesAnIdleShareAboveAHundred) {
    for (const char* idle : {"101", "1000"}) {
        platform.forget();
        set("WlBandUtilization", idle);
        std::uint32_t value = kUntouched;
        EXPECT_EQ(WiFiRadioBandUtilizationGet(2, &value), 1U);
        EXPECT_EQ(value, 0U);
        EXPECT_TRUE(failed("WiFiRadioBandUtilizationGetImpl", "Invalid WlBandUtilization"));
    }
}

TEST_F(RadioReads, BandUtilizationTakesAnUnreadShareForZero) {
    std::uint32_t value = kUntouched;
    EXPECT_EQ(WiFiRadioBandUtilizationGet(2, &value), 0U);
    EXPECT_EQ(value, 100U);
}

// --- Band-steering policy -------------------------------------------------------------------------------------------

TEST_F(RadioReads, SteeringThresholdsAreFieldsOfThePolicy) {
    platform.setNvram("wl1_bsd_steering_policy", "70 6 4 -65 300 0x1a0");
    std::int32_t utilization = 0;
    std::int32_t rssi = 0;
    std::int32_t rate = 0;
    EXPECT_EQ(WiFiRadioBandSteeringBandUtilizationThresholdGet(2, &utilization), 0U);
    EXPECT_EQ(WiFiRadioBandSteeringRSSIThresholdGet(2, &rssi), 0U);
    EXPECT_EQ(WiFiRadioBandSteeringPhyRateThresholdGet(2, &rate), 0U);
    EXPECT_EQ(utilization, 70);
    EXPECT_EQ(rssi, -65);
    EXPECT_EQ(rate, 300);
    EXPECT_EQ(managerReads(), Texts(3, "wlcsm_nvram_get(\"wl1_bsd_steering_policy\")"));
    EXPECT_TRUE(noted("get_bsd_steering_policy",
                      "wlcsm_nvram_get(wl1_bsd_steering_policy) SUCCESS, value[70 6 4 -65 300 0x1a0], "
                      "BwUtil[70], samplePeriod[6], consecutiveSampleCount[4], RssiThreshold[-65], "
                      "pPhyRateThreshold[300], extFlag[0x1a0]"));
    EXPECT_EQ(platform.logCount(2,
                                "wlcsm_nvram_get(wl1_bsd_steering_policy) SUCCESS, value[70 6 4 -65 300 0x1a0], "
                                "BwUtil[70], samplePeriod[6], consecutiveSampleCount[4], RssiThreshold[-65], "
                                "pPhyRateThreshold[300], extFlag[0x1a0]"),
              3U);
}

TEST_F(RadioReads, SteeringPolicyHasSixNumbers) {
    platform.setNvram("wl1_bsd_steering_policy", "70 6 4 -65 300 0x1a0");
    BsdSteeringPolicy policy{};
    EXPECT_EQ(get_bsd_steering_policy(2, &policy), 0U);
    EXPECT_EQ(policy.BwUtil, 70);
    EXPECT_EQ(policy.samplePeriod, 6);
    EXPECT_EQ(policy.consecutiveSampleCount, 4);
    EXPECT_EQ(policy.RssiThreshold, -65);
    EXPECT_EQ(policy.PhyRateThreshold, 300);
    EXPECT_EQ(policy.extFlag, 0x1A0);
    static_assert(sizeof(BsdSteeringPolicy) == 24);
}

TEST_F(RadioReads, SteeringPolicyFieldsThatDoNotScanAreZero) {
    const struct {
        const char* text;
        BsdSteeringPolicy policy;
    } rows[] = {
        {"70 6", {70, 6, 0, 0, 0, 0}},
        {"", {0, 0, 0, 0, 0, 0}},
        {"x 6 4", {0, 0, 0, 0, 0, 0}},
        {"1 2 3 4 5 40", {1, 2, 3, 4, 5, 0}},  // without 0x
        {"1 2 3 4 5 0xffffffff", {1, 2, 3, 4, 5, -1}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        platform.setNvram("wl1_bsd_steering_policy", row.text);
        BsdSteeringPolicy policy{9, 9, 9, 9, 9, 9};
        EXPECT_EQ(get_bsd_steering_policy(2, &policy), 0U);
        EXPECT_EQ(std::memcmp(&policy, &row.policy, sizeof policy), 0);
    }
}

TEST_F(RadioReads, SteeringPolicyThatIsAbsentIsReportedAndZero) {
    BsdSteeringPolicy policy{9, 9, 9, 9, 9, 9};
    EXPECT_EQ(get_bsd_steering_policy(1, &policy), 1U);
    const BsdSteeringPolicy none{};
    EXPECT_EQ(std::memcmp(&policy, &none, sizeof policy), 0);
    EXPECT_TRUE(failed("get_bsd_steering_policy", "wlcsm_nvram_get(wl0_bsd_steering_policy) FAIL."));
}

TEST_F(RadioReads, SteeringPolicyHasANameOfAtMostThirtyTwoBytes) {
    BsdSteeringPolicy policy{};
    EXPECT_EQ(get_bsd_steering_policy(0x80000001, &policy), 1U);
    EXPECT_EQ(managerReads(), Texts{"wlcsm_nvram_get(\"wl-2147483648_bsd_steering_poli\")"});
}

TEST_F(RadioReads, SteeringUtilizationWithoutPolicyDependsOnTheBand) {
    const std::pair<const char*, std::int32_t> rows[] = {{"1", 80}, {"2", 0}, {"0", 0}, {"", 0}, {"11", 0}};
    for (const auto& [band, threshold] : rows) {
        platform.forget();
        set("wlBand", band);
        std::int32_t value = -1;
        EXPECT_EQ(WiFiRadioBandSteeringBandUtilizationThresholdGet(2, &value), 0U);
        EXPECT_EQ(value, threshold) << band;
        EXPECT_EQ(managerReads(), (Texts{"wlcsm_nvram_get(\"wl1_bsd_steering_policy\")", genericRead("wlBand")}));
    }
    platform.removeVariable(1, 0, "wlBand");
    std::int32_t value = -1;
    EXPECT_EQ(WiFiRadioBandSteeringBandUtilizationThresholdGet(2, &value), 0U);
    EXPECT_EQ(value, 0);
}

TEST_F(RadioReads, SteeringThresholdsWithoutPolicyAreZero) {
    std::int32_t rssi = -1;
    std::int32_t rate = -1;
    EXPECT_EQ(WiFiRadioBandSteeringRSSIThresholdGet(2, &rssi), 0U);
    EXPECT_EQ(WiFiRadioBandSteeringPhyRateThresholdGet(2, &rate), 0U);
    EXPECT_EQ(rssi, 0);
    EXPECT_EQ(rate, 0);
}

// --- Plain reads with values that fill the manager's buffer ---------------------------------------------------------

TEST_F(RadioReads, SurviveValuesThatFillTheManagersBuffer) {
    const std::string longest(WLCSM_VALUE_SIZE - 1, '9');
    for (const char* name : {"wlCurrentChannel", "wlNBw", "wlAcsPrefChannels", "wlPhyType", "wlProtection",
                             "wlNPreambleType", "WlBandUtilization", "wlBasicRate", "wlBand", "wlgMode", "wlCountryRev",
                             "radio_status", "operationalDataTransmitRates"}) {
        set(name, longest);
    }
    std::uint32_t number = 0;
    std::uint8_t flag = 0x5A;
    EXPECT_EQ(WiFiRadioChannelGet(2, &number), 0U);
    EXPECT_EQ(WiFiRadioConfiguredChannelBandwidthGet(2, &number), 1U);
    EXPECT_EQ(WiFiRadioCtsProtectionEnableGet(2, &flag), 1U);
    EXPECT_TRUE(platform.logged(0, "Invalid wlProtection[" + longest + "] in wlPhyType[" + longest + "] mode"));
    EXPECT_EQ(WiFiRadioGreenfieldEnableGet(2, &flag), 0U);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(WiFiRadioUpTimeGet(2, &number), 0U);
    EXPECT_EQ(number, 0U);
    EXPECT_EQ(text(WiFiRadioRegulatoryDomainGet, 12), "99I");
    EXPECT_EQ(text(WiFiRadioStatusGet, 32), std::string(31, '9'));
    EXPECT_EQ(text(WiFiRadioOperationalDataTransmitRatesGet), std::string(63, '9'));
}

}  // namespace

}  // namespace quorvel
