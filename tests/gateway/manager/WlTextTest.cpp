#include "gateway/manager/WlText.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/gateway/manager/TestBoard.h"

namespace quorvel::manager::test {
namespace {

std::vector<std::string> lines(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> result;
    for (std::string line; std::getline(stream, line);)
        result.push_back(line);
    return result;
}

std::string output(Model& model, const char* interface, const char* command) {
    const WlAnswer answer = wlText(model, description::ToolFault::kNone, interface, command);
    EXPECT_EQ(answer.status, 0) << answer.text;
    return answer.text;
}

// The number one character after the keyword in the first line that holds it.
long long counterValue(const std::string& text, const std::string& keyword) {
    for (const std::string& line : lines(text)) {
        const std::size_t at = line.find(keyword);
        if (at != std::string::npos) return std::stoll(line.substr(at + keyword.size() + 1));
    }
    ADD_FAILURE() << "no " << keyword;
    return -1;
}

TEST(WlCounters, NameEveryCounterOnSeveralLinesAndGrow) {
    Model model = defaultModel();
    model.advanceTo(10'000);
    const std::string text = output(model, "wl0", "counters");
    EXPECT_GT(lines(text).size(), 1U);
    for (const char* keyword : {"txbyte", "rxbyte", "txframe", "rxframe", "txerror", "rxerror", "rxbadplcp", "rxbadfcs",
                                "rxbadsrcmac", "rxmgocast"}) {
        EXPECT_GE(counterValue(text, keyword), 0);
    }
    EXPECT_EQ(counterValue(text, "txbyte"), static_cast<long long>(model.radios()[0].counters.txBytes));
    model.advanceTo(20'000);
    EXPECT_GT(counterValue(output(model, "wl0", "counters"), "rxframe"), counterValue(text, "rxframe"));
}

TEST(WlStatus, TellsNoiseWhileTheRadioIsUp) {
    Model model = defaultModel();
    EXPECT_EQ(counterValue(output(model, "wl0", "status"), "noise:"), model.noise(0));
    ASSERT_TRUE(model.set(0, 0, "wlEnblSsid", "0"));
    EXPECT_EQ(counterValue(output(model, "wl0", "status"), "noise:"), model.noise(0));
    ASSERT_TRUE(model.set(0, 0, "wlEnbl", "0"));
    EXPECT_EQ(output(model, "wl0", "status").find("noise"), std::string::npos);
}

TEST(WlMacMode, IsANumber) {
    Model model = defaultModel();
    EXPECT_EQ(output(model, "wl0.1", "macmode"), "0\n");
    ASSERT_TRUE(model.set(0, 1, "wlFltMacMode", "deny"));
    EXPECT_EQ(output(model, "wl0.1", "macmode"), "1\n");
    ASSERT_TRUE(model.set(0, 1, "wlFltMacMode", "allow"));
    EXPECT_EQ(output(model, "wl0.1", "macmode"), "2\n");
}

TEST(WlScanResults, AreBlocksThatEachEndWithABlankLine) {
    Model model = defaultModel();
    const auto text = lines(output(model, "wl0", "scanresults"));
    int names = 0;
    int blanks = 0;
    for (const std::string& line : text) {
        EXPECT_LT(line.size(), 127U);
        names += line.starts_with("SSID: \"") ? 1 : 0;
        blanks += line.empty() ? 1 : 0;
    }
    EXPECT_EQ(names, 6);
    EXPECT_EQ(blanks, names);
    EXPECT_TRUE(text.back().empty());
}

TEST(WlScanResults, DescribeANeighbourInFull) {
    description::Board board = shippedBoard("tri-band");
    board.neighbours.resize(1);
    board.neighbours[0].security = "WPA-WPA2-Personal";
    board.neighbours[0].vht = true;
    Model model(std::move(board), {}, 1);
    EXPECT_EQ(output(model, "wl2", "scanresults"),
              "SSID: \"Blue Kitchen\"\n"
              "Mode: Managed RSSI: -58 dBm SNR: 33 dB noise: -91 dBm Flags: RSSI on-channel Channel: 1\n"
              "BSSID: 02:6e:62:00:00:01 Capability: ESS WEP ShortSlot\n"
              "Supported Rates: [ 1(b) 2(b) 5.5(b) 11(b) 6 9 12 18 24 36 48 54 ]\n"
              "RSN (WPA2):\n"
              "\tmulticast cipher: TKIP\n"
              "\tunicast ciphers(2): TKIP AES-CCMP\n"
              "\tAKM Suites(1): WPA2-PSK\n"
              "WPA:\n"
              "\tmulticast cipher: TKIP\n"
              "\tunicast ciphers(2): TKIP AES-CCMP\n"
              "\tAKM Suites(1): WPA-PSK\n"
              "HT Capable:\n"
              "VHT Capable:\n"
              "QBSS Channel Utilization: 0x35 (20 %)\n"
              "\n");
    EXPECT_EQ(output(model, "wl0", "scanresults"), "");
}

TEST(Wl, SaysWhichInterfaceOrCommandItDoesNotKnow) {
    Model model = defaultModel();
    for (const char* interface : {"wl3", "wl0.8", "eth0", "", "wl0.0", "wl00"}) {
        EXPECT_EQ(wlText(model, description::ToolFault::kNone, interface, "status").status, 1) << interface;
    }
    const WlAnswer answer = wlText(model, description::ToolFault::kNone, "wl0", "dance");
    EXPECT_EQ(answer.status, 1);
    EXPECT_NE(answer.text.find("dance"), std::string::npos);
}

TEST(Wl, RefusesToScanOnARadioThatIsDown) {
    Model model = defaultModel();
    ASSERT_TRUE(model.set(0, 0, "wlEnbl", "0"));
    EXPECT_EQ(wlText(model, description::ToolFault::kNone, "wl0", "scan").status, 1);
    EXPECT_EQ(wlText(model, description::ToolFault::kNone, "wl0", "scanresults").status, 1);
}

TEST(Wl, MisbehavesAsTold) {
    Model model = defaultModel();
    EXPECT_EQ(wlText(model, description::ToolFault::kFails, "wl0", "status").status, 1);
    EXPECT_EQ(wlText(model, description::ToolFault::kEmpty, "wl0", "status").status, 0);
    EXPECT_EQ(wlText(model, description::ToolFault::kEmpty, "wl0", "status").text, "");
    const WlAnswer garbage = wlText(model, description::ToolFault::kGarbage, "wl0", "status");
    EXPECT_EQ(garbage.status, 0);
    EXPECT_GT(garbage.text.size(), 1000U);
    EXPECT_GT(wlText(model, description::ToolFault::kHangs, "wl0", "status").status, 1);
}

}  // namespace
}  // namespace quorvel::manager::test
