#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/wifi/StatisticsTest.h"
#include "tests/wifi/platform/FreshProcess.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiNeighboringDiagnosticsResultImpl.h"
#include "wifi/QuorvelWiFiRadioStatsImpl.h"
#include "wifi/QuorvelWiFiSSIDStatsImpl.h"
#include "wifi/model/Contexts.h"

// A radio's counters: from the output of `wl` and from the interfaces' counters.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using scripted::kHeaders;
using scripted::kUntouched;
using scripted::logLines;
using scripted::runFresh;
using scripted::StatisticsTest;
using Texts = std::vector<std::string>;

constexpr char kSource[] = "wifi/QuorvelWiFiRadioStatsImpl";

class RadioStatistics : public StatisticsTest {
  protected:
    RadioStatistics() : StatisticsTest(kSource) {
        platform.setVariable(1, 0, "radio_status", "Up");
    }

    void counters(const std::string& output) {
        platform.setCommandOutput("wl -i wl1 counters", output);
    }

    std::uint32_t bytesSent() {
        std::uint32_t value = kUntouched;
        EXPECT_EQ(WiFiRadioStatsBytesSentGet(2, &value), 0U);
        return value;
    }
};

struct Counter {
    std::uint32_t (*get)(std::uint32_t, std::uint32_t*);
    std::uint32_t node;
    const char* keyword;
};

constexpr Counter kCounters[] = {
    {WiFiRadioStatsBytesSentGet, 1, "txbyte"},
    {WiFiRadioStatsBytesReceivedGet, 2, "rxbyte"},
    {WiFiRadioStatsPacketsSentGet, 3, "txframe"},
    {WiFiRadioStatsPacketsReceivedGet, 4, "rxframe"},
    {WiFiRadioStatsErrorsSentGet, 5, "txerror"},
    {WiFiRadioStatsErrorsReceivedGet, 6, "rxerror"},
    {WiFiRadioStatsPLCPErrorCountGet, 9, "rxbadplcp"},
    {WiFiRadioStatsFCSErrorCountGet, 10, "rxbadfcs"},
    {WiFiRadioStatsInvalidMACCountGet, 11, "rxbadsrcmac"},
    {WiFiRadioStatsPacketsOtherReceivedGet, 12, "rxmgocast"},
};

TEST_F(RadioStatistics, FollowTheirKeywordInTheCounters) {
    std::string output = "reset 0\n";
    for (const Counter& counter : kCounters) {
        output += std::string("other 7 ") + counter.keyword + " " + std::to_string(1000 + counter.node) + " more 8\n";
    }
    counters(output);
    for (const Counter& counter : kCounters) {
        SCOPED_TRACE(counter.keyword);
        platform.forget();
        std::uint32_t value = kUntouched;
        EXPECT_EQ(counter.get(2, &value), 0U);
        EXPECT_EQ(value, 1000 + counter.node);
        EXPECT_EQ(platform.callTexts({"popen"}), Texts{"popen(\"wl -i wl1 counters\", \"r\")"});
        const std::string node = std::to_string(counter.node);
        const std::string keyword = counter.keyword;
        EXPECT_EQ(logLines(platform, kSource),
                  (Texts{"2 Quorvel_P_WiFiRadioStatsGet: The keyword is [" + keyword + "] for node[" + node + "]",
                         // The misspelling is part of the text.
                         "2 Quorvel_P_WiFiRadioStatsGet: Found keywokd[" + keyword + "] value[" +
                             std::to_string(value) + "] for node[" + node + "]"}));
        EXPECT_EQ(platform.callCount("pclose"), 1U);
    }
}

TEST_F(RadioStatistics, NoiseFollowsItsKeywordInTheStatus) {
    platform.setCommandOutput("wl -i wl1 status",
                              "SSID: \"home\"\nMode: Managed\tRSSI: 0 dBm\tnoise: -91 dBm\tFlags: \n");
    std::int32_t noise = 0;
    EXPECT_EQ(WiFiRadioStatsNoiseGet(2, &noise), 0U);
    EXPECT_EQ(noise, -91);
    EXPECT_EQ(platform.callTexts({"popen"}), Texts{"popen(\"wl -i wl1 status\", \"r\")"});
    EXPECT_EQ(logLines(platform, kSource),
              (Texts{"2 Quorvel_P_WiFiRadioStatsGet: The keyword is [noise] for node[13]",
                     "2 Quorvel_P_WiFiRadioStatsGet: Found keywokd[noise] value[-91] for node[13]"}));
}

