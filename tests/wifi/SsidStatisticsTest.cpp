#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "tests/wifi/StatisticsTest.h"
#include "tests/wifi/platform/FreshProcess.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiSSIDStatsImpl.h"
#include "wifi/model/Contexts.h"

// The counters of the interface that carries an SSID.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using scripted::kHeaders;
using scripted::kUntouched;
using scripted::logLines;
using scripted::PlatformTest;
using scripted::runFresh;
using scripted::StatisticsTest;
using Texts = std::vector<std::string>;

constexpr char kSource[] = "wifi/QuorvelWiFiSSIDStatsImpl";

// A line whose sixteen counters are base + 1 to base + 16.
std::string interfaceLine(const std::string& name, std::uint32_t base) {
    std::string line = name + ":";
    for (std::uint32_t n = 1; n <= 16; ++n) {
        line += " " + std::to_string(base + n);
    }
    return line + "\n";
}

class SsidStatistics : public StatisticsTest {
  protected:
    SsidStatistics() : StatisticsTest(kSource) {}
};

struct Row {
    std::uint32_t (*get)(std::uint32_t, std::uint32_t*);
    std::uint32_t node;
    std::uint32_t column;  // from 1; 0 is not supported
};

constexpr Row kRows[] = {
    {WiFiSSIDStatsBytesSentGet, 1, 9},
    {WiFiSSIDStatsBytesReceivedGet, 2, 1},
    {WiFiSSIDStatsPacketsSentGet, 3, 10},
    {WiFiSSIDStatsPacketsReceivedGet, 4, 2},
    {WiFiSSIDStatsErrorsSentGet, 5, 11},
    {WiFiSSIDStatsRetransCountGet, 6, 0},
    {WiFiSSIDStatsFailedRetransCountGet, 7, 0},
    {WiFiSSIDStatsRetryCountGet, 8, 0},
    {WiFiSSIDStatsMultipleRetryCountGet, 9, 0},
    {WiFiSSIDStatsACKFailureCountGet, 10, 0},
    {WiFiSSIDStatsAggregatedPacketCountGet, 11, 0},
    {WiFiSSIDStatsErrorsReceivedGet, 12, 3},
    {WiFiSSIDStatsUnicastPacketsSentGet, 13, 10},
    {WiFiSSIDStatsUnicastPacketsReceivedGet, 14, 2},
    {WiFiSSIDStatsDiscardPacketsSentGet, 15, 12},
    {WiFiSSIDStatsDiscardPacketsReceivedGet, 16, 4},
    {WiFiSSIDStatsMulticastPacketsSentGet, 17, 16},
    {WiFiSSIDStatsMulticastPacketsReceivedGet, 18, 8},
    {WiFiSSIDStatsBroadcastPacketsSentGet, 19, 0},
    {WiFiSSIDStatsBroadcastPacketsReceivedGet, 20, 0},
    {WiFiSSIDStatsUnknownProtoPacketsReceivedGet, 21, 0},
};

TEST_F(SsidStatistics, AreColumnsOfTheInterface) {
    setInterfaces(interfaceLine("lo", 9000) + interfaceLine("wl0", 100) + interfaceLine("wl0.1", 200));
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.node);
        platform.forget();
        std::uint32_t value = kUntouched;
        EXPECT_EQ(row.get(1, &value), 0U);
        EXPECT_EQ(value, row.column == 0 ? kUntouched : 100 + row.column);
        EXPECT_EQ(platform.callCount("fopen"), row.column == 0 ? 0U : 1U);
        EXPECT_EQ(platform.callCount("fclose"), row.column == 0 ? 0U : 1U);
        value = kUntouched;
        EXPECT_EQ(Quorvel_P_WiFiSSIDStatsGet(1, row.node, &value), row.column == 0 ? 1U : 0U);
        EXPECT_EQ(value, row.column == 0 ? kUntouched : 100 + row.column);
    }
}

TEST_F(SsidStatistics, OfNodesWithoutColumnFail) {
    setInterfaces(interfaceLine("wl0", 100));
    for (const std::uint32_t node : {0U, 6U, 7U, 8U, 9U, 10U, 11U, 19U, 20U, 21U, 22U}) {
        platform.forget();
        std::uint32_t value = kUntouched;
        EXPECT_EQ(Quorvel_P_WiFiSSIDStatsGet(1, node, &value), 1U);
        EXPECT_EQ(value, kUntouched);
        EXPECT_TRUE(
            failed("Quorvel_P_WiFiSSIDStatsGet", "Don't support stats for node[" + std::to_string(node) + "] yet."));
    }
}

