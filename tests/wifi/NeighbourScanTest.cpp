#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/wifi/LogLines.h"
#include "tests/wifi/NeighbourWorld.h"
#include "tests/wifi/platform/FreshProcess.h"

// A neighbour scan: the request, and what becomes of the text that `wl` prints.

namespace quorvel {

namespace {

using scripted::logLines;
using scripted::NeighbourTest;
using Texts = std::vector<std::string>;

class NeighbourScan : public NeighbourTest {};

// A network as `wl` prints it, without the line that ends it.
std::string network(const std::string& name, const std::string& channel = "6") {
    return "SSID: \"" + name + "\"\nMode: Managed\tRSSI: -60 dBm\tSNR: 30 dB\tnoise: -91 dBm\tChannel: " + channel +
           "\nBSSID: 00:11:22:33:44:55\tCapability: ESS ShortPre\n";
}

// The log lines at level 2 that the parser wrote for what it found.
Texts found(const scripted::Platform& platform, std::string_view what) {
    Texts lines;
    const std::string start = "WIFINEIGHBORINGDIAGNOSTICSRESULT_" + std::string(what) + "[";
    for (const std::string& line : platform.logTexts(2)) {
        if (line.rfind(start, 0) == 0) {
            lines.push_back(line.substr(start.size() - 1));
        }
    }
    return lines;
}

// --- The request ----------------------------------------------------------------------------------------------------

TEST_F(NeighbourScan, ScansWaitsDumpsAndReadsTwice) {
    output(2, network("one") + "\n");
    request(2);
    EXPECT_EQ(WiFiRadioStatsApplyContext(context.get(), 2, 1), 0U);
    EXPECT_EQ(
        platform.callTexts({"system", "sleep", "fopen", "fclose"}),
        (Texts{"system(\"wl -i wl1 scan\")", "sleep(5)", "system(\"wl -i wl1 scanresults > /var/wl1_scanresults\")",
               "fopen(\"/var/wl1_scanresults\", \"r\")", "fclose(\"/var/wl1_scanresults\")"}));
    EXPECT_TRUE(platform.logged(2, "wl -i wl1 scanresults: 1 entries found."));
    EXPECT_EQ(state(2), 3U);
    EXPECT_EQ(entries(2), 1U);
    for (const auto& call : platform.calls()) {
        if (call.name == "system" || call.name == "sleep" || call.name == "fopen") {
            EXPECT_TRUE(call.lockHeld) << call.text();
        }
    }
}

TEST_F(NeighbourScan, ReadsALastLineWithoutItsEnd) {
    scan(2, "SSID: \"one\"\nBSSID: aa");
    EXPECT_EQ(entries(2), 1U);
    EXPECT_STREQ(at(1).ssid, "one");
    EXPECT_STREQ(at(1).bssid, "aa");
}

// Before any scan.
class FirstNeighbourScan : public scripted::PlatformTest {};

TEST_F(FirstNeighbourScan, IsCompletedBetweenTheScanAndTheDump) {
    EXPECT_TRUE(scripted::runFresh([] {
        auto& fresh = scripted::Platform::instance();
        using State = std::pair<std::uint32_t, std::uint32_t>;
        const auto now = [] {
            State state;
            EXPECT_EQ(WiFiRadioStatsDiagnosticsStateGetImpl(2, &state.first), 0U);
            EXPECT_EQ(WiFiRadioStatsNeighboringWiFiDiagnosticResultNumberOfEntriesGetImpl(2, &state.second), 0U);
            return state;
        };
        std::vector<State> seen;
        fresh.onCommand("wl -i wl1 scan", [&] {
            seen.push_back(now());
            return 0;
        });
        fresh.onCommand("wl -i wl1 scanresults > /var/wl1_scanresults", [&] {
            seen.push_back(now());
            fresh.setFile("/var/wl1_scanresults", network("one") + "\n");
            return 0;
        });
        scripted::GuardedBlock context(192);
        for (int times = 0; times < 2; ++times) {
            EXPECT_EQ(WiFiRadioStatsInitContext(context.get()), 0U);
            EXPECT_EQ(WiFiRadioStatsDiagnosticsStateSet(context.get(), 2, 2), 0U);
            EXPECT_EQ(WiFiRadioStatsApplyContext(context.get(), 2, 1), 0U);
            seen.push_back(now());
        }
        // Idle, and the second time with the results of the first, while the radio scans; never idle again.
        EXPECT_EQ(seen, (std::vector<State>{{1, 0}, {3, 0}, {3, 1}, {3, 1}, {3, 0}, {3, 1}}));
        WiFiNeighboringDiagnosticsResultUnInit();
    }));
}

TEST_F(NeighbourScan, ScansWheneverItIsToldAnythingButNought) {
    output(1, "");
    for (const std::uint32_t doScan : {2U, 0x100U, 0xFFFFFFFFU}) {
        request(1);
        EXPECT_EQ(WiFiRadioStatsApplyContext(context.get(), 1, doScan), 0U);
        EXPECT_EQ(platform.callCount("sleep"), 1U);
    }
}

TEST_F(NeighbourScan, ReadsTheLastResultsAgainWithoutScanning) {
    output(1, network("one") + "\n");
    request(1);
    EXPECT_EQ(WiFiRadioStatsApplyContext(context.get(), 1, 0), 0U);
    EXPECT_EQ(platform.callTexts({"system", "sleep"}),
              Texts{"system(\"wl -i wl0 scanresults > /var/wl0_scanresults\")"});
    EXPECT_EQ(entries(1), 1U);
}

TEST_F(NeighbourScan, ForgetsTheRequestOnceItIsApplied) {
    output(1, "");
    request(1);
    EXPECT_EQ(WiFiRadioStatsApplyContext(context.get(), 1, 1), 0U);
    EXPECT_EQ(WiFiRadioStatsCheckContextNodeSet(context.get(), 14), 0U);
    platform.forget();
    EXPECT_EQ(WiFiRadioStatsApplyContext(context.get(), 1, 1), 0U);
    EXPECT_EQ(platform.callCount("system"), 0U);
    EXPECT_TRUE(context.intact());
}

TEST_F(NeighbourScan, DoesNothingUnasked) {
    EXPECT_EQ(WiFiRadioStatsApplyContextImpl(context.get(), 1, 1), 0U);
    EXPECT_EQ(platform.callCount("system"), 0U);
    EXPECT_EQ(platform.callCount("fopen"), 0U);
}

TEST_F(NeighbourScan, RefusesStatesThatAreNoRequest) {
    for (const std::uint32_t value : {1U, 3U, 4U}) {
        platform.forget();
        ASSERT_EQ(WiFiRadioStatsDiagnosticsStateSet(context.get(), 1, value), 0U);
        EXPECT_EQ(WiFiRadioStatsApplyContext(context.get(), 1, 1), 6U);
        EXPECT_TRUE(
            failed("WiFiRadioStatsApplyContextImpl", "Quorvel_IsContextSetMap WIFIRADIOSTATS_DIAGNOSTICSSTATE Fail"));
        EXPECT_EQ(platform.callCount("system"), 0U);
        EXPECT_NE(WiFiRadioStatsCheckContextNodeSet(context.get(), 14), 0U);
    }
}

TEST_F(NeighbourScan, RefusesRadiosThatDoNotExistAndNoContext) {
    request(1);
    for (const std::uint32_t radio : {0U, 4U}) {
        platform.forget();
        EXPECT_EQ(WiFiRadioStatsApplyContextImpl(context.get(), radio, 1), 6U);
        bool said = false;
        for (const std::string& line : platform.logTexts(0)) {
            said |= line.rfind("Invalid radioInstance[" + std::to_string(radio) + "] or Null pContext[", 0) == 0;
        }
        EXPECT_TRUE(said);
    }
    EXPECT_EQ(WiFiRadioStatsApplyContextImpl(nullptr, 1, 1), 6U);
    EXPECT_TRUE(failed("WiFiRadioStatsApplyContextImpl", "Invalid radioInstance[1] or Null pContext[0]"));
    EXPECT_EQ(platform.callCount("system"), 0U);
}

TEST_F(NeighbourScan, FailsWithoutResultsFileAndHasNoEntriesThen) {
    scan(1, network("one") + "\n");
    EXPECT_EQ(entries(1), 1U);
    platform.failOpen("/var/wl0_scanresults");
    request(1);
    EXPECT_EQ(WiFiRadioStatsApplyContext(context.get(), 1, 1), 1U);
    EXPECT_TRUE(failed("WiFiRadioStatsApplyContextImpl", "fopen [/var/wl0_scanresults] fail"));
    EXPECT_EQ(state(1), 3U);
    EXPECT_EQ(entries(1), 0U);
    EXPECT_NE(WiFiRadioStatsCheckContextNodeSet(context.get(), 14), 0U);
}

TEST_F(NeighbourScan, ShowsCommandsThatFailAsNoEntries) {
    platform.fail("system");
    platform.setFile("/var/wl0_scanresults", "");
    request(1);
    EXPECT_EQ(WiFiRadioStatsApplyContext(context.get(), 1, 1), 0U);
    EXPECT_EQ(state(1), 3U);
    EXPECT_EQ(entries(1), 0U);
}

TEST_F(NeighbourScan, SucceedsWithoutMemoryForTheResults) {
    output(1, network("one") + "\n");
    request(1);
    platform.fail("calloc");
    platform.fail("malloc");
    const std::uint32_t result = WiFiRadioStatsApplyContextImpl(context.get(), 1, 1);
    platform.succeed("calloc");
    platform.succeed("malloc");
    EXPECT_EQ(result, 0U);
    EXPECT_TRUE(platform.logged(0, "Memory allocation fail."));
    EXPECT_EQ(state(1), 3U);
    EXPECT_EQ(entries(1), 0U);
    std::uint32_t channel = 0;
    EXPECT_EQ(WiFiNeighboringDiagnosticsResultChannelGet(1, &channel), 1U);
}

// --- Entries --------------------------------------------------------------------------------------------------------

TEST_F(NeighbourScan, KeepsEverythingOfANetwork) {
    platform.setVariable(0, 0, "name", "wl0");
    scan(1,
         "SSID: \"home\"\n"
         "Mode: Managed\tRSSI: -47 dBm\tSNR: 44 dB\tnoise: -91 dBm\tFlags: RSSI on-channel Channel: 6l\n"
         "BSSID: 00:11:22:33:44:55\tCapability: ESS WEP ShortPre ShortSlot RRM\n"
         "Supported Rates: [ 1(b) 2(b) 5.5(b) 11(b) 6 9 12 18 24 36 48 54 ]\n"
         "RSN (WPA2):\n"
         "\tmulticast cipher: AES-CCMP\n"
         "\tunicast ciphers(1): AES-CCMP\n"
         "\tAKM Suites(1): WPA2-PSK\n"
         "HT Capable:\n"
         "QBSS Channel Utilization: 0x2e (18 %)\n"
         "\n");
    ASSERT_EQ(entries(1), 1U);
    const NeighboringWiFiResult result = at(1);
    EXPECT_STREQ(result.radio, "wl0");
    EXPECT_STREQ(result.ssid, "home");
    EXPECT_STREQ(result.bssid, "00:11:22:33:44:55");
    EXPECT_EQ(result.mode, 2U);
    EXPECT_EQ(result.channel, 6U);
    EXPECT_EQ(result.signalStrength, -47);
    EXPECT_EQ(result.securityModeEnabled, 4U);
    EXPECT_EQ(result.encryptionMode, 2U);
    EXPECT_EQ(result.operatingFrequencyBand, 1U);
    EXPECT_STREQ(result.supportedStandards, "b,g,n");
    EXPECT_STREQ(result.operatingStandards, "b,g,n");
    EXPECT_EQ(result.operatingChannelBandwidth, 2U);
    EXPECT_EQ(result.beaconPeriod, 100U);
    EXPECT_EQ(result.noise, -91);
    EXPECT_STREQ(result.basicDataTransferRates, "1,2,5.5,11");
    EXPECT_STREQ(result.supportedDataTransferRates, "1,2,5.5,11,6,9,12,18,24,36,48,54");
    EXPECT_EQ(result.dtimPeriod, 1U);
    EXPECT_EQ(result.qbssUtilization, 18U);
    EXPECT_EQ(std::string(result.reserved0, sizeof result.reserved0), std::string(sizeof result.reserved0, '\0'));

    Texts told;
    for (const std::string& line : platform.logTexts(2)) {
        if (line.rfind("WIFINEIGH", 0) == 0 || line.rfind("Neighboring", 0) == 0) {
            told.push_back(line);
        }
    }
    const std::string prefix = "WIFINEIGHBORINGDIAGNOSTICSRESULT_";
    EXPECT_EQ(told, (Texts{
                        prefix + "RADIO[0] found: wl0",
                        prefix + "SSID[0] found: home",
                        prefix + "MODE[0] found: 2",
                        prefix + "CHANNEL[0] found: 6",
                        prefix + "OPERATINGCHANNELBANDWIDTH[0] found: 2",
                        prefix + "OPERATINGFREQUENCYBAND[0] found: 1",
                        prefix + "SIGNALSTRENGTH[0] found: -47",
                        prefix + "NOISE[0] found: -91",
                        prefix + "BSSID[0] found: 00:11:22:33:44:55",
                        prefix + "SUPPORTEDDATATRANSFERRATES[0] found: 1,2,5.5,11,6,9,12,18,24,36,48,54",
                        prefix + "BASICDATATRANSFERRATES[0] found: 1,2,5.5,11",
                        prefix + "QBSSUTILIZATION[0] found: 18",
                        "Neighboring WiFi[0]: foundRSN[1], foundWPA[0], foundTKIP[0], foundAES[1], foundPSK[1], "
                        "foundWEP[1]",
                        prefix + "SECURITYMODEENABLED[0] found: 4",
                        prefix + "ENCRYPTIONMODE[0] found: 2",
                        "Neighboring WiFi[0]: foundHT[1], foundVHT[0]",
                        prefix + "SUPPORTEDSTANDARDS[0] found: b,g,n",
                        "Neighboring WiFi[0] parse done.",
                    }));
    EXPECT_EQ(platform.logTexts(0), Texts{});
    EXPECT_TRUE(platform.logged(3, "strlen[13]: SSID: \"home\"\n"));
    EXPECT_TRUE(platform.logged(3, "strlen[1]: \n"));
}

TEST_F(NeighbourScan, LogsUnderTheNamesOfTheApplyAndOfItsDecisions) {
    platform.setVariable(0, 0, "name", "wl0");
    scan(1, "Channel: 36/160\nSSID: \"\"\nWPA:\n\n");
    const std::string apply = "WiFiRadioStatsApplyContextImpl: ";
    const std::string security = "Quorvel_P_WiFiRadioStatsNeighboringWiFiDiagnosticResultDecideSecurity: ";
    const std::string standard = "Quorvel_P_WiFiRadioStatsNeighboringWiFiDiagnosticResultDecideStandard: ";
    const std::string result = "WIFINEIGHBORINGDIAGNOSTICSRESULT_";
    EXPECT_EQ(logLines(platform, "wifi/QuorvelWiFiRadioStatsImpl"),
              (Texts{
                  "2 " + apply + "wl -i wl0 scanresults: 1 entries found.",
                  "3 " + apply + "strlen[16]: Channel: 36/160\n",
                  "2 " + apply + result + "RADIO[0] found: wl0",
                  "0 " + apply + "Invalid Channel bandwidth 160",
                  "2 " + apply + result + "CHANNEL[0] found: 36",
                  "2 " + apply + result + "OPERATINGCHANNELBANDWIDTH[0] found: 0",
                  "2 " + apply + result + "OPERATINGFREQUENCYBAND[0] found: 2",
                  "3 " + apply + "strlen[9]: SSID: \"\"\n",
                  "2 " + apply + result + "SSID[0] found: ",
                  "3 " + apply + "strlen[5]: WPA:\n",
                  "3 " + apply + "strlen[1]: \n",
                  "2 " + security +
                      "Neighboring WiFi[0]: foundRSN[0], foundWPA[1], foundTKIP[0], foundAES[0], foundPSK[0], "
                      "foundWEP[0]",
                  "0 " + security + "Invalid Security Mode: WPA",
                  "2 " + security + result + "SECURITYMODEENABLED[0] found: 0",
                  "2 " + security + result + "ENCRYPTIONMODE[0] found: 0",
                  "2 " + standard + "Neighboring WiFi[0]: foundHT[0], foundVHT[0]",
                  "2 " + standard + result + "SUPPORTEDSTANDARDS[0] found: a",
                  "2 " + apply + "Neighboring WiFi[0] parse done.",
              }));
}

TEST_F(NeighbourScan, AppliesEveryRuleThatFitsALineInTheirOrder) {
    // Quirk: a name that contains the marker of another line is parsed as that line too.
    scan(1,
         "SSID: \"n\" noise: -9 RSSI: -5 Channel: 6\n"
         "Supported Rates: [ 6 ] Channel: 11\n"
         "\n");
    Texts first;
    for (const std::string& line : platform.logTexts(2)) {
        if (line.rfind("WIFINEIGH", 0) == 0) {
            first.push_back(line.substr(line.find('_') + 1));
        }
    }
    EXPECT_EQ(
        Texts(first.begin(), first.begin() + 9),
        (Texts{"RADIO[0] found: ", "SSID[0] found: n", "CHANNEL[0] found: 6", "OPERATINGCHANNELBANDWIDTH[0] found: 1",
               "OPERATINGFREQUENCYBAND[0] found: 1", "SIGNALSTRENGTH[0] found: -5", "NOISE[0] found: -9",
               "SUPPORTEDDATATRANSFERRATES[0] found: 6", "BASICDATATRANSFERRATES[0] found: "}));
    for (const char* line : {"Supported Rates: [ 6 ] noise: -9", "QBSS Channel Utilization: (7) noise: -9"}) {
        SCOPED_TRACE(line);
        scan(1, std::string("SSID: \"one\"\n") + line + "\n\n");
        EXPECT_EQ(at(1).noise, -9);
        const Texts told = platform.logTexts(2);
        const std::string noise = "WIFINEIGHBORINGDIAGNOSTICSRESULT_NOISE[0] found: -9";
        const auto place = std::find(told.begin(), told.end(), noise);
        ASSERT_NE(place, told.end());
        EXPECT_EQ(std::count_if(told.begin(), place,
                                [](const std::string& text) {
                                    return text.find("RATES[0]") != std::string::npos ||
                                           text.find("QBSS") != std::string::npos;
                                }),
                  0);
    }
}

TEST_F(NeighbourScan, DecidesForTheLastNetworkOnlyWhenABlankLineFollows) {
    const std::string second = network("two", "11");
    scan(1, network("one") + "\n" + second);
    ASSERT_EQ(entries(1), 2U);
    EXPECT_EQ(at(1).securityModeEnabled, 1U);
    EXPECT_EQ(at(2).securityModeEnabled, 0U);
    EXPECT_STREQ(at(2).ssid, "two");
    EXPECT_EQ(at(2).channel, 11U);
    EXPECT_FALSE(platform.logged(2, "Neighboring WiFi[1] parse done."));
    scan(1, network("one") + "\n" + second + "\n");
    ASSERT_EQ(entries(1), 2U);
    EXPECT_EQ(at(2).securityModeEnabled, 1U);
    EXPECT_TRUE(platform.logged(2, "Neighboring WiFi[1] parse done."));
}

TEST_F(NeighbourScan, EndsAnEntryAtEveryBlankLine) {
    // Two blank lines between two networks: the second line ends an empty entry, and the second network has
    // no entry left.
    scan(1, network("one") + "\n\n" + network("two") + "\n");
    ASSERT_EQ(entries(1), 2U);
    EXPECT_STREQ(at(1).ssid, "one");
    EXPECT_STREQ(at(2).ssid, "");
    EXPECT_EQ(at(2).securityModeEnabled, 1U);
    EXPECT_EQ(at(2).beaconPeriod, 0U);
}

TEST_F(NeighbourScan, EndsAnEntryAtALineThatIsEmptyOrBeginsWithANewline) {
    const std::pair<std::string, bool> rows[] = {
        {"\n", true}, {std::string("\0more\n", 6), true}, {"\r\n", false}, {" \n", false}, {"\t\n", false}};
    for (const auto& [line, ends] : rows) {
        scan(1, "SSID: \"one\"\n" + line + "Mode: Managed\n\n");
        ASSERT_EQ(entries(1), 1U);
        EXPECT_EQ(at(1).mode, ends ? 0U : 2U);
        EXPECT_EQ(at(1).securityModeEnabled, 1U);
    }
}

TEST_F(NeighbourScan, StartsEveryEntryAfresh) {
    scan(1,
         "SSID: \"one\"\nChannel: 6\nCapability: WEP\nHT Capable\nRSN\nAKM Suites: WPA2-PSK\nQBSS Channel Utilization: "
         "(9)\n\nSSID: \"two\"\nChannel: 11\n\n");
    ASSERT_EQ(entries(1), 2U);
    EXPECT_EQ(at(1).securityModeEnabled, 4U);
    EXPECT_STREQ(at(2).ssid, "two");
    EXPECT_EQ(at(2).channel, 11U);
    EXPECT_EQ(at(2).securityModeEnabled, 1U);
    EXPECT_EQ(at(2).qbssUtilization, 0U);
    EXPECT_STREQ(at(2).supportedStandards, "");
    EXPECT_TRUE(platform.logged(
        2, "Neighboring WiFi[1]: foundRSN[0], foundWPA[0], foundTKIP[0], foundAES[0], foundPSK[0], foundWEP[0]"));
    EXPECT_TRUE(platform.logged(2, "Neighboring WiFi[1]: foundHT[0], foundVHT[0]"));
}

TEST_F(NeighbourScan, CountsLinesThatBeginWithSsidOnly) {
    scan(1, "BSSID: x\n SSID: \"no\"\nSSID:\"no\"\nssid: \"no\"\nSSID: \"yes\"\nSSID: \"again\"\n\n");
    EXPECT_EQ(entries(1), 2U);
    EXPECT_STREQ(at(1).ssid, "yes");
    EXPECT_TRUE(platform.logged(2, "wl -i wl0 scanresults: 2 entries found."));
}

TEST_F(NeighbourScan, TakesTheFirstOfEachKindInAnEntry) {
    scan(1,
         "SSID: \"one\"\nSSID: \"two\"\nBSSID: aa\nBSSID: bb\nMode: Managed\nMode: Ad-Hoc\nChannel: 6\nChannel: 36\n"
         "RSSI: -1\nRSSI: -2\nnoise: -3\nnoise: -4\nSupported Rates: [ 6 ]\nSupported Rates: [ 9 ]\n"
         "QBSS Channel Utilization: (5)\nQBSS Channel Utilization: (6)\n\n");
    const NeighboringWiFiResult result = at(1);
    EXPECT_STREQ(result.ssid, "one");
    EXPECT_STREQ(result.bssid, "aa");
    EXPECT_EQ(result.mode, 2U);
    EXPECT_EQ(result.channel, 6U);
    EXPECT_EQ(result.signalStrength, -1);
    EXPECT_EQ(result.noise, -3);
    EXPECT_STREQ(result.supportedDataTransferRates, "6");
    EXPECT_EQ(result.qbssUtilization, 5U);
}

TEST_F(NeighbourScan, AsksForTheRadiosNameOnceAnEntry) {
    platform.setVariable(2, 0, "name", "wl2");
    scan(3, network("one") + "\n" + network("two") + "\n");
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_ext_get"}), Texts(2, "wlcsm_mngr_ext_get(2, 0, \"name\")"));
    EXPECT_STREQ(at(2).radio, "wl2");
}

TEST_F(NeighbourScan, BoundsTheRadiosNameByItsField) {
    for (const std::size_t length : {31U, 32U, 33U, 64U, 1000U}) {
        platform.setVariable(0, 0, "name", std::string(length, 'r'));
        scan(1, "SSID: \"one\"\n\n");
        EXPECT_EQ(bounded(at(1).radio), std::string(length < 32 ? length : 32, 'r'));
        EXPECT_STREQ(at(1).ssid, "one");
    }
    platform.removeVariable(0, 0, "name");
    scan(1, "SSID: \"one\"\n\n");
    EXPECT_STREQ(at(1).radio, "");
}

// --- Line rules -----------------------------------------------------------------------------------------------------

TEST_F(NeighbourScan, CutsNamesAtBlanksAndDropsTheLastCharacter) {
    const std::pair<std::string, std::string> rows[] = {
        {"\"home\"", "home"},
        {"\"My Net\"", "M"},
        {"\"\"", ""},
        {"", ""},
        {"\"", ""},
        {"\" lead\"", "lead"},
        {"\"a\tb\"", ""},
        {"\"ab\tc\"", "a"},
        {"unquoted", "nquote"},
        {"\"quote\"inside\"", "quote\"inside"},
        {"\"x", ""},
        {"\"\"  ", ""},
        {"\"" + std::string(32, 'n') + "\"", std::string(32, 'n')},
        {"\"" + std::string(33, 'n') + "\"", std::string(32, 'n')},
        {"\"" + std::string(100, 'n') + "\"", std::string(32, 'n')},
    };
    for (const auto& [line, name] : rows) {
        SCOPED_TRACE(line);
        scan(1, "SSID: " + line + "\nBSSID: aa\n\n");
        ASSERT_EQ(entries(1), 1U);
        EXPECT_EQ(bounded(at(1).ssid), name);
        EXPECT_STREQ(at(1).bssid, "aa");
    }
}

TEST_F(NeighbourScan, BoundsTheBssidByItsField) {
    const std::pair<std::string, std::string> rows[] = {
        {"00:11:22:33:44:55 Capability: ESS", "00:11:22:33:44:55"},
        {std::string(20, 'b'), std::string(20, 'b')},
        {std::string(100, 'b'), std::string(20, 'b')},
        {"", ""},
    };
    for (const auto& [line, bssid] : rows) {
        scan(1, "SSID: \"one\"\nBSSID: " + line + "\nMode: Ad-Hoc\n\n");
        EXPECT_EQ(bounded(at(1).bssid), bssid);
        EXPECT_EQ(at(1).mode, 1U);
    }
    scan(1, "SSID: \"one\"\nx BSSID: no\nBSSID: aa\n\n");
    EXPECT_STREQ(at(1).bssid, "aa");
}

TEST_F(NeighbourScan, TellsManagedNetworksByAPrefix) {
    const std::pair<const char*, std::uint32_t> rows[] = {
        {"Managed", 2},  {"Man", 2},    {"M", 2},       {"", 2},
        {"Managed2", 1}, {"Ad-Hoc", 1}, {"managed", 1}, {"Managed\tRSSI: -5", 2}};
    for (const auto& [mode, number] : rows) {
        scan(1, std::string("SSID: \"one\"\nMode: ") + mode + "\n\n");
        EXPECT_EQ(at(1).mode, number) << mode;
    }
    scan(1, "SSID: \"one\"\n Mode: Managed\n\n");
    EXPECT_EQ(at(1).mode, 0U);
}

TEST_F(NeighbourScan, ReadsChannelsAndTheirBandwidth) {
    const struct {
        const char* token;
        std::uint32_t channel;
        std::uint32_t bandwidth;
        std::uint32_t band;
    } rows[] = {
        {"36/80", 36, 3, 2},    {"6l", 6, 2, 1},   {"6u", 6, 2, 1},    {"11", 11, 1, 1},     {"1", 1, 1, 1},
        {"14", 14, 1, 1},       {"35", 35, 1, 1},  {"36", 36, 1, 2},   {"149u", 149, 2, 2},  {"165", 165, 1, 2},
        {"36/160", 36, 0, 2},   {"36/", 36, 0, 2}, {"36/8", 36, 0, 2}, {"36/800", 36, 0, 2}, {"36l/80", 36, 3, 2},
        {"36/80/80", 36, 0, 2}, {"x", 0, 1, 1},    {"", 0, 1, 1},      {"full", 0, 2, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.token);
        scan(1, std::string("SSID: \"one\"\nprimary Channel: ") + row.token + "\n\n");
        EXPECT_EQ(at(1).channel, row.channel);
        EXPECT_EQ(at(1).operatingChannelBandwidth, row.bandwidth);
        EXPECT_EQ(at(1).operatingFrequencyBand, row.band);
        EXPECT_EQ(found(platform, "CHANNEL"), Texts{"[0] found: " + std::to_string(row.channel)});
        EXPECT_EQ(found(platform, "OPERATINGCHANNELBANDWIDTH"), Texts{"[0] found: " + std::to_string(row.bandwidth)});
        EXPECT_EQ(found(platform, "OPERATINGFREQUENCYBAND"), Texts{"[0] found: " + std::to_string(row.band)});
    }
}

TEST_F(NeighbourScan, NamesBandwidthsItDoesNotKnow) {
    platform.setVariable(0, 0, "name", "wl0");
    const std::pair<const char*, const char*> rows[] = {
        {"36/160", "160"}, {"36/", ""}, {"36/8", "8"}, {"36/80/80", "80/80"}};
    for (const auto& [token, suffix] : rows) {
        scan(1, std::string("SSID: \"one\"\nChannel: ") + token + "\n\n");
        EXPECT_EQ(platform.logTexts(0), Texts{std::string("Invalid Channel bandwidth ") + suffix});
    }
}

TEST_F(NeighbourScan, ReadsSignedNumbers) {
    const std::pair<const char*, std::int32_t> rows[] = {{"-47 dBm", -47}, {"0", 0}, {"12", 12}, {"", 0}, {"x", 0}};
    for (const auto& [text, number] : rows) {
        scan(1, std::string("SSID: \"one\"\nMode: Managed\tRSSI: ") + text + "\n\tnoise: " + text + "\n\n");
        EXPECT_EQ(at(1).signalStrength, number);
        EXPECT_EQ(at(1).noise, number);
    }
}

TEST_F(NeighbourScan, ReadsTheUtilizationBehindTheFirstBracket) {
    const std::pair<const char*, std::uint32_t> rows[] = {
        {"0x2e (18 %)", 18}, {"(7)", 7}, {"1 ( 8 %) (9)", 8}, {"0x2e", 0}, {"", 0}, {"(", 0}, {"(-1)", 0xFFFFFFFF}};
    for (const auto& [text, number] : rows) {
        scan(1, std::string("SSID: \"one\"\nQBSS Channel Utilization: ") + text + "\n\n");
        EXPECT_EQ(at(1).qbssUtilization, number) << text;
        EXPECT_EQ(found(platform, "QBSSUTILIZATION").size(), 1U);
    }
    scan(1, "SSID: \"one\"\n QBSS Channel Utilization: (5)\n\n");
    EXPECT_EQ(at(1).qbssUtilization, 0U);
}

TEST_F(NeighbourScan, SplitsRatesIntoBasicAndSupported) {
    const struct {
        const char* line;
        const char* supported;
        const char* basic;
    } rows[] = {
        {"[ 1(b) 2(b) 5.5(b) 11(b) 6 9 12 18 24 36 48 54 ]", "1,2,5.5,11,6,9,12,18,24,36,48,54", "1,2,5.5,11"},
        {"[ 6 9 ]", "6,9", ""},
        {"[ 6(b) ]", "6", "6"},
        {"[ ]", "", ""},
        {"[", "", ""},
        {"", "", ""},
        {"[ 6 9", "6,9", ""},
        {"[ 6 ] 9", "6", ""},
        {"[ (b) 6 ]", ",6", ""},
        {"[ 6] ]", "6]", ""},
        {"[6 9 ]", "9", ""},  // two characters behind the prefix are skipped, whatever they are
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        scan(1, std::string("SSID: \"one\"\nSupported Rates: ") + row.line + "\n\n");
        EXPECT_STREQ(at(1).supportedDataTransferRates, row.supported);
        EXPECT_STREQ(at(1).basicDataTransferRates, row.basic);
        EXPECT_EQ(found(platform, "SUPPORTEDDATATRANSFERRATES"), Texts{std::string("[0] found: ") + row.supported});
        EXPECT_EQ(found(platform, "BASICDATATRANSFERRATES"), Texts{std::string("[0] found: ") + row.basic});
    }
    scan(1, "SSID: \"one\"\n Supported Rates: [ 6 ]\n\n");
    EXPECT_STREQ(at(1).supportedDataTransferRates, "");
}

// --- Security -------------------------------------------------------------------------------------------------------

TEST_F(NeighbourScan, SetsItsIndicatorsByTheFirstRuleThatFits) {
    const struct {
        const char* lines;
        const char* indicators;  // RSN, WPA, TKIP, AES, PSK, WEP
    } rows[] = {
        {"", "000000"},
        {"RSN (WPA2):\n", "100000"},
        {"WPA:\n", "010000"},
        {" RSN:\n\tWPA:\n", "000000"},
        {"RSN Capability: WEP unicast ciphers: AES AKM Suites: WPA-PSK\n", "100000"},
        {"WPA Capability: WEP\n", "010000"},
        {"BSSID: aa\tCapability: ESS WEP\n", "000001"},
        {"WEP Capability: ESS\n", "000000"},
        {"Capability: unicast ciphers: TKIP\n", "000000"},
        {"unicast ciphers(2): TKIP AES-CCMP\n", "001100"},
        {"TKIP unicast ciphers: AES\n", "000100"},
        {"AES unicast ciphers: TKIP\n", "001000"},
        {"unicast ciphers: TKIP AKM Suites: WPA-PSK\n", "001000"},
        {"AKM Suites(1): WPA-PSK\n", "000010"},
        {"AKM Suites(1): WPA2-PSK\n", "000010"},
        {"AKM Suites(1): WPA\n", "000000"},
        {"WPA2-PSK AKM Suites: none\n", "010000"},
        {"x WPA2-PSK AKM Suites: none\n", "000000"},
        {"x WPA-PSK AKM Suites: none\n", "000000"},
        {"multicast cipher: TKIP\n", "000000"},
        // An indicator stays set once it is found.
        {"unicast ciphers: TKIP\nunicast ciphers: AES\n", "001100"},
        {"unicast ciphers: AES\nunicast ciphers: TKIP\n", "001100"},
        {"AKM Suites: WPA2-PSK\nAKM Suites: none\n", "000010"},
        {"Capability: WEP\nCapability: ESS\n", "000001"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.lines);
        scan(1, std::string("SSID: \"one\"\n") + row.lines + "\n");
        const std::string i = row.indicators;
        EXPECT_TRUE(platform.logged(2, std::string("Neighboring WiFi[0]: foundRSN[") + i[0] + "], foundWPA[" + i[1] +
                                           "], foundTKIP[" + i[2] + "], foundAES[" + i[3] + "], foundPSK[" + i[4] +
                                           "], foundWEP[" + i[5] + "]"));
    }
}

TEST_F(NeighbourScan, DecidesSecurityAndEncryption) {
    const char* kRsn = "RSN:\n";
    const char* kWpa = "WPA:\n";
    const char* kTkip = "unicast ciphers: TKIP\n";
    const char* kAes = "unicast ciphers: AES\n";
    const char* kPsk = "AKM Suites: WPA-PSK\n";
    const char* kWep = "Capability: WEP\n";
    // Every combination of the six indicators.
    for (unsigned bits = 0; bits < 64; ++bits) {
        const bool rsn = (bits & 1U) != 0;
        const bool wpa = (bits & 2U) != 0;
        const bool tkip = (bits & 4U) != 0;
        const bool aes = (bits & 8U) != 0;
        const bool psk = (bits & 16U) != 0;
        const bool wep = (bits & 32U) != 0;
        std::string lines = "SSID: \"one\"\n";
        lines += std::string(rsn ? kRsn : "") + (wpa ? kWpa : "") + (tkip ? kTkip : "") + (aes ? kAes : "");
        lines += std::string(psk ? kPsk : "") + (wep ? kWep : "") + "\n";
        SCOPED_TRACE(lines);
        scan(1, lines);
        std::uint32_t security = wep ? 2 : 1;
        std::uint32_t encryption = 0;
        if (rsn && wpa) {
            security = psk ? 5 : 8;
            encryption = tkip && aes ? 3 : tkip ? 1 : 2;
        } else if (rsn) {
            security = psk ? 4 : 7;
            encryption = 2;
        } else if (wpa) {
            security = 0;
        }
        EXPECT_EQ(at(1).securityModeEnabled, security);
        EXPECT_EQ(at(1).encryptionMode, encryption);
        EXPECT_EQ(platform.logCount(0, "Invalid Security Mode: WPA"), wpa && !rsn ? 1U : 0U);
        EXPECT_EQ(found(platform, "SECURITYMODEENABLED"), Texts{"[0] found: " + std::to_string(security)});
        EXPECT_EQ(found(platform, "ENCRYPTIONMODE"), Texts{"[0] found: " + std::to_string(encryption)});
    }
}

// --- Standards ------------------------------------------------------------------------------------------------------

TEST_F(NeighbourScan, DecidesStandards) {
    const struct {
        const char* channel;
        const char* rates;
        const char* capabilities;
        const char* standards;
    } rows[] = {
        {"36", "6 9", "", "a"},
        {"36", "", "HT Capable:\n", "a,n"},
        {"36", "", "VHT Capable:\n", "a,ac"},
        {"36", "", "HT Capable:\nVHT Capable:\n", "a,n"},  // with both, n only
        {"36", "", "VHT Capable:\nHT Capable:\n", "a,n"},
        {"36", "", " HT Capable:\n VHT Capable:\n", "a"},
        {"35", "1 6", "HT Capable:\n", "n"},  // between the bands
        {"15", "1 6", "", ""},
        {"15", "1 6", "VHT Capable:\n", "ac"},
        {"14", "1 6", "", "b,g"},
        {"6", "1 2 5.5 11", "", "b"},
        {"6", "12", "", "b,g"},  // by its characters
        {"6", "6", "", "g"},
        {"6", "9", "", "g"},
        {"6", "48", "", "g"},
        {"6", "36", "", "g"},
        {"6", "54", "", "g"},
        {"6", "18", "", "b,g"},
        {"6", "24", "", "b,g"},
        {"6", "5.5", "", "b"},
        {"6", "11", "", "b"},
        {"6", "5", "", ""},
        {"6", "3 4 7 8 0", "", ""},
        {"6", "", "HT Capable:\n", "n"},
        {"6", "1(b) 6", "HT Capable:\n", "b,g,n"},
        {"6", "", "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.channel) + " [" + row.rates + "] " + row.capabilities);
        scan(1, std::string("SSID: \"one\"\nChannel: ") + row.channel + "\nSupported Rates: [ " + row.rates + " ]\n" +
                    row.capabilities + "\n");
        EXPECT_STREQ(at(1).supportedStandards, row.standards);
        EXPECT_STREQ(at(1).operatingStandards, row.standards);
        EXPECT_EQ(found(platform, "SUPPORTEDSTANDARDS"), Texts{std::string("[0] found: ") + row.standards});
    }
}

// --- Long lines, large files, garbage -------------------------------------------------------------------------------

TEST_F(NeighbourScan, ReadsLongLinesInPieces) {
    // The second piece of the first line begins a network of its own.
    scan(1, std::string(127, 'x') + "SSID: \"piece\"\nBSSID: aa\n\n");
    ASSERT_EQ(entries(1), 1U);
    EXPECT_STREQ(at(1).ssid, "piece");
    EXPECT_STREQ(at(1).bssid, "aa");
    EXPECT_TRUE(platform.logged(3, "strlen[127]: " + std::string(127, 'x')));
}

TEST_F(NeighbourScan, TakesThePieceThatIsANewlineForABlankLine) {
    // A line of 127 characters leaves its newline to a piece of its own, which ends the entry.
    const std::string full = "BSSID: " + std::string(120, 'b');
    scan(1, "SSID: \"one\"\n" + full + "\nMode: Managed\n\n");
    ASSERT_EQ(entries(1), 1U);
    EXPECT_EQ(at(1).mode, 0U);
    EXPECT_EQ(at(1).securityModeEnabled, 1U);
    const std::string shorter = "BSSID: " + std::string(119, 'b');
    scan(1, "SSID: \"one\"\n" + shorter + "\nMode: Managed\n\n");
    EXPECT_EQ(at(1).mode, 2U);
}

TEST_F(NeighbourScan, KeepsAnSsidLineOfFourThousandCharactersWithinItsField) {
    for (const std::size_t length : {4096U, 4064U, 4065U}) {  // 4064 and its newline are 32 pieces and one character
        std::string line = "SSID: \"" + std::string(length - 8, 'n') + "\"";
        ASSERT_EQ(line.size(), length);
        scan(1, line + "\nBSSID: aa\nMode: Managed\n\n");
        ASSERT_EQ(entries(1), 1U);
        const NeighboringWiFiResult result = at(1);
        EXPECT_EQ(bounded(result.ssid), std::string(32, 'n'));
        EXPECT_EQ(std::string(result.reserved0, sizeof result.reserved0), std::string(sizeof result.reserved0, '\0'));
        EXPECT_EQ(std::string(result.radio, sizeof result.radio), std::string(sizeof result.radio, '\0'));
        // The newline alone in the last piece ends the entry.
        EXPECT_STREQ(result.bssid, length == 4064 ? "" : "aa");
    }
}

TEST_F(NeighbourScan, BoundsEveryTextOfTheLongestLine) {
    const std::string blanks(40, ' ');
    scan(1, "SSID: \"one\"\nSupported Rates: [ " + std::string(300, '1') + "(b) 2 ]\nMode: " + std::string(300, 'M') +
                "\nx Channel: " + std::string(300, '1') + "\nQBSS Channel Utilization: (" + std::string(90, '0') +
                "7)\nRSSI: " + blanks + "-5\n\n");
    const NeighboringWiFiResult result = at(1);
    EXPECT_EQ(std::string(result.supportedDataTransferRates), std::string(108, '1'));
    EXPECT_STREQ(result.basicDataTransferRates, "");
    EXPECT_EQ(result.mode, 1U);
    EXPECT_EQ(result.qbssUtilization, 7U);
    EXPECT_EQ(result.signalStrength, -5);
}

TEST_F(NeighbourScan, ReadsTenThousandNetworks) {
    std::string text;
    for (int n = 0; n < 10000; ++n) {
        text += "SSID: \"net" + std::to_string(n) + "\"\nMode: Managed\tRSSI: -" + std::to_string(n % 90) +
                " dBm\tChannel: " + std::to_string(1 + n % 13) + "\n\n";
    }
    scan(1, text);
    ASSERT_EQ(entries(1), 10000U);
    for (const std::uint32_t n : {0U, 1U, 4999U, 9998U, 9999U}) {
        const NeighboringWiFiResult result = at(n + 1);
        EXPECT_EQ(std::string(result.ssid), "net" + std::to_string(n));
        EXPECT_EQ(result.channel, 1 + n % 13);
        EXPECT_EQ(result.signalStrength, -static_cast<std::int32_t>(n % 90));
        EXPECT_EQ(result.securityModeEnabled, 1U);
    }
    NeighboringWiFiResult* none = nullptr;
    EXPECT_EQ(QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(10001, &none), 6U);
}

// Bytes from a generator that gives the same sequence everywhere, mixed with the parser's keywords.
std::string garbage(std::uint32_t seed, std::size_t size) {
    static constexpr const char* kWords[] = {"SSID: \"",
                                             "\nSSID: \"",
                                             "BSSID: ",
                                             "Mode: ",
                                             "Channel: ",
                                             "/",
                                             "RSSI: ",
                                             "RSN",
                                             "WPA",
                                             "Capability",
                                             "unicast ciphers",
                                             "AKM Suites",
                                             "HT Capable",
                                             "VHT Capable",
                                             "noise: ",
                                             "Supported Rates: [ ",
                                             "(b) ",
                                             " ]",
                                             "QBSS Channel Utilization: (",
                                             "\n\n",
                                             "\n"};
    std::string bytes;
    std::uint32_t state = seed;
    const auto next = [&state] {
        state = state * 1664525U + 1013904223U;
        return state >> 16;
    };
    while (bytes.size() < size) {
        if (next() % 4 == 0) {
            bytes += kWords[next() % std::size(kWords)];
        } else {
            for (std::uint32_t n = next() % 60; n > 0; --n) {
                bytes += static_cast<char>(next());
            }
        }
    }
    return bytes;
}

// How many pieces of at most 127 bytes, cut behind a newline, begin an entry.
std::uint32_t pieces(const std::string& bytes) {
    std::uint32_t count = 0;
    for (std::size_t at = 0; at < bytes.size();) {
        if (bytes.compare(at, 6, "SSID: ") == 0) {
            ++count;
        }
        const std::size_t newline = bytes.find('\n', at);
        const std::size_t end = newline == std::string::npos ? bytes.size() : newline + 1;
        at = end - at > 127 ? at + 127 : end;
    }
    return count;
}

TEST_F(NeighbourScan, SurvivesBinaryGarbage) {
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        const std::string bytes = garbage(seed, 16384);
        const std::uint32_t expected = pieces(bytes);
        ASSERT_GT(expected, 0U);
        scan(1, bytes);
        EXPECT_EQ(entries(1), expected);
        for (std::uint32_t k = 1; k <= expected; ++k) {
            const NeighboringWiFiResult result = at(k);
            EXPECT_EQ(std::string(result.reserved0, sizeof result.reserved0),
                      std::string(sizeof result.reserved0, '\0'));
            EXPECT_LE(result.mode, 2U);
            EXPECT_LE(result.operatingChannelBandwidth, 3U);
            EXPECT_LE(result.securityModeEnabled, 8U);
        }
    }
}

}  // namespace

}  // namespace quorvel