TEST_F(RadioStatistics, TellCountersOfOneLineApart) {
    counters("txbyte 123456 txframe 99\n");
    EXPECT_EQ(bytesSent(), 123456U);
    std::uint32_t frames = 0;
    EXPECT_EQ(WiFiRadioStatsPacketsSentGet(2, &frames), 0U);
    EXPECT_EQ(frames, 99U);
}

TEST_F(RadioStatistics, TakeTheFirstLineThatContainsTheKeywordAnywhere) {
    counters("\nnothing\nd11_txbyte 1\ntxbyte 2\n");
    EXPECT_EQ(bytesSent(), 1U);
    counters("txbytes 33\n");  // any separator is skipped: " 33" follows
    EXPECT_EQ(bytesSent(), 33U);
    counters("txbyte:44\n");
    EXPECT_EQ(bytesSent(), 44U);
}

TEST_F(RadioStatistics, ReadNumbersOfThirtyTwoBits) {
    counters("txbyte 4294967295\n");
    EXPECT_EQ(bytesSent(), 4294967295U);
    counters("txbyte 0");
    EXPECT_EQ(bytesSent(), 0U);
    counters("txbyte 010\n");  // always decimal
    EXPECT_EQ(bytesSent(), 10U);
    counters("txbyte 0x10\n");
    EXPECT_EQ(bytesSent(), 0U);
}

TEST_F(RadioStatistics, ReadLinesInPiecesOfAHundredAndTwentySeven) {
    // The keyword begins where the second piece does.
    counters(std::string(127, 'x') + "txbyte 5\n");
    EXPECT_EQ(bytesSent(), 5U);
    // A keyword that a piece's end cuts is in neither piece.
    counters(std::string(124, 'x') + "txbyte 5\n");
    std::uint32_t value = kUntouched;
    EXPECT_EQ(WiFiRadioStatsBytesSentGet(2, &value), 1U);
    EXPECT_EQ(value, kUntouched);
}

TEST_F(RadioStatistics, SurviveALineThatEndsWithTheKeyword) {
    // The line before is longer; its remaining digits do not belong to the counter.
    for (const std::string& output : {std::string("txbyte"), std::string("txbyte\n"), std::string("txbyte "),
                                      std::string(121, 'x') + "txbyte 17\n", std::string("0123456789\ntxbyte")}) {
        counters(output);
        std::uint32_t value = kUntouched;
        EXPECT_EQ(WiFiRadioStatsBytesSentGet(2, &value), 0U);
        EXPECT_EQ(value, kUntouched);
    }
}

TEST_F(RadioStatistics, FailWithoutTheKeyword) {
    for (const char* output : {"", "\n\n", "rxbyte 5\nTXBYTE 6\ntx byte 7\n"}) {
        platform.forget();
        counters(output);
        std::uint32_t value = kUntouched;
        EXPECT_EQ(WiFiRadioStatsBytesSentGet(2, &value), 1U);
        EXPECT_EQ(value, kUntouched);
        EXPECT_TRUE(
            failed("Quorvel_P_WiFiRadioStatsGet", "Can't find keyword[txbyte] in \"wl counters\" output for node[1]"));
        EXPECT_EQ(platform.callCount("pclose"), 1U);
    }
}

TEST_F(RadioStatistics, NameTheCountersEvenWhenTheNoiseIsMissing) {
    std::int32_t noise = 7;
    EXPECT_EQ(WiFiRadioStatsNoiseGet(2, &noise), 1U);
    EXPECT_EQ(noise, 7);
    EXPECT_TRUE(
        failed("Quorvel_P_WiFiRadioStatsGet", "Can't find keyword[noise] in \"wl counters\" output for node[13]"));
}

TEST_F(RadioStatistics, FailWhenTheCommandCannotBeStarted) {
    platform.fail("popen");
    std::uint32_t value = kUntouched;
    EXPECT_EQ(WiFiRadioStatsBytesSentGet(2, &value), 1U);
    EXPECT_EQ(value, kUntouched);
    EXPECT_TRUE(failed("Quorvel_P_WiFiRadioStatsGet", "popen [wl -i wl1 counters] fail"));
    std::int32_t noise = 7;
    EXPECT_EQ(WiFiRadioStatsNoiseGet(2, &noise), 1U);
    EXPECT_EQ(noise, 7);
    EXPECT_TRUE(failed("Quorvel_P_WiFiRadioStatsGet", "popen [wl -i wl1 status] fail"));
}