TEST_F(SsidStatistics, OfASsidComeFromItsInterface) {
    const std::pair<std::uint32_t, const char*> rows[] = {{1, "wl0"},    {2, "wl0.1"},  {8, "wl0.7"}, {9, "wl1"},
                                                          {10, "wl1.1"}, {16, "wl1.7"}, {17, "wl2"},  {24, "wl2.7"}};
    std::string lines;
    std::uint32_t base = 0;
    for (const char* radio : {"wl0", "wl1", "wl2"}) {
        // The slots first: the whole name finds the main interface, not a prefix of it.
        for (int slot = 1; slot <= 7; ++slot) {
            lines += interfaceLine(std::string(radio) + "." + std::to_string(slot), base += 100);
        }
        lines += interfaceLine(std::string(radio) + "0", base += 100);
        lines += interfaceLine(radio, base += 100);
    }
    setInterfaces(lines);
    for (const auto& [instance, name] : rows) {
        platform.forget();
        std::uint32_t value = 0;
        EXPECT_EQ(WiFiSSIDStatsBytesReceivedGet(instance, &value), 0U);
        EXPECT_TRUE(platform.logged(2, std::string("Looking for stats for interface[") + name + "]"));
        const std::string line = std::string("\n") + name + ": " + std::to_string(value) + " ";
        EXPECT_NE(("\n" + lines).find(line), std::string::npos) << line;
    }
}

TEST_F(SsidStatistics, FollowTheSlotTable) {
    EXPECT_TRUE(runFresh([] {
        auto& fresh = scripted::Platform::instance();
        fresh.setFile("/proc/net/dev", kHeaders + interfaceLine("wl0", 100) + interfaceLine("wl1", 200));
        EXPECT_EQ(WiFiSystemAccessPointRadioInstanceGet(9), 2U);
        std::uint32_t value = 0;
        EXPECT_EQ(WiFiSSIDStatsBytesReceivedGet(9, &value), 0U);
        EXPECT_EQ(value, 201U);
        EXPECT_EQ(WiFiSystemAccessPointDelete(1), 0U);
        EXPECT_EQ(WiFiSystemAccessPointCreate(1, 9), 0U);
        EXPECT_EQ(WiFiSSIDStatsBytesReceivedGet(9, &value), 0U);
        EXPECT_EQ(value, 101U);
        // An instance without a radio has no interface.
        EXPECT_EQ(WiFiSSIDStatsBytesReceivedGet(1, &value), 1U);
        EXPECT_EQ(value, 101U);
    }));
}

TEST_F(SsidStatistics, RefuseInstancesAndNodesThatDoNotExistAndNoOutput) {
    setInterfaces(interfaceLine("wl0", 100));
    std::uint32_t value = kUntouched;
    const struct {
        std::uint32_t ssid;
        std::uint32_t node;
        std::uint32_t* out;
    } rows[] = {{0, 1, &value}, {25, 1, &value}, {0xFFFFFFFF, 1, &value}, {1, 23, &value}, {1, 1, nullptr}};
    for (const auto& row : rows) {
        platform.forget();
        EXPECT_EQ(Quorvel_P_WiFiSSIDStatsGet(row.ssid, row.node, row.out), 6U);
        EXPECT_TRUE(failed("Quorvel_P_WiFiSSIDStatsGet", "Invalid sSIDInstance[" + std::to_string(row.ssid) +
                                                             "] or nodeIdx[" + std::to_string(row.node) +
                                                             "] or NULL pointer"));
        EXPECT_EQ(platform.callTexts(), Texts{});
    }
    EXPECT_EQ(value, kUntouched);
    EXPECT_EQ(WiFiSSIDStatsBytesSentGet(25, &value), 6U);
}

TEST_F(SsidStatistics, FailWithoutTheKernelsFile) {
    std::uint32_t value = kUntouched;
    EXPECT_EQ(WiFiSSIDStatsBytesSentGet(1, &value), 1U);
    EXPECT_EQ(value, kUntouched);
    EXPECT_TRUE(failed("Quorvel_P_WiFiSSIDStatsGet", "Quorvel_P_WiFiSSIDStatsGet fopen() fail !!"));
}

