#include "tests/wifi/NeighbourWorld.h"

namespace quorvel::scripted {

namespace {

std::string resultsFile(std::uint32_t radio) {
    return "/var/wl" + std::to_string(radio - 1) + "_scanresults";
}

}  // namespace

NeighbourTest::NeighbourTest() {
    for (std::uint32_t radio = 1; radio <= kRadios; ++radio) {
        scan(radio, "");
    }
    platform.forget();
    countBlocksFromHere();
}

void NeighbourTest::TearDown() {
    for (std::uint32_t radio = 0; radio < kRadios; ++radio) {
        NeighboringWiFiResult* none = nullptr;
        EXPECT_EQ(WiFiNeighboringDiagnosticsResultInit(radio, 0, &none), 0U);
    }
    PlatformTest::TearDown();
}

void NeighbourTest::output(std::uint32_t radio, const std::string& text) {
    const std::string index = std::to_string(radio - 1);
    const std::string path = resultsFile(radio);
    platform.onCommand("wl -i wl" + index + " scanresults > " + path, [this, path, text] {
        platform.setFile(path, text);
        return 0;
    });
}

void NeighbourTest::request(std::uint32_t radio) {
    ASSERT_EQ(WiFiRadioStatsInitContext(context.get()), 0U);
    ASSERT_EQ(WiFiRadioStatsDiagnosticsStateSet(context.get(), radio, 2), 0U);
    platform.forget();
}

void NeighbourTest::scan(std::uint32_t radio, const std::string& text) {
    output(radio, text);
    request(radio);
    EXPECT_EQ(WiFiRadioStatsApplyContext(context.get(), radio, 1), 0U);
    EXPECT_TRUE(context.intact());
}

std::uint32_t NeighbourTest::state(std::uint32_t radio) {
    std::uint32_t value = 0;
    EXPECT_EQ(WiFiRadioStatsDiagnosticsStateGet(radio, &value), 0U);
    return value;
}

std::uint32_t NeighbourTest::entries(std::uint32_t radio) {
    std::uint32_t value = 0;
    EXPECT_EQ(WiFiRadioStatsNeighboringWiFiDiagnosticResultNumberOfEntriesGet(radio, &value), 0U);
    return value;
}

NeighboringWiFiResult NeighbourTest::at(std::uint32_t k) {
    NeighboringWiFiResult* record = nullptr;
    EXPECT_EQ(QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(k, &record), 0U);
    return record == nullptr ? NeighboringWiFiResult{} : *record;
}

bool NeighbourTest::failed(const std::string& function, const std::string& text) const {
    for (const LogLine& line : platform.logs()) {
        if (line.level == 0 && line.function == function && line.text == text) {
            return true;
        }
    }
    return false;
}

}  // namespace quorvel::scripted