TEST_F(RadioStatistics, FailOnARadioThatIsNotUp) {
    counters("txbyte 5\n");
    for (const char* status : std::initializer_list<const char*>{"Down", "", "up", "Upside", "U", nullptr}) {
        if (status == nullptr) {
            platform.removeVariable(1, 0, "radio_status");
        } else {
            platform.setVariable(1, 0, "radio_status", status);
        }
        for (const Counter& counter : kCounters) {
            platform.forget();
            std::uint32_t value = kUntouched;
            EXPECT_EQ(counter.get(2, &value), 1U);
            EXPECT_EQ(value, kUntouched);
            EXPECT_TRUE(failed("Quorvel_P_WiFiRadioStatsGet", "Radio[2] is not Up, can't get stats."));
            EXPECT_EQ(platform.callCount("popen"), 0U);
        }
        std::int32_t noise = 7;
        EXPECT_EQ(WiFiRadioStatsNoiseGet(2, &noise), 1U);
        EXPECT_EQ(noise, 7);
    }
}

TEST_F(RadioStatistics, RefuseRadiosAndNodesThatDoNotExistAndNoOutput) {
    std::uint32_t value = kUntouched;
    const struct {
        std::uint32_t radio;
        std::uint32_t node;
        std::uint32_t* out;
    } rows[] = {{0, 1, &value}, {4, 1, &value}, {0xFFFFFFFF, 1, &value}, {2, 16, &value}, {2, 1, nullptr}};
    for (const auto& row : rows) {
        platform.forget();
        EXPECT_EQ(Quorvel_P_WiFiRadioStatsGet(row.radio, row.node, row.out), 6U);
        EXPECT_EQ(value, kUntouched);
        EXPECT_TRUE(failed("Quorvel_P_WiFiRadioStatsGet", "Invalid radioInstance[" + std::to_string(row.radio) +
                                                              "] or nodeIdx[" + std::to_string(row.node) +
                                                              "] or NULL pointer"));
        EXPECT_EQ(platform.callTexts(), Texts{});
    }
}

TEST_F(RadioStatistics, HaveNoKeywordForSomeNodes) {
    for (const std::uint32_t node : {0U, 7U, 8U, 14U, 15U}) {
        platform.forget();
        std::uint32_t value = kUntouched;
        EXPECT_EQ(Quorvel_P_WiFiRadioStatsGet(2, node, &value), 1U);
        EXPECT_EQ(value, kUntouched);
        EXPECT_TRUE(failed("Quorvel_P_WiFiRadioStatsGet", "Don't support node[" + std::to_string(node) + "] yet."));
        EXPECT_EQ(platform.callCount("popen"), 0U);
    }
}

// --- Discards -------------------------------------------------------------------------------------------------------

// A line of /proc/net/dev: drops are the fourth column both ways.
std::string interfaceLine(const std::string& name, std::uint32_t receivedDrops, std::uint32_t sentDrops) {
    return "  " + name + ": 1 2 3 " + std::to_string(receivedDrops) + " 5 6 7 8 9 10 11 " + std::to_string(sentDrops) +
           " 13 14 15 16\n";
}