TEST_F(SsidStatistics, FailWithoutTheInterface) {
    for (const std::string& lines : {std::string(), interfaceLine("wl0.1", 100), interfaceLine("wl00", 100),
                                     interfaceLine("wl", 100), interfaceLine("WL0", 100)}) {
        platform.forget();
        setInterfaces(lines);
        std::uint32_t value = kUntouched;
        EXPECT_EQ(WiFiSSIDStatsBytesSentGet(1, &value), 1U);
        EXPECT_EQ(value, kUntouched);
        EXPECT_EQ(logLines(platform, kSource),
                  (Texts{"2 Quorvel_P_WiFiSSIDStatsGet: Looking for stats for interface[wl0]",
                         "2 Quorvel_P_WiFiSSIDStatsNetDevStatsGetNext: file reach the end \n",
                         "0 Quorvel_P_WiFiSSIDStatsGet: Don't find interface[wl0] in net_dev_stats"}));
        EXPECT_EQ(platform.callCount("fclose"), 1U);
    }
}

TEST_F(SsidStatistics, SkipTheTwoHeaderLinesWhateverTheySay) {
    platform.setFile("/proc/net/dev",
                     interfaceLine("wl0", 100) + interfaceLine("wl0", 200) + interfaceLine("wl0", 300));
    std::uint32_t value = 0;
    EXPECT_EQ(WiFiSSIDStatsBytesReceivedGet(1, &value), 0U);
    EXPECT_EQ(value, 301U);
}

TEST_F(SsidStatistics, ReadEachHeaderLineIntoFiveHundredAndTwelveBytes) {
    // 510 characters and the newline fit; with one more the newline is read as the second header line.
    for (const bool fits : {true, false}) {
        platform.setFile("/proc/net/dev", std::string(fits ? 510 : 511, 'h') + "\n" + interfaceLine("wl0", 100) +
                                              interfaceLine("wl0", 200));
        std::uint32_t value = 0;
        EXPECT_EQ(WiFiSSIDStatsBytesReceivedGet(1, &value), 0U);
        EXPECT_EQ(value, fits ? 201U : 101U);
    }
}

TEST_F(SsidStatistics, EndTheSearchAtALineThatDoesNotParse) {
    // Without a blank behind the colon the name and the first number are one word.
    const std::string glued = "wl0:1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n";
    setInterfaces(glued + interfaceLine("wl0", 100));
    std::uint32_t value = kUntouched;
    EXPECT_EQ(WiFiSSIDStatsBytesSentGet(1, &value), 1U);
    EXPECT_EQ(value, kUntouched);
    EXPECT_TRUE(failed("Quorvel_P_WiFiSSIDStatsNetDevStatsGetNext", "failed reading at line " + glued + " \n"));
    EXPECT_TRUE(failed("Quorvel_P_WiFiSSIDStatsGet", "Don't find interface[wl0] in net_dev_stats"));
    // Also when the line is another interface's.
    for (const std::string& line :
         {std::string("eth0:1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"), std::string("eth0: 1 2 3\n"),
          std::string("eth0: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 x\n"), std::string("\n"), std::string(600, 'e')}) {
        SCOPED_TRACE(line);
        platform.forget();
        setInterfaces(line + interfaceLine("wl0", 100));
        EXPECT_EQ(WiFiSSIDStatsBytesSentGet(1, &value), 1U);
        EXPECT_EQ(value, kUntouched);
        EXPECT_TRUE(failed("Quorvel_P_WiFiSSIDStatsNetDevStatsGetNext",
                           "failed reading at line " + line.substr(0, 511) + " \n"));
    }
}

TEST_F(SsidStatistics, AreDumpedByPosition) {
    setInterfaces(interfaceLine("  wl0", 100));
    std::uint32_t value = 0;
    EXPECT_EQ(WiFiSSIDStatsBytesSentGet(1, &value), 0U);
    Texts expected{"Looking for stats for interface[wl0]", "------> Dump interface[wl0] stats", "interfacename wl0"};
    const char* counters[] = {"RxBytes      %lu", "RxPkts       %lu", "RxErrors     %lu", "RxDrops      %lu",
                              "RxFifo       %lu", "RxFrame      %lu", "RxCompressed %lu", "RxMulticast  %lu",
                              "TxBytes      %lu", "TxPkts       %lu", "TxErrors     %lu", "TxDrops      %lu",
                              "TxFifo       %lu", "TxFrame      %lu", "TxCompressed %lu", "TxMulticast  %lu"};
    for (std::size_t n = 0; n < std::size(counters); ++n) {
        expected.push_back(std::string(counters[n], 13) + std::to_string(101 + n));
    }
    for (std::string& line : expected) {
        line.insert(0, "2 Quorvel_P_WiFiSSIDStatsGet: ");
    }
    EXPECT_EQ(logLines(platform, kSource), expected);
    // The line shows its whole text.
    std::size_t whole = 0;
    for (const auto& line : platform.logs()) {
        whole += whole < std::size(counters) && line.format == counters[whole] ? 1 : 0;
    }
    EXPECT_EQ(whole, std::size(counters));
}

TEST_F(SsidStatistics, ApplyHasNothingToWrite) {
    GuardedBlock context(216);
    ASSERT_EQ(WiFiSSIDStatsInitContext(context.get()), 0U);
    EXPECT_EQ(WiFiSSIDStatsApplyContext(context.get(), 1), 0U);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_set"), 0U);
    EXPECT_EQ(WiFiSSIDStatsCheckContextNodeSet(context.get(), 21), 0U);
    EXPECT_FALSE(platform.logged(0, "Exceeded subnodes"));
    EXPECT_EQ(WiFiSSIDStatsCheckContextNodeSet(context.get(), 22), 0U);
    EXPECT_TRUE(platform.logged(0, "Exceeded subnodes"));
}

// --- Lines of the kernel's file -------------------------------------------------------------------------------------

class InterfaceLine : public PlatformTest {
  protected:
    // Parses the first line of the text between guard bytes.
    std::uint32_t parse(const std::string& text) {
        platform.setFile("/lines", text);
        FILE* stream = fopen("/lines", "r");
        const std::uint32_t result =
            Quorvel_P_WiFiSSIDStatsNetDevStatsGetNext(stream, static_cast<NetDevStats*>(block.get()));
        (void)fclose(stream);
        EXPECT_TRUE(block.intact());
        return result;
    }

    [[nodiscard]] std::string name() {
        return block.text();
    }
    [[nodiscard]] std::uint32_t counter(std::size_t n) const {
        return block.at<std::uint32_t>(128 + 4 * n);
    }

    GuardedBlock block{sizeof(NetDevStats)};
};

TEST_F(InterfaceLine, FillsTheRecordInColumnOrder) {
    EXPECT_EQ(sizeof(NetDevStats), 192U);
    EXPECT_EQ(parse("   eth0: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 4294967295\n"), 0U);
    EXPECT_EQ(name(), "eth0");
    for (std::size_t n = 0; n < 15; ++n) {
        EXPECT_EQ(counter(n), n + 1);
    }
    EXPECT_EQ(counter(15), 4294967295U);
}

TEST_F(InterfaceLine, LosesOneTrailingColonOnly) {
    const std::pair<const char*, const char*> rows[] = {
        {"wl0:", "wl0"}, {"wl0", "wl0"}, {"wl0::", "wl0:"}, {":", ""}, {"a:b", "a:b"}};
    for (const auto& [word, expected] : rows) {
        EXPECT_EQ(parse(std::string(word) + " 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"), 0U);
        EXPECT_EQ(name(), expected);
    }
}

TEST_F(InterfaceLine, NeedsItsSixteenNumbers) {
    for (const char* line : {"wl0: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15\n", "wl0:\n", "\n", "   \n",
                             "wl0: 1 2 3 x 5 6 7 8 9 10 11 12 13 14 15 16\n"}) {
        platform.forget();
        EXPECT_EQ(parse(line), 1U);
        EXPECT_TRUE(platform.logged(0, std::string("failed reading at line ") + line + " \n"));
    }
    EXPECT_EQ(parse("wl0: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18\n"), 0U);
    EXPECT_EQ(counter(15), 16U);
}