TEST_F(RadioStatistics, DiscardsAreSummedOverTheRadiosInterfaces) {
    platform.setVariable(1, 0, "radio_status", "Down");  // read in any status
    setInterfaces(interfaceLine("lo", 1000, 1000) + interfaceLine("wl0", 500, 600) + interfaceLine("wl1", 1, 10) +
                  interfaceLine("wl1.1", 2, 20) + interfaceLine("wl1.7", 4, 40) + interfaceLine("wl10", 8, 80) +
                  interfaceLine("wl2", 5000, 5000) + interfaceLine("xwl1", 7000, 7000) +
                  interfaceLine("wl", 9000, 9000));
    std::uint32_t sent = kUntouched;
    std::uint32_t received = kUntouched;
    EXPECT_EQ(WiFiRadioStatsDiscardPacketsSentGet(2, &sent), 0U);
    EXPECT_EQ(WiFiRadioStatsDiscardPacketsReceivedGet(2, &received), 0U);
    EXPECT_EQ(sent, 150U);
    EXPECT_EQ(received, 15U);
    EXPECT_EQ(platform.callTexts({"fopen", "fclose"}),
              (Texts{"fopen(\"/proc/net/dev\", \"r\")", "fclose(\"/proc/net/dev\")", "fopen(\"/proc/net/dev\", \"r\")",
                     "fclose(\"/proc/net/dev\")"}));
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(RadioStatistics, DiscardsOfARadioWithoutInterfacesAreZero) {
    setInterfaces(interfaceLine("wl0", 500, 600));
    std::uint32_t sent = kUntouched;
    EXPECT_EQ(WiFiRadioStatsDiscardPacketsSentGet(2, &sent), 0U);
    EXPECT_EQ(sent, 0U);
    platform.setFile("/proc/net/dev", "");
    sent = kUntouched;
    EXPECT_EQ(WiFiRadioStatsDiscardPacketsSentGet(2, &sent), 0U);
    EXPECT_EQ(sent, 0U);
}

TEST_F(RadioStatistics, DiscardsSkipTheTwoHeaderLinesWhateverTheySay) {
    platform.setFile("/proc/net/dev",
                     interfaceLine("wl1", 1, 1) + interfaceLine("wl1", 2, 2) + interfaceLine("wl1", 4, 4));
    std::uint32_t sent = kUntouched;
    EXPECT_EQ(WiFiRadioStatsDiscardPacketsSentGet(2, &sent), 0U);
    EXPECT_EQ(sent, 4U);
}

TEST_F(RadioStatistics, DiscardsReadEachHeaderLineIntoFiveHundredAndTwelveBytes) {
    // 510 characters and the newline fit; with one more the newline is read as the second header line.
    for (const bool fits : {true, false}) {
        platform.setFile("/proc/net/dev", std::string(fits ? 510 : 511, 'h') + "\n" + interfaceLine("wl1", 1, 1) +
                                              interfaceLine("wl1", 2, 2));
        std::uint32_t sent = kUntouched;
        EXPECT_EQ(WiFiRadioStatsDiscardPacketsSentGet(2, &sent), 0U);
        EXPECT_EQ(sent, fits ? 2U : 3U);
    }
}

TEST_F(RadioStatistics, DiscardsEndAtALineThatDoesNotParse) {
    setInterfaces(interfaceLine("wl1", 1, 10) + "wl1.1:5 bad\n" + interfaceLine("wl1.2", 4, 40));
    std::uint32_t sent = kUntouched;
    EXPECT_EQ(WiFiRadioStatsDiscardPacketsSentGet(2, &sent), 0U);
    EXPECT_EQ(sent, 10U);
    EXPECT_TRUE(platform.logged(0, "failed reading at line wl1.1:5 bad\n \n"));
}

TEST_F(RadioStatistics, DiscardsThatCannotBeReadLeaveTheValue) {
    std::uint32_t sent = kUntouched;
    std::uint32_t received = kUntouched;
    EXPECT_EQ(WiFiRadioStatsDiscardPacketsSentGet(2, &sent), 1U);
    EXPECT_EQ(WiFiRadioStatsDiscardPacketsReceivedGet(2, &received), 1U);
    EXPECT_EQ(sent, kUntouched);
    EXPECT_EQ(received, kUntouched);
    EXPECT_TRUE(failed("Quorvel_P_WiFiRadioStatsDiscardPacketsGet", "Quorvel_P_WiFiSSIDStatsGet fopen() fail !!"));
}

TEST_F(RadioStatistics, DiscardSumsStartFromZero) {
    std::uint32_t sent = kUntouched;
    std::uint32_t received = kUntouched;
    EXPECT_EQ(Quorvel_P_WiFiRadioStatsDiscardPacketsGet(2, &sent, &received), 1U);
    EXPECT_EQ(sent, 0U);
    EXPECT_EQ(received, 0U);
}

// --- Diagnostics state ----------------------------------------------------------------------------------------------

TEST_F(RadioStatistics, DiagnosticsAreIdleAndWithoutResultsAtFirst) {
    EXPECT_TRUE(runFresh([] {
        for (std::uint32_t radio = 1; radio <= 3; ++radio) {
            std::uint32_t state = 0;
            std::uint32_t entries = kUntouched;
            EXPECT_EQ(WiFiRadioStatsDiagnosticsStateGet(radio, &state), 0U);
            EXPECT_EQ(WiFiRadioStatsNeighboringWiFiDiagnosticResultNumberOfEntriesGet(radio, &entries), 0U);
            EXPECT_EQ(state, 1U);
            EXPECT_EQ(entries, 0U);
        }
    }));
}

TEST_F(RadioStatistics, DiagnosticsAreEachRadiosOwn) {
    EXPECT_TRUE(runFresh([] {
        auto& fresh = scripted::Platform::instance();
        fresh.setFile("/var/wl1_scanresults", "SSID: \"one\"\n\nSSID: \"two\"\n\n");
        GuardedBlock context(192);
        EXPECT_EQ(WiFiRadioStatsInitContext(context.get()), 0U);
        EXPECT_EQ(WiFiRadioStatsDiagnosticsStateSet(context.get(), 2, 2), 0U);
        EXPECT_EQ(WiFiRadioStatsApplyContext(context.get(), 2, 0), 0U);
        for (std::uint32_t radio = 1; radio <= 3; ++radio) {
            std::uint32_t state = 0;
            std::uint32_t entries = kUntouched;
            EXPECT_EQ(WiFiRadioStatsDiagnosticsStateGet(radio, &state), 0U);
            EXPECT_EQ(WiFiRadioStatsNeighboringWiFiDiagnosticResultNumberOfEntriesGet(radio, &entries), 0U);
            EXPECT_EQ(state, radio == 2 ? 3U : 1U);
            EXPECT_EQ(entries, radio == 2 ? 2U : 0U);
        }
        WiFiNeighboringDiagnosticsResultUnInit();
    }));
}

TEST_F(RadioStatistics, DiagnosticsRefuseRadiosThatDoNotExist) {
    for (const std::uint32_t radio : {0U, 4U, 0xFFFFFFFFU}) {
        platform.forget();
        std::uint32_t value = kUntouched;
        EXPECT_EQ(WiFiRadioStatsDiagnosticsStateGet(radio, &value), 6U);
        EXPECT_EQ(WiFiRadioStatsNeighboringWiFiDiagnosticResultNumberOfEntriesGet(radio, &value), 6U);
        EXPECT_EQ(value, kUntouched);
        const std::string refusal = ": Invalid radioInstance[" + std::to_string(radio) + "]";
        EXPECT_EQ(logLines(platform, kSource),
                  (Texts{"0 WiFiRadioStatsDiagnosticsStateGetImpl" + refusal,
                         "0 WiFiRadioStatsNeighboringWiFiDiagnosticResultNumberOfEntriesGetImpl" + refusal}));
    }
}

TEST_F(RadioStatistics, DiagnosticsStateTakesOneToFour) {
    GuardedBlock context(192);
    for (const std::uint32_t value : {1U, 2U, 3U, 4U}) {
        ASSERT_EQ(WiFiRadioStatsInitContext(context.get()), 0U);
        EXPECT_EQ(WiFiRadioStatsDiagnosticsStateSet(context.get(), 1, value), 0U);
        EXPECT_EQ(static_cast<const WiFiRadioStatsContext*>(context.get())->DiagnosticsState, value);
        EXPECT_NE(WiFiRadioStatsCheckContextNodeSet(context.get(), 14), 0U);
        EXPECT_TRUE(context.intact());
    }
    for (const std::uint32_t value : {0U, 5U, 0xFFFFFFFFU}) {
        ASSERT_EQ(WiFiRadioStatsInitContext(context.get()), 0U);
        EXPECT_EQ(WiFiRadioStatsDiagnosticsStateSet(context.get(), 1, value), 8U);
        EXPECT_TRUE(platform.logged(0, "Value out of range"));
        EXPECT_EQ(WiFiRadioStatsCheckContextNodeSet(context.get(), 14), 0U);
    }
}

TEST_F(RadioStatistics, KnowNodesUpToTheirLast) {
    GuardedBlock context(192);
    ASSERT_EQ(WiFiRadioStatsInitContext(context.get()), 0U);
    EXPECT_EQ(WiFiRadioStatsCheckContextNodeSet(context.get(), 15), 0U);
    EXPECT_FALSE(platform.logged(0, "Exceeded subnodes"));
    EXPECT_EQ(WiFiRadioStatsCheckContextNodeSet(context.get(), 16), 0U);
    EXPECT_TRUE(platform.logged(0, "Exceeded subnodes"));
}

}  // namespace

}  // namespace quorvel