TEST_F(InterfaceLine, TellsTheEndAsTraffic) {
    EXPECT_EQ(parse(""), 1U);
    EXPECT_EQ(platform.logTexts(2), Texts{"file reach the end \n"});
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(InterfaceLine, BoundsTheNameByItsField) {
    EXPECT_EQ(parse(std::string(127, 'n') + " 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"), 0U);
    EXPECT_EQ(name(), std::string(127, 'n'));
    // A longer name goes on where the first number is expected.
    EXPECT_EQ(parse(std::string(300, 'n') + " 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"), 1U);
    EXPECT_EQ(parse(std::string(4096, 'n') + "\n"), 1U);
}

// The values that the C library reads from a line.
struct Scanned {
    explicit Scanned(const std::string& line) {
        unsigned long* c = counters;
        char word[128] = {};
        whole = sscanf(line.c_str(),
                       " %127s  %lu  %lu  %lu  %lu  %lu  %lu  %lu  %lu  %lu  %lu  %lu  %lu  %lu  %lu  %lu   %lu", word,
                       c, c + 1, c + 2, c + 3, c + 4, c + 5, c + 6, c + 7, c + 8, c + 9, c + 10, c + 11, c + 12, c + 13,
                       c + 14, c + 15) == 17;
        name = word;
        if (!name.empty() && name.back() == ':') {
            name.pop_back();
        }
    }
    bool whole = false;
    std::string name;
    unsigned long counters[16] = {};
};

// Lines in which a number begins, ends or overflows in an unusual way, and lines with one character changed.
std::vector<std::string> oddLines() {
    const std::string sixteen = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16";
    const std::string fourteen = " 3 4 5 6 7 8 9 10 11 12 13 14 15 16";
    std::vector<std::string> lines{"wl0: " + sixteen,
                                   "\t wl0:\v" + sixteen + "\r",
                                   "wl0: 1-2" + fourteen,
                                   "wl0: 1+2" + fourteen,
                                   "wl0: -1 -0" + fourteen,
                                   "wl0: +7 007" + fourteen,
                                   "wl0: 1 0x2" + fourteen,
                                   "wl0: 1 - 2" + fourteen,
                                   "wl0: 1 --2" + fourteen,
                                   "wl0: 1 2." + fourteen,
                                   "wl0: 1,2" + fourteen,
                                   "wl0:\f1" + fourteen,
                                   "wl0: 4294967295 4294967296" + fourteen,
                                   "wl0: 4294967297 -4294967297" + fourteen,
                                   "wl0: 18446744073709551615 18446744073709551616" + fourteen,
                                   "wl0: -18446744073709551615 -18446744073709551616" + fourteen,
                                   "wl0: " + std::string(40, '9') + " " + std::string(40, '0') + fourteen,
                                   sixteen + " 17",
                                   sixteen,
                                   "wl0: 1 2" + fourteen + "17",
                                   "wl0: 1 2" + fourteen + "x",
                                   "wl0:1 2" + fourteen + " 17",
                                   std::string(127, 'n') + sixteen,
                                   std::string(127, 'n') + "x" + sixteen,
                                   std::string(128, '1') + fourteen,
                                   std::string(),
                                   std::string(" "),
                                   std::string(":"),
                                   "wl0: 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 -"};
    std::uint32_t state = 1;
    const auto next = [&state] {
        state = state * 1664525U + 1013904223U;
        return state >> 16;
    };
    static constexpr char kCharacters[] = "  \t\v-+x9:/;";
    for (int n = 0; n < 500; ++n) {
        std::string line = "  wl0: 12345678 1234567 123456 12345 1234 123 12 1 0 9 87 654 3210 98765 432109 8765432";
        line[next() % line.size()] = kCharacters[next() % (sizeof kCharacters - 1)];
        lines.push_back(line);
    }
    return lines;
}

TEST_F(InterfaceLine, ReadsWhatScanfReads) {
    for (const std::string& line : oddLines()) {
        SCOPED_TRACE(line);
        const Scanned scanned(line);
        ASSERT_EQ(parse(line), scanned.whole ? 0U : 1U);
        if (!scanned.whole) continue;
        EXPECT_EQ(name(), scanned.name);
        for (std::size_t n = 0; n < 16; ++n) {
            EXPECT_EQ(counter(n), static_cast<std::uint32_t>(scanned.counters[n]));
        }
    }
}

// The line of another interface must be well-formed by the same rule.
TEST_F(SsidStatistics, SearchOnlyBehindLinesThatScanfReads) {
    for (const std::string& line : oddLines()) {
        SCOPED_TRACE(line);
        platform.forget();
        setInterfaces(line + "\n" + interfaceLine("wl1", 100));
        std::uint32_t value = kUntouched;
        const bool whole = Scanned(line).whole;
        EXPECT_EQ(Quorvel_P_WiFiSSIDStatsGet(9, 2, &value), whole ? 0U : 1U);
        EXPECT_EQ(value, whole ? 101U : kUntouched);
        EXPECT_EQ(platform.logCount(0, "failed reading at line " + line + "\n \n"), whole ? 0U : 1U);
    }
}

TEST_F(InterfaceLine, IsReadInPiecesOfFiveHundredAndEleven) {
    // The last number's second digit is the 511th character, then the 512th.
    const std::string numbers = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16";
    EXPECT_EQ(parse("wl0:" + std::string(511 - 4 - numbers.size(), ' ') + numbers + "\n"), 0U);
    EXPECT_EQ(counter(15), 16U);
    EXPECT_EQ(parse("wl0:" + std::string(512 - 4 - numbers.size(), ' ') + numbers + "\n"), 0U);
    EXPECT_EQ(counter(15), 1U);
    EXPECT_EQ(parse("wl0:" + std::string(600, ' ') + "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"), 1U);
    EXPECT_EQ(parse("wl0:" + std::string(400, ' ') + "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"), 0U);
}

}  // namespace

}  // namespace quorvel
